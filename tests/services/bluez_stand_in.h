#pragma once

#include "test_bus.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

#include <functional>

using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

// Replaces bluetoothd: one adapter and the devices that the test adds.
class BluezStandIn : public QDBusVirtualObject {
public:
  explicit BluezStandIn(const TestBus& bus);
  ~BluezStandIn() override;

  void addAdapter(bool powered);
  void setPowered(bool powered);
  // `key` identifies the device; its address is 00:00:00:00:00:key.
  void addDevice(const QString& key, const QString& alias, bool paired);
  void removeDevice(const QString& key);
  void setDevice(const QString& key, const QVariantMap& properties);

  [[nodiscard]] QString name() const { return QStringLiteral("org.bluez"); }
  QDBusConnection& connection() { return *bus_; }
  // The calls received, such as "StartDiscovery", in order.
  QStringList calls;
  // The calls to be answered with an error.
  QStringList refused;
  // Called with messages that the stand-in does not know. Returns true if it has answered.
  std::function<bool(const QDBusMessage&)> other;
  std::function<void()> discoveryStarted;

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
  void change(const QDBusObjectPath& path, const QString& interface, const QVariantMap& properties);

  BusConnection bus_;
  Objects objects_;
};
