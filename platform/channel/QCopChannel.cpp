#include "QCopChannel.h"

#include "module_log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QStringList>

#include <atomic>
#include <cstdlib>

namespace {

constexpr char path[] = "/ulo/channel";
constexpr char interface[] = "ulo.platform.Channel";
constexpr char signal[] = "Message";
// What a bus that answers at all takes longest.
constexpr int patienceMs = 2000;

// Empty when the session has no bus. Asking the D-Bus library itself might start one.
QString sessionAddress() {
  QString named = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  if (!named.isEmpty())
    return named;
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  const QString socket = runtime + QStringLiteral("/bus");
  return !runtime.isEmpty() && QFile::exists(socket) ? QStringLiteral("unix:path=") + socket
                                                     : QString();
}

}  // namespace

// A connection of its own: what it is closed with doesn't belong to anybody else's.
class QCopChannel::Bus {
public:
  Bus() : name_(QStringLiteral("ulo-channel-%1").arg(++made)) {
    if (const QString address = sessionAddress(); !address.isEmpty()) {
      isNamed_ = true;
      connection_ = QDBusConnection::connectToBus(address, name_);
    }
  }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;
  // The first question to the D-Bus library starts its thread: without a bus there is none.
  ~Bus() {
    if (isNamed_)
      QDBusConnection::disconnectFromBus(name_);
  }

  [[nodiscard]] bool isConnected() const { return connection_.isConnected(); }
  QDBusConnection& connection() { return connection_; }

private:
  static std::atomic<int> made;

  QString name_;
  bool isNamed_ = false;  // the D-Bus library knows the name, connected or not
  QDBusConnection connection_{QString()};
};

std::atomic<int> QCopChannel::Bus::made = 0;

QCopChannel::QCopChannel(const QCString& channel, QObject* parent)
    : QObject(parent), channel_(channel), bus_(std::make_unique<Bus>()) {
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

// The bus could choose by the channel, but QtDBus writes no rule for names beyond Latin-1.
void QCopChannel::deliver(const QString& channel, const QString& message, const QByteArray& data) {
  if (channel == QString::fromUtf8(channel_.constData()))
    Q_EMIT received(QCString(message.toUtf8()), data);
}

bool QCopChannel::send(const QCString& channel, const QCString& message, const QByteArray& data) {
  Bus bus;
  if (!bus.isConnected()) {
    ULO_LOG_ERROR("No session bus, %s is not sent on %s", message.constData(), channel.constData());
    return false;
  }
  QDBusMessage broadcast = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface),
                                                      QLatin1String(signal));
  broadcast << QString::fromUtf8(channel.constData()) << QString::fromUtf8(message.constData())
            << data;
  // The bus answers in the order in which it was asked: behind the answer the signal has gone out.
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
