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
  QString name;     // a single line for display, set by the device
  bool paired = false;

  bool operator==(const BluetoothDevice&) const = default;
};

// The Bluetooth devices known to BlueZ, updated as they appear and disappear (ObjectManager,
// org.bluez.Adapter1 and Device1 on the D-Bus system bus). No function blocks; results are reported
// by signals.
class BluetoothDevices : public QObject {
  Q_OBJECT

public:
  enum class Adapter {
    unknown,  // no reply yet
    missing,  // BlueZ is not running, or has no adapter
    off,      // the adapter is not powered
    ready,
  };

  // Queries BlueZ immediately. If there is no reply within `patience`, the adapter is missing.
  BluetoothDevices(const QDBusConnection& systemBus, std::chrono::milliseconds patience);

  // Once an adapter has been ready, reports the state of that adapter only. A missing or unpowered
  // adapter may become ready later.
  [[nodiscard]] Adapter adapter() const { return adapter_; }
  // The adapter's devices: paired ones first, then by name.
  [[nodiscard]] const std::vector<BluetoothDevice>& devices() const { return devices_; }

  // Searches for nearby devices until stopped. Discovery ends with the connection.
  void startDiscovery();
  void stopDiscovery();
  // Also false if the adapter refused to search, which is logged.
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
  // Takes the objects of a reply to that question.
  void take(const QDBusMessage& reply, const QString& sender, std::chrono::milliseconds patience);
  void callAdapter(const QString& method, const QVariantList& arguments);
  void discoveryRefused(const QString& method, const QString& why);
  void evaluate();
  [[nodiscard]] Adapter findAdapter();
  [[nodiscard]] std::vector<BluetoothDevice> findDevices() const;
  void setDiscovering(bool discovering);

  QDBusConnection bus_;
  QString bluez_;  // BlueZ's unique bus name, once it has replied
  Objects objects_;
  QDBusObjectPath path_;  // the adapter's object path; empty until one is ready
  Adapter adapter_ = Adapter::unknown;
  std::vector<BluetoothDevice> devices_;
  bool discovering_ = false;
};

}  // namespace ulo
