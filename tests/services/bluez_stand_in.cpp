#include "bluez_stand_in.h"

#include <QDBusMetaType>

namespace {

const QDBusObjectPath adapterPath(QStringLiteral("/org/bluez/hci0"));
const QString adapterInterface = QStringLiteral("org.bluez.Adapter1");
const QString deviceInterface = QStringLiteral("org.bluez.Device1");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");

QDBusObjectPath devicePath(const QString& key) {
  return QDBusObjectPath(QStringLiteral("/org/bluez/hci0/dev_") + key);
}

}  // namespace

BluezStandIn::BluezStandIn(const TestBus& bus) : bus_(bus, name()) {
  qDBusRegisterMetaType<Interfaces>();
  qDBusRegisterMetaType<Objects>();
  bus_->registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
}

BluezStandIn::~BluezStandIn() {
  bus_->unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
}

void BluezStandIn::addAdapter(bool powered) {
  objects_[adapterPath][adapterInterface] = {{QStringLiteral("Powered"), powered}};
}

void BluezStandIn::setPowered(bool powered) {
  change(adapterPath, adapterInterface, {{QStringLiteral("Powered"), powered}});
}

void BluezStandIn::addDevice(const QString& key, const QString& alias, bool paired) {
  const Interfaces device = {{deviceInterface,
                              {{QStringLiteral("Address"), QStringLiteral("00:00:00:00:00:") + key},
                               {QStringLiteral("Alias"), alias},
                               {QStringLiteral("Paired"), paired},
                               {QStringLiteral("Adapter"), QVariant::fromValue(adapterPath)}}}};
  objects_[devicePath(key)] = device;
  QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/"), objectManager,
                                                   QStringLiteral("InterfacesAdded"));
  bus_->send(signal << QVariant::fromValue(devicePath(key)) << QVariant::fromValue(device));
}

void BluezStandIn::removeDevice(const QString& key) {
  objects_.remove(devicePath(key));
  QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/"), objectManager,
                                                   QStringLiteral("InterfacesRemoved"));
  bus_->send(signal << QVariant::fromValue(devicePath(key)) << QStringList(deviceInterface));
}

void BluezStandIn::setDevice(const QString& key, const QVariantMap& properties) {
  change(devicePath(key), deviceInterface, properties);
}

void BluezStandIn::change(const QDBusObjectPath& path, const QString& interface,
                          const QVariantMap& properties) {
  objects_[path][interface].insert(properties);
  QDBusMessage signal =
      QDBusMessage::createSignal(path.path(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                 QStringLiteral("PropertiesChanged"));
  bus_->send(signal << interface << properties << QStringList());
}

bool BluezStandIn::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
  const QString member = message.member();
  if (message.interface() == objectManager) {
    bus_->send(message.createReply(QVariant::fromValue(objects_)));
    return true;
  }
  if (message.interface() == adapterInterface) {
    calls << member;
    bus_->send(refused.contains(member)
                   ? message.createErrorReply(QStringLiteral("org.bluez.Error.Failed"), member)
                   : message.createReply());
    if (member == QLatin1String("StartDiscovery") && discoveryStarted)
      discoveryStarted();
    return true;
  }
  return other && other(message);
}
