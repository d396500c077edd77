#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QMap>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <vector>

namespace ulo {

struct BluetoothDevice {
  QString address;  // "AA:BB:CC:DD:EE:FF"
  QString name;     // one line for people, from outside
  bool paired = false;

  bool operator==(const BluetoothDevice&) const = default;
};

// The Bluetooth devices that BlueZ knows of, followed as they come and go (ObjectManager,
// org.bluez.Adapter1 and Device1 on the system's D-Bus). Nothing here waits: what becomes known is
// told by signals.
class BluetoothDevices : public QObject {
  Q_OBJECT

public:
  enum class Adapter {
    unknown,  // not answered yet
    missing,  // no BlueZ, or it has no adapter
    off,      // there is one, without power
    ready,
  };

  // Asks at once. Without an answer after `patience` there is no adapter.
  BluetoothDevices(const QDBusConnection& systemBus, std::chrono::milliseconds patience);

  // Once it is ready, it is about that one adapter; what was missing or off may become ready.
  [[nodiscard]] Adapter adapter() const { return adapter_; }
  // Of the adapter, paired ones first, then by name.
  [[nodiscard]] const std::vector<BluetoothDevice>& devices() const { return devices_; }

  // Looks for devices in reach until stopped; ends by itself with the connection.
  void startDiscovery();
  void stopDiscovery();
  // False, too, where the adapter refused; that is logged.
  [[nodiscard]] bool isDiscovering() const { return discovering_; }

Q_SIGNALS:
  void adapterChanged();
  void devicesChanged();
  void discoveryChanged();

private Q_SLOTS:
  void interfacesAdded(const QDBusMessage& signal);
  void interfacesRemoved(const QDBusMessage& signal);
  void propertiesChanged(const QDBusMessage& signal);
  void serviceLost();

private:
  using Interfaces = QMap<QString, QVariantMap>;
  using Objects = QMap<QDBusObjectPath, Interfaces>;

  void ask(std::chrono::milliseconds patience);
  void callAdapter(const QString& method, const QVariantList& arguments);
  void discoveryRefused(const QString& method, const QString& why);
  void evaluate();
  [[nodiscard]] Adapter findAdapter();
  [[nodiscard]] std::vector<BluetoothDevice> findDevices() const;
  void setDiscovering(bool discovering);

  QDBusConnection bus_;
  QString bluez_;  // its own name on the bus, once it has answered
  Objects objects_;
  QDBusObjectPath path_;  // of the adapter; empty until one is ready
  Adapter adapter_ = Adapter::unknown;
  std::vector<BluetoothDevice> devices_;
  bool discovering_ = false;
};

}  // namespace ulo
