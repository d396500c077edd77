// Takes pictures of the dialogs of a Bluetooth push.

#include "camera.h"

#include "device_chooser.h"
#include "push_progress.h"

namespace {

const std::vector<ulo::BluetoothDevice> devices = {
    {QStringLiteral("AA:BB:CC:DD:EE:01"), QString::fromUtf8("Annas Telefon"), true},
    {QStringLiteral("AA:BB:CC:DD:EE:02"), QString::fromUtf8("客厅电脑"), true},
    {QStringLiteral("AA:BB:CC:DD:EE:03"),
     QStringLiteral("A device with a name that is much longer than the screen is wide"), false},
};

void shootPush(const Camera& camera) {
  QWidget behind;
  camera.show(behind);
  ulo::DeviceChooser searching;
  searching.setSearching(true);
  camera.shootDialog(searching, "bluetooth-none");
  ulo::DeviceChooser choosing;
  choosing.setSearching(true);
  choosing.setDevices(devices);
  camera.shootDialog(choosing, "bluetooth-devices");

  const auto shootProgress = [&](const char* name, const auto& advance) {
    ulo::PushProgress progress(QStringLiteral("Return the books.vcs"), devices[0].name);
    QObject::connect(&progress, &ulo::PushProgress::cancelWanted, &progress,
                     &ulo::PushProgress::end);
    advance(progress);
    camera.shootDialog(progress, name);
  };
  shootProgress("bluetooth-connecting", [](ulo::PushProgress& p) { p.showConnecting(); });
  shootProgress("bluetooth-sending", [](ulo::PushProgress& p) { p.showSending(1200, 3000); });
}

}  // namespace

int main(int count, char** arguments) {
  return takePictures(count, arguments, {shootPush});
}
