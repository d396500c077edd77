#include "bluetooth_share.h"

#include "RES_ICON_Reader.h"
#include "ZMessageDlg.h"
#include "bluetooth_devices.h"
#include "device_chooser.h"
#include "foreign_text.h"
#include "modal.h"
#include "module_log.h"
#include "object_file.h"
#include "private_bus.h"
#include "push_progress.h"
#include "ulo/texts.h"

#include <QApplication>
#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QPointer>
#include <QScopedValueRollback>

#include <memory>
#include <optional>

namespace ulo {

namespace {

// Maximum length of a device name in a message, in characters.
constexpr qsizetype shownNameLimit = 60;

// A share, from the check of the adapter to the final message.
class BluetoothShare {
public:
  explicit BluetoothShare(const ShareSettings& settings)
      : settings_(settings), window_(QApplication::activeModalWidget()) {
    if (window_ == nullptr)
      window_ = QApplication::activeWindow();
  }

  [[nodiscard]] bool run(const SHARE_Tool::OBJECT_INFO& info, QByteArrayView content);

private:
  // Whether obexd is available. One that does not reply in time may still be starting.
  enum class Obexd { unknown, expected, refused };

  [[nodiscard]] Obexd awaitServices();
  [[nodiscard]] std::optional<BluetoothDevice> chooseDevice();
  void showPush(ObjectPush& push, const QString& object, const QString& device);
  void tellEnd(const ObjectPush& push, const BluetoothDevice& device);
  void tellAdapter();
  void tell(const QString& message, std::optional<std::chrono::milliseconds> goesAfter = {});

  const ShareSettings& settings_;
  // Determined once: between two dialogs there is no active window.
  QPointer<QWidget> window_;
  PrivateBus system_{PrivateBus::Kind::system};
  PrivateBus session_{PrivateBus::Kind::session};
  BluetoothDevices devices_{system_.connection(), settings_.patience};
};

void BluetoothShare::tell(const QString& message,
                          std::optional<std::chrono::milliseconds> goesAfter) {
  Modal<ZMessageDlg> dialog(text("TXT_RID_HEADER_SEND_VIA_BLUETOOTH", "Send via Bluetooth"),
                            message, ZMessageDlg::message, window_);
  dialog->setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("bluetooth_pop.gif"), true));
  if (goesAfter)
    QTimer::singleShot(*goesAfter, dialog.get(), SLOT(accept()));
  dialog.exec();
}

void BluetoothShare::tellAdapter() {
  const bool off = devices_.adapter() == BluetoothDevices::Adapter::off;
  ULO_LOG_ERROR("%s, nothing is sent",
                off ? "The Bluetooth adapter is off" : "There is no Bluetooth adapter");
  tell(off ? text("TXT_RID_INSTRUCTIONALTXT_BLUETOOTH_IS_OFF",
                  "Bluetooth is switched off. Switch it on and try again.")
           : text("TXT_RID_INSTRUCTIONALTXT_NO_BLUETOOTH_ADAPTER",
                  "Bluetooth cannot be used: no adapter was found."));
}

// Runs the event loop until both have replied or the timeout has passed.
BluetoothShare::Obexd BluetoothShare::awaitServices() {
  Obexd obexd = session_.isConnected() ? Obexd::unknown : Obexd::refused;
  QEventLoop loop;
  const auto look = [&] {
    if (obexd != Obexd::unknown && devices_.adapter() != BluetoothDevices::Adapter::unknown)
      loop.quit();
  };
  // The call starts obexd if the bus can activate it.
  const QDBusMessage ping = QDBusMessage::createMethodCall(
      QStringLiteral("org.bluez.obex"), QStringLiteral("/org/bluez/obex"),
      QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
  const QDBusPendingCallWatcher answer(
      session_.connection().asyncCall(ping, static_cast<int>(settings_.patience.count())));
  QObject::connect(&answer, &QDBusPendingCallWatcher::finished, &loop, [&] {
    const QDBusError::ErrorType error = answer.error().type();
    const bool late = error == QDBusError::NoReply || error == QDBusError::Timeout;
    if (obexd == Obexd::unknown)
      obexd = !answer.isError() || late ? Obexd::expected : Obexd::refused;
    if (answer.isError())
      ULO_LOG_ERROR("obexd does not answer: %s", qPrintable(answer.error().message()));
    look();
  });
  QObject::connect(&devices_, &BluetoothDevices::adapterChanged, &loop, look);
  // Ends the wait even if the calls get no reply.
  QTimer::singleShot(settings_.patience, &loop, SLOT(quit()));
  // User input during the wait is meant for the next dialog.
  loop.exec(QEventLoop::ExcludeUserInputEvents);
  return obexd;
}

// Returns the device that the user chose, or nothing, which is logged.
std::optional<BluetoothDevice> BluetoothShare::chooseDevice() {
  Modal<DeviceChooser> chooser(window_);
  const auto showDevices = [&] { chooser->setDevices(devices_.devices()); };
  const auto showSearch = [&] { chooser->setSearching(devices_.isDiscovering()); };
  QObject::connect(&devices_, &BluetoothDevices::devicesChanged, chooser.get(), showDevices);
  QObject::connect(&devices_, &BluetoothDevices::discoveryChanged, chooser.get(), showSearch);
  QObject::connect(&devices_, &BluetoothDevices::adapterChanged, chooser.get(), &QDialog::reject);
  showDevices();
  devices_.startDiscovery();
  const bool accepted = chooser.exec();
  // An adapter that is searching is slow to connect.
  devices_.stopDiscovery();
  if (devices_.adapter() != BluetoothDevices::Adapter::ready) {
    tellAdapter();
    return {};
  }
  if (!accepted) {
    ULO_LOG_ERROR("No device was chosen, nothing is sent");
    return {};
  }
  return chooser->chosen();
}

// Shows the progress of the push until it ends.
void BluetoothShare::showPush(ObjectPush& push, const QString& object, const QString& device) {
  {
    Modal<PushProgress> progress(object, device, window_);
    PushProgress* const dialog = progress.get();
    QObject::connect(&push, &ObjectPush::progressed, dialog, [&push, dialog] {
      switch (push.state()) {
      case ObjectPush::State::connecting:
        return dialog->showConnecting();
      case ObjectPush::State::offering:
        return dialog->showOffering();
      case ObjectPush::State::sending:
        return dialog->showSending(push.transferred(), push.size());
      case ObjectPush::State::leaving:
      case ObjectPush::State::over:
        return dialog->showLeaving();
      }
    });
    QObject::connect(&push, &ObjectPush::ended, dialog, &PushProgress::end);
    QObject::connect(dialog, &PushProgress::cancelWanted, &push, &ObjectPush::cancel);
    progress.exec();
  }
  if (push.state() == ObjectPush::State::over)
    return;
  // The window was closed, and the dialog with it, so cancel the push and wait for its end.
  QEventLoop loop;
  QObject::connect(&push, &ObjectPush::ended, &loop, &QEventLoop::quit);
  push.cancel();
  if (push.state() != ObjectPush::State::over)
    loop.exec();
}

void BluetoothShare::tellEnd(const ObjectPush& push, const BluetoothDevice& device) {
  const QString name = oneLine(device.name, shownNameLimit);
  if (push.end() == ObjectPush::End::sent)
    tell(text("FMT_RID_INSTRUCTIONALTXT_SENT_TO_1", "Sent to %1.").arg(name),
         settings_.confirmation);
  else if (push.end() == ObjectPush::End::failed)
    tell(push.hasBegun() ? text("FMT_RID_INSTRUCTIONALTXT_SENDING_TO_1_FAILED",
                                "%1 has not received it: it was declined, or the connection broke.")
                               .arg(name)
                         : text("FMT_RID_INSTRUCTIONALTXT_NO_CONNECTION_TO_1",
                                "No connection to %1. Is it switched on and in reach?")
                               .arg(name));
}

bool BluetoothShare::run(const SHARE_Tool::OBJECT_INFO& info, QByteArrayView content) {
  const Obexd obexd = awaitServices();
  if (devices_.adapter() != BluetoothDevices::Adapter::ready) {
    tellAdapter();
    return false;
  }
  if (obexd == Obexd::refused) {
    ULO_LOG_ERROR("There is no obexd on the session bus, nothing is sent");
    tell(text("TXT_RID_INSTRUCTIONALTXT_NO_OBJECT_PUSH_SERVICE",
              "Nothing can be sent: the Bluetooth sending service is missing."));
    return false;
  }
  const std::optional<BluetoothDevice> device = chooseDevice();
  if (!device)
    return false;
  const ObjectFile file(info.name, content);
  if (file.path().isEmpty()) {
    tell(text("TXT_RID_INSTRUCTIONALTXT_OBJECT_NOT_PREPARED",
              "Nothing was sent: there is no room for a copy to send."));
    return false;
  }
  ObjectPush push(session_.connection(), device->address, file.path(), settings_.session,
                  settings_.push);
  showPush(push, info.description.isEmpty() ? info.name : info.description, device->name);
  tellEnd(push, *device);
  if (!push.hasBegun())
    ULO_LOG_ERROR("It did not come to a transfer to %s", qPrintable(device->address));
  return push.hasBegun();
}

}  // namespace

bool shareByBluetooth(const SHARE_Tool::OBJECT_INFO& info, QByteArrayView content,
                      const ShareSettings& settings) {
  // The event loop runs during the share, so another request may arrive.
  static bool busy = false;
  if (busy) {
    ULO_LOG_ERROR("Something is being sent already");
    return false;
  }
  const QScopedValueRollback<bool> guard(busy, true);
  return BluetoothShare(settings).run(info, content);
}

}  // namespace ulo
