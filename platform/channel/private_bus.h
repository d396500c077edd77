#pragma once

#include "export.h"

#include <QDBusConnection>
#include <QString>

namespace ulo {

// A connection to a D-Bus of its owner's own: what it is closed with doesn't belong to anybody
// else's, and what the bus keeps for a caller ends with it.
class ULO_EXPORT PrivateBus {
public:
  enum class Kind {
    session,  // $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in $XDG_RUNTIME_DIR
    system,   // $DBUS_SYSTEM_BUS_ADDRESS, else where the system keeps it
  };

  // Where there is no bus, none is started.
  explicit PrivateBus(Kind kind);
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus();

  [[nodiscard]] bool isConnected() const { return connection_.isConnected(); }
  [[nodiscard]] QDBusConnection& connection() { return connection_; }

private:
  QString name_;
  bool isNamed_ = false;  // the D-Bus library knows the name, connected or not
  QDBusConnection connection_{QString()};
};

}  // namespace ulo
