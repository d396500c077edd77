#include "notification_server.h"

#include <QDBusArgument>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

}  // namespace

NotificationServer::NotificationServer(const TestBus& bus) : bus_(bus, service) {
  bus_->registerVirtualObject(path, this);
}

NotificationServer::~NotificationServer() {
  bus_->unregisterObject(path);
}

void NotificationServer::answer() {
  for (const QDBusMessage& message : std::exchange(kept_, {}))
    bus_->send(message);
}

void NotificationServer::reply(const QDBusMessage& message) {
  kept_.push_back(message);
  if (!hesitates)
    answer();
}

void NotificationServer::signal(const QString& name, const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createSignal(path, service, name);
  message.setArguments(arguments);
  bus_->send(message);
}

void NotificationServer::invoke(std::uint32_t id, const QString& action) {
  signal(QStringLiteral("ActionInvoked"), {id, action});
}

void NotificationServer::closeByUser(std::uint32_t id) {
  constexpr std::uint32_t byUser = 2;
  signal(QStringLiteral("NotificationClosed"), {id, byUser});
}

bool NotificationServer::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
  const QVariantList given = message.arguments();
  calls << message.member();
  if (refuses) {
    reply(message.createErrorReply(QDBusError::Failed, QStringLiteral("refused")));
  } else if (message.member() == QLatin1String("GetCapabilities")) {
    reply(message.createReply(capabilities));
  } else if (message.member() == QLatin1String("CloseNotification")) {
    closed.push_back(given[0].toUInt());
    reply(message.createReply());
  } else if (message.member() == QLatin1String("Notify")) {
    const std::uint32_t replaced = given.value(1).toUInt();
    const std::uint32_t id = replaced != 0 ? replaced : ++lastId_;
    notes.push_back({message.signature().toStdString(), given.value(0).toString(), replaced,
                     given.value(2).toString(), given.value(3).toString(),
                     given.value(4).toString(), given.value(5).toStringList(),
                     qdbus_cast<QVariantMap>(given.value(6)), given.value(7).toInt(), id});
    reply(message.createReply(id));
  } else {
    return false;
  }
  return true;
}
