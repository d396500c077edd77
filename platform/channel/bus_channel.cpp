// The library that bus_library.h describes.

#include "bus_library.h"
#include "private_bus.h"
#include "ulo/export.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <memory>

namespace {

using ulo::BusSending;
using ulo::PrivateBus;

constexpr char path[] = "/ulo/channel";
constexpr char interface[] = "ulo.platform.Channel";
constexpr char signal[] = "Message";
// Timeout for the bus.
constexpr int patienceMs = 2000;

void* listen(QObject* receiver) {
  auto bus = std::make_unique<PrivateBus>(PrivateBus::Kind::session);
  const bool listens =
      bus->isConnected() &&
      bus->connection().connect(QString(), QLatin1String(path), QLatin1String(interface),
                                QLatin1String(signal), receiver,
                                SLOT(deliver(QString, QString, QByteArray)));
  return listens ? bus.release() : nullptr;
}

bool isConnected(void* listener) {
  return static_cast<PrivateBus*>(listener)->isConnected();
}

void close(void* listener) {
  delete static_cast<PrivateBus*>(listener);
}

BusSending send(const QString& channel, const QString& message, const QByteArray& data) {
  PrivateBus bus(PrivateBus::Kind::session);
  if (!bus.isConnected())
    return BusSending::noBus;
  QDBusMessage broadcast = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface),
                                                      QLatin1String(signal));
  broadcast << channel << message << data;
  // The bus replies in order: once this reply arrives, the signal has been sent.
  const QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
  const bool sent = bus.connection().send(broadcast) &&
                    bus.connection().call(question, QDBus::Block, patienceMs).type() ==
                        QDBusMessage::ReplyMessage;
  return sent ? BusSending::sent : BusSending::noReply;
}

}  // namespace

extern "C" ULO_EXPORT const ulo::BusFunctions ulo_bus_functions_1;
const ulo::BusFunctions ulo_bus_functions_1 = {listen, isConnected, close, send};
