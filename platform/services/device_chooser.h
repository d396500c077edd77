#pragma once

#include "ZPopup.h"
#include "bluetooth_devices.h"

#include <vector>

class QListWidget;
class ZWrappedText;

namespace ulo {

// Asks to which device. It is accepted with one chosen only; devices may come and go meanwhile.
class DeviceChooser : public ZPopup {
  Q_OBJECT

public:
  explicit DeviceChooser(QWidget* parent = nullptr);

  // In the order given. The chosen one stays chosen while it is there.
  void setDevices(const std::vector<BluetoothDevice>& devices);
  // Whether more devices may come.
  void setSearching(bool searching);

  // The row that is marked; without an address when there is none.
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
