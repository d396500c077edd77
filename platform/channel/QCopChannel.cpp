#include "QCopChannel.h"

#include "module_log.h"
#include "private_bus.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace {

constexpr char path[] = "/ulo/channel";
constexpr char interface[] = "ulo.platform.Channel";
constexpr char signal[] = "Message";
// Timeout for the bus.
constexpr int patienceMs = 2000;

}  // namespace

QCopChannel::QCopChannel(const QCString& channel, QObject* parent)
    : QObject(parent), channel_(channel),
      bus_(std::make_unique<ulo::PrivateBus>(ulo::PrivateBus::Kind::session)) {
  const bool listens =
      bus_->isConnected() &&
      bus_->connection().connect(QString(), QLatin1String(path), QLatin1String(interface),
                                 QLatin1String(signal), this,
                                 SLOT(deliver(QString, QString, QByteArray)));
  if (!listens) {
    ULO_LOG_ERROR("No session bus, nothing will be received on %s", channel_.constData());
    bus_.reset();
  }
}

QCopChannel::~QCopChannel() = default;

bool QCopChannel::isConnected() const {
  return bus_ != nullptr && bus_->isConnected();
}

// The bus could filter by channel, but QtDBus does not write match rules for names beyond Latin-1.
void QCopChannel::deliver(const QString& channel, const QString& message, const QByteArray& data) {
  if (channel == QString::fromUtf8(channel_.constData()))
    Q_EMIT received(QCString(message.toUtf8()), data);
}

bool QCopChannel::send(const QCString& channel, const QCString& message, const QByteArray& data) {
  ulo::PrivateBus bus(ulo::PrivateBus::Kind::session);
  if (!bus.isConnected()) {
    ULO_LOG_ERROR("No session bus, %s is not sent on %s", message.constData(), channel.constData());
    return false;
  }
  QDBusMessage broadcast = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface),
                                                      QLatin1String(signal));
  broadcast << QString::fromUtf8(channel.constData()) << QString::fromUtf8(message.constData())
            << data;
  // The bus replies in order: once this reply arrives, the signal has been sent.
  const QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
  const bool sent = bus.connection().send(broadcast) &&
                    bus.connection().call(question, QDBus::Block, patienceMs).type() ==
                        QDBusMessage::ReplyMessage;
  if (!sent)
    ULO_LOG_ERROR("The session bus does not answer, %s is not sent on %s", message.constData(),
                  channel.constData());
  return sent;
}
