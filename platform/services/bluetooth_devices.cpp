#include "bluetooth_devices.h"

#include "foreign_text.h"
#include "module_log.h"
#include "reply_sender.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <algorithm>

namespace ulo {

namespace {

constexpr QLatin1String service("org.bluez");
constexpr QLatin1String adapterInterface("org.bluez.Adapter1");
constexpr QLatin1String deviceInterface("org.bluez.Device1");
constexpr QLatin1String objectManager("org.freedesktop.DBus.ObjectManager");
constexpr QLatin1String properties("org.freedesktop.DBus.Properties");

// Maximum length of a device name in bytes, according to the Bluetooth specification.
constexpr qsizetype aliasLimit = 248;

bool isAddress(const QString& text) {
  constexpr qsizetype length = 17;
  if (text.size() != length)
    return false;
  for (qsizetype i = 0; i < length; ++i) {
    const char16_t c = text[i].unicode();
    const bool hex =
        (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
    if (i % 3 == 2 ? c != u':' : !hex)
      return false;
  }
  return true;
}

}  // namespace

BluetoothDevices::BluetoothDevices(const QDBusConnection& systemBus,
                                   std::chrono::milliseconds patience)
    : bus_(systemBus) {
  // Matches any sender: for a name QtDBus would query the bus, and abort if the bus has just
  // disconnected.
  bus_.connect(QString(), QString(), objectManager, QStringLiteral("InterfacesAdded"), this,
               SLOT(interfacesAdded(QDBusMessage)));
  bus_.connect(QString(), QString(), objectManager, QStringLiteral("InterfacesRemoved"), this,
               SLOT(interfacesRemoved(QDBusMessage)));
  for (const QLatin1String interface : {adapterInterface, deviceInterface})
    bus_.connect(QString(), QString(), properties, QStringLiteral("PropertiesChanged"), {interface},
                 QString(), this, SLOT(propertiesChanged(QDBusMessage)));
  auto* watcher =
      new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, &BluetoothDevices::serviceLost);
  bus_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Local"),
               QStringLiteral("Disconnected"), this, SLOT(serviceLost()));
  ask(patience);
}

void BluetoothDevices::ask(std::chrono::milliseconds patience) {
  // QtDBus does not always reply for a bus that it never reached.
  if (!bus_.isConnected()) {
    ULO_LOG_ERROR("There is no system bus");
    QMetaObject::invokeMethod(this, "serviceLost", Qt::QueuedConnection);
    return;
  }
  const QDBusMessage question = QDBusMessage::createMethodCall(
      service, QStringLiteral("/"), objectManager, QStringLiteral("GetManagedObjects"));
  auto* answer = new QDBusPendingCallWatcher(
      bus_.asyncCall(question, static_cast<int>(patience.count())), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, patience] {
    answer->deleteLater();
    const QDBusMessage reply = answer->reply();
    if (reply.type() == QDBusMessage::ReplyMessage &&
        reply.signature() == QLatin1String("a{oa{sa{sv}}}")) {
      findReplySender(bus_, reply, service, this, [this, reply, patience](const QString& sender) {
        take(reply, sender, patience);
      });
    } else {
      ULO_LOG_ERROR("BlueZ does not tell its devices: %s", qPrintable(reply.errorMessage()));
      evaluate();
    }
  });
}

void BluetoothDevices::take(const QDBusMessage& reply, const QString& sender,
                            std::chrono::milliseconds patience) {
  // Signals were ignored until the sender was known. The reply may lack the changes they reported.
  if (reply.service().isEmpty() && bluez_ != sender) {
    bluez_ = sender;
    ask(patience);
    return;
  }
  bluez_ = sender;
  if (!sender.isEmpty())
    reply.arguments().constFirst().value<QDBusArgument>() >> objects_;
  evaluate();
}

void BluetoothDevices::startDiscovery() {
  // Devices reachable only through Low Energy do not accept objects.
  callAdapter(QStringLiteral("SetDiscoveryFilter"),
              {QVariantMap{{QStringLiteral("Transport"), QStringLiteral("bredr")}}});
  callAdapter(QStringLiteral("StartDiscovery"), {});
  setDiscovering(adapter_ == Adapter::ready);
}

void BluetoothDevices::stopDiscovery() {
  if (discovering_)
    callAdapter(QStringLiteral("StopDiscovery"), {});
  setDiscovering(false);
}

void BluetoothDevices::callAdapter(const QString& method, const QVariantList& arguments) {
  if (adapter_ != Adapter::ready)
    return;
  QDBusMessage call =
      QDBusMessage::createMethodCall(service, path_.path(), adapterInterface, method);
  call.setArguments(arguments);
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, method] {
    answer->deleteLater();
    if (answer->isError())
      discoveryRefused(method, answer->error().message());
  });
}

void BluetoothDevices::discoveryRefused(const QString& method, const QString& why) {
  ULO_LOG_ERROR("The Bluetooth adapter refuses %s: %s", qPrintable(method), qPrintable(why));
  if (method == QLatin1String("StartDiscovery"))
    setDiscovering(false);
}

void BluetoothDevices::setDiscovering(bool discovering) {
  if (discovering_ == discovering)
    return;
  discovering_ = discovering;
  Q_EMIT discoveryChanged();
}

void BluetoothDevices::interfacesAdded(const QDBusMessage& signal) {
  if (signal.service() != bluez_ || signal.signature() != QLatin1String("oa{sa{sv}}"))
    return;
  Interfaces added;
  signal.arguments().constLast().value<QDBusArgument>() >> added;
  objects_[signal.arguments().constFirst().value<QDBusObjectPath>()].insert(added);
  evaluate();
}

void BluetoothDevices::interfacesRemoved(const QDBusMessage& signal) {
  if (signal.service() != bluez_ || signal.signature() != QLatin1String("oas"))
    return;
  const auto object = objects_.find(signal.arguments().constFirst().value<QDBusObjectPath>());
  if (object == objects_.end())
    return;
  for (const QString& interface : signal.arguments().constLast().toStringList())
    object->remove(interface);
  if (object->isEmpty())
    objects_.erase(object);
  evaluate();
}

void BluetoothDevices::propertiesChanged(const QDBusMessage& signal) {
  const auto object = objects_.find(QDBusObjectPath(signal.path()));
  if (signal.service() != bluez_ || object == objects_.end() ||
      signal.signature() != QLatin1String("sa{sv}as"))
    return;
  const auto interface = object->find(signal.arguments().constFirst().toString());
  if (interface == object->end())
    return;
  interface->insert(qdbus_cast<QVariantMap>(signal.arguments().at(1)));
  evaluate();
}

void BluetoothDevices::serviceLost() {
  objects_.clear();
  evaluate();
}

void BluetoothDevices::evaluate() {
  const Adapter adapter = findAdapter();
  std::vector<BluetoothDevice> devices = findDevices();
  const bool otherAdapter = adapter != adapter_;
  const bool otherDevices = devices != devices_;
  adapter_ = adapter;
  devices_ = std::move(devices);
  if (adapter_ != Adapter::ready)
    setDiscovering(false);
  if (otherAdapter)
    Q_EMIT adapterChanged();
  if (otherDevices)
    Q_EMIT devicesChanged();
}

BluetoothDevices::Adapter BluetoothDevices::findAdapter() {
  Adapter best = Adapter::missing;
  for (auto object = objects_.cbegin(); object != objects_.cend(); ++object) {
    const auto adapter = object->constFind(adapterInterface);
    if (adapter == object->cend() || (!path_.path().isEmpty() && object.key() != path_))
      continue;
    best = Adapter::off;
    if (adapter->value(QStringLiteral("Powered")).toBool()) {
      path_ = object.key();
      return Adapter::ready;
    }
  }
  return best;
}

std::vector<BluetoothDevice> BluetoothDevices::findDevices() const {
  std::vector<BluetoothDevice> found;
  for (const Interfaces& object : objects_) {
    const auto device = object.constFind(deviceInterface);
    if (device == object.cend())
      continue;
    const QString address = device->value(QStringLiteral("Address")).toString();
    const auto owner = device->value(QStringLiteral("Adapter")).value<QDBusObjectPath>();
    if (owner != path_ || !isAddress(address) || device->value(QStringLiteral("Blocked")).toBool())
      continue;
    const QString name = oneLine(device->value(QStringLiteral("Alias")).toString(), aliasLimit);
    found.push_back({address, name.isEmpty() ? address : name,
                     device->value(QStringLiteral("Paired")).toBool()});
  }
  std::sort(found.begin(), found.end(), [](const BluetoothDevice& a, const BluetoothDevice& b) {
    if (a.paired != b.paired)
      return a.paired;
    const int order = QString::localeAwareCompare(a.name, b.name);
    return order != 0 ? order < 0 : a.address < b.address;
  });
  return found;
}

}  // namespace ulo
