#pragma once

#include <QDBusConnection>
#include <QString>

namespace ulo {

// A D-Bus connection that is not shared: closing it affects no other user, and whatever the bus
// keeps for the caller is released with it.
class PrivateBus {
public:
  enum class Kind {
    session,  // $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in $XDG_RUNTIME_DIR
    system,   // $DBUS_SYSTEM_BUS_ADDRESS, else the system's default address
  };

  // Does not start a bus if there is none.
  explicit PrivateBus(Kind kind);
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus();

  [[nodiscard]] bool isConnected() const { return connection_.isConnected(); }
  [[nodiscard]] QDBusConnection& connection() { return connection_; }

private:
  QString name_;
  bool isNamed_ = false;  // the name is registered with the D-Bus library, connected or not
  QDBusConnection connection_{QString()};
};

}  // namespace ulo
