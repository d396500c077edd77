#include "object_push.h"

#include "module_log.h"
#include "reply_sender.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace ulo {

namespace {

constexpr QLatin1String obexService("org.bluez.obex");
constexpr QLatin1String clientPath("/org/bluez/obex");
constexpr QLatin1String clientInterface("org.bluez.obex.Client1");
constexpr QLatin1String pushInterface("org.bluez.obex.ObjectPush1");
constexpr QLatin1String transferInterface("org.bluez.obex.Transfer1");

// Returns the object path at the beginning of a reply, or an empty string for an error or another
// reply.
QString pathIn(const QDBusMessage& reply) {
  const QVariantList arguments = reply.arguments();
  return reply.type() == QDBusMessage::ReplyMessage && !arguments.isEmpty()
             ? arguments.constFirst().value<QDBusObjectPath>().path()
             : QString();
}

QString complaint(const QDBusMessage& reply) {
  return reply.type() == QDBusMessage::ErrorMessage
             ? reply.errorName() + QStringLiteral(" ") + reply.errorMessage()
             : QStringLiteral("an answer of the form ") + reply.signature();
}

}  // namespace

ObjectPush::ObjectPush(const QDBusConnection& sessionBus, const QString& address,
                       const QString& path, const QVariantMap& session, Limits limits)
    : bus_(sessionBus), address_(address), file_(path), limits_(limits) {
  stall_.setSingleShot(true);
  stall_.setInterval(limits_.stall);
  connect(&stall_, &QTimer::timeout, this, [this] { fail(QStringLiteral("no sign of life")); });
  watchObexd();
  connectToDevice(session);
}

void ObjectPush::watchObexd() {
  // Connected from the beginning: a small file may be finished before the reply that names its
  // transfer. Matches any sender: for a name QtDBus would query the bus, and abort if the bus has
  // just disconnected.
  bus_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Properties"),
               QStringLiteral("PropertiesChanged"), {transferInterface}, QString(), this,
               SLOT(propertiesChanged(QDBusMessage)));
  auto* watcher =
      new QDBusServiceWatcher(obexService, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, &ObjectPush::serviceLost);
  bus_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Local"),
               QStringLiteral("Disconnected"), this, SLOT(serviceLost()));
}

void ObjectPush::call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments, std::chrono::milliseconds patience,
                      const std::function<void(const QDBusMessage&)>& answered) {
  if (!bus_.isConnected()) {
    QMetaObject::invokeMethod(this, "serviceLost", Qt::QueuedConnection);
    return;
  }
  QDBusMessage message = QDBusMessage::createMethodCall(obexService, path, interface, method);
  message.setArguments(arguments);
  auto* answer = new QDBusPendingCallWatcher(
      bus_.asyncCall(message, static_cast<int>(patience.count())), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, answered] {
    answer->deleteLater();
    answered(answer->reply());
  });
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the call belongs to this object.

void ObjectPush::connectToDevice(QVariantMap session) {
  session.insert(QStringLiteral("Target"), QStringLiteral("opp"));
  stall_.start();
  call(clientPath, clientInterface, QStringLiteral("CreateSession"), {address_, session},
       limits_.stall, [this](const QDBusMessage& reply) {
         if (state_ != State::connecting)
           return;
         session_ = pathIn(reply);
         if (session_.isEmpty()) {
           fail(complaint(reply));
           return;
         }
         findReplySender(bus_, reply, obexService, this, [this](const QString& sender) {
           if (state_ != State::connecting)
             return;
           obexd_ = sender;
           sendFile();
         });
       });
}

void ObjectPush::sendFile() {
  state_ = State::offering;
  stall_.start();
  Q_EMIT progressed();
  call(session_, pushInterface, QStringLiteral("SendFile"), {file_}, limits_.stall,
       [this](const QDBusMessage& reply) {
         if (state_ != State::offering)
           return;
         transfer_ = pathIn(reply);
         if (transfer_.isEmpty()) {
           fail(complaint(reply));
           return;
         }
         if (reply.signature() == QLatin1String("oa{sv}"))
           follow(qdbus_cast<QVariantMap>(reply.arguments().constLast()));
         follow(early_.take(transfer_));
       });
}

void ObjectPush::propertiesChanged(const QDBusMessage& signal) {
  if (signal.service() != obexd_ || signal.signature() != QLatin1String("sa{sv}as"))
    return;
  const auto changed = qdbus_cast<QVariantMap>(signal.arguments().at(1));
  if (!transfer_.isEmpty() && signal.path() == transfer_)
    follow(changed);
  else if (transfer_.isEmpty() && state_ == State::offering)
    early_[signal.path()].insert(changed);
}

void ObjectPush::follow(const QVariantMap& properties) {
  if (state_ == State::leaving || state_ == State::over || properties.isEmpty())
    return;
  stall_.start();
  size_ = properties.value(QStringLiteral("Size"), size_).toULongLong();
  transferred_ = properties.value(QStringLiteral("Transferred"), transferred_).toULongLong();
  const QString status = properties.value(QStringLiteral("Status")).toString();
  if (status == QLatin1String("active") || transferred_ > 0)
    state_ = State::sending;
  Q_EMIT progressed();
  if (status == QLatin1String("complete"))
    leave(End::sent);
  else if (status == QLatin1String("error"))
    fail(QStringLiteral("the device or obexd gave the transfer up"));
}

void ObjectPush::serviceLost() {
  lost_ = true;
  if (state_ == State::leaving)
    finish();
  else
    fail(QStringLiteral("obexd or its bus has gone"));
}

void ObjectPush::cancel() {
  leave(End::cancelled);
}

void ObjectPush::fail(const QString& why) {
  if (state_ == State::leaving || state_ == State::over)
    return;
  ULO_LOG_ERROR("Pushing an object to %s failed: %s", qPrintable(address_), qPrintable(why));
  leave(End::failed);
}

void ObjectPush::leave(End end) {
  if (state_ == State::leaving || state_ == State::over)
    return;
  state_ = State::leaving;
  end_ = end;
  stall_.stop();
  Q_EMIT progressed();
  if (end == End::cancelled && !transfer_.isEmpty())
    call(transfer_, transferInterface, QStringLiteral("Cancel"), {}, limits_.farewell,
         [this](const QDBusMessage&) { closeSession(); });
  else
    closeSession();
}

void ObjectPush::closeSession() {
  if (state_ != State::leaving)
    return;
  // A session that is still being created ends with the connection.
  if (session_.isEmpty() || lost_)
    finish();
  else
    call(clientPath, clientInterface, QStringLiteral("RemoveSession"),
         {QVariant::fromValue(QDBusObjectPath(session_))}, limits_.farewell,
         [this](const QDBusMessage&) { finish(); });
}

void ObjectPush::finish() {
  if (state_ != State::leaving)
    return;
  state_ = State::over;
  Q_EMIT ended();
}

}  // namespace ulo
