#pragma once

#include "ZPopup.h"
#include "bluetooth_devices.h"

#include <vector>

class QListWidget;
class ZWrappedText;

namespace ulo {

// Asks the user for a device. Can be accepted only with a device selected. Devices may appear and
// disappear while it is open.
class DeviceChooser : public ZPopup {
  Q_OBJECT

public:
  explicit DeviceChooser(QWidget* parent = nullptr);

  // Shows the devices in the given order. The selected device stays selected while it is listed.
  void setDevices(const std::vector<BluetoothDevice>& devices);
  // Tells the user whether more devices may appear.
  void setSearching(bool searching);

  // The selected device; its address is empty if there is none.
  [[nodiscard]] BluetoothDevice chosen() const;

public Q_SLOTS:
  void accept() override;

private:
  void tell();

  ZWrappedText* hint_;
  QListWidget* list_;
  std::vector<BluetoothDevice> devices_;
  bool searching_ = false;
};

}  // namespace ulo
