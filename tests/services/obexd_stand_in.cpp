#include "obexd_stand_in.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <sys/stat.h>

namespace {

const QString sessionPath = QStringLiteral("/org/bluez/obex/client/session0");
const QString transferPath = sessionPath + QStringLiteral("/transfer0");
const QString transferInterface = QStringLiteral("org.bluez.obex.Transfer1");

}  // namespace

ObexdStandIn::ObexdStandIn(const TestBus& bus, Manner manner)
    : manner_(manner), bus_(bus, QStringLiteral("org.bluez.obex")) {
  bus_->registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
}

ObexdStandIn::~ObexdStandIn() {
  bus_->unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
}

void ObexdStandIn::tell(const QVariantMap& properties) {
  QDBusMessage signal =
      QDBusMessage::createSignal(transferPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                 QStringLiteral("PropertiesChanged"));
  bus_->send(signal << transferInterface << properties << QStringList());
}

void ObexdStandIn::refuse(const QDBusMessage& message) {
  bus_->send(message.createErrorReply(QStringLiteral("org.bluez.obex.Error.Failed"), QString()));
}

void ObexdStandIn::createSession(const QDBusMessage& message) {
  arguments = qdbus_cast<QVariantMap>(message.arguments().at(1));
  calls.last() += ' ' + message.arguments().at(0).toString();
  if (manner_ == Manner::refusesSession)
    refuse(message);
  else if (manner_ == Manner::answersOtherwise)
    bus_->send(message.createReply(sessionPath));
  else if (manner_ != Manner::neverAnswers)
    bus_->send(message.createReply(QVariant::fromValue(QDBusObjectPath(sessionPath))));
}

void ObexdStandIn::sendFile(const QDBusMessage& message) {
  QFile file(message.arguments().at(0).toString());
  name = QFileInfo(file).fileName();
  directory = QFileInfo(file).path();
  struct stat about {};
  if (stat(QFile::encodeName(directory).constData(), &about) == 0)
    directoryMode = static_cast<int>(about.st_mode & 07777U);
  if (file.open(QFile::ReadOnly))
    content = file.readAll();
  if (manner_ == Manner::refusesFile) {
    refuse(message);
    return;
  }
  const QString status = QStringLiteral("Status");
  const QVariantMap complete = {{status, QStringLiteral("complete")}};
  const auto size = static_cast<quint64>(content.size());
  const QVariantMap half = {{status, QStringLiteral("active")},
                            {QStringLiteral("Transferred"), size / 2}};
  if (manner_ == Manner::completesAtOnce)
    tell(complete);
  bus_->send(message.createReply(
      {QVariant::fromValue(QDBusObjectPath(transferPath)),
       QVariantMap{{status, QStringLiteral("queued")}, {QStringLiteral("Size"), size}}}));
  if (manner_ == Manner::completesAtOnce)
    return;
  tell(half);
  if (manner_ == Manner::completes)
    QTimer::singleShot(20, this, [this, complete] { tell(complete); });
  else if (manner_ == Manner::fails)
    tell({{status, QStringLiteral("error")}});
}

bool ObexdStandIn::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
  const QString member = message.member();
  calls << member;
  if (member == QLatin1String("CreateSession"))
    createSession(message);
  else if (member == QLatin1String("SendFile"))
    sendFile(message);
  else if (member == QLatin1String("Cancel") && manner_ == Manner::refusesToCancel)
    refuse(message);
  else if (member == QLatin1String("Cancel") || member == QLatin1String("RemoveSession"))
    bus_->send(message.createReply());
  else
    return false;
  return true;
}
