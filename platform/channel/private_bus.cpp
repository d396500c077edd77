#include "private_bus.h"

#include <QFile>

#include <atomic>

namespace ulo {

namespace {

std::atomic<int> made = 0;

// Empty if the session has no bus. Asking the D-Bus library might start one.
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

// Several libraries of a process may contain this code, and names must be unique in the process.
PrivateBus::PrivateBus(Kind kind)
    : name_(QStringLiteral("ulo-bus-%1-%2")
                .arg(reinterpret_cast<quintptr>(&made), 0, 16)
                .arg(++made)) {
  // The D-Bus library would remember the first address that it saw in the environment.
  const QString address =
      kind == Kind::session ? sessionAddress() : qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
  // The first call to the D-Bus library starts its thread; without a bus this is avoided.
  isNamed_ = kind == Kind::system || !address.isEmpty();
  if (!address.isEmpty())
    connection_ = QDBusConnection::connectToBus(address, name_);
  else if (isNamed_)
    connection_ = QDBusConnection::connectToBus(QDBusConnection::SystemBus, name_);
}

PrivateBus::~PrivateBus() {
  if (isNamed_)
    QDBusConnection::disconnectFromBus(name_);
}

}  // namespace ulo
