// Tests for sharing over Bluetooth, with stand-ins for BlueZ and obexd on private buses.

#include "device_chooser.h"
#include "gui_test.h"
#include "push_progress.h"
#include "share_fixture.h"

#include "SHARE_Tool.h"

#include <QListWidget>
#include <QTest>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Manner = ObexdStandIn::Manner;

namespace {

// With an adapter and one device.
class ShareWithDevice : public Share {
protected:
  ShareWithDevice() {
    bluez.addAdapter(true);
    bluez.addDevice("01", "Phone", true);
  }
  BluezStandIn bluez{system};
};

void cancel(QWidget& dialog) {
  QTest::keyClick(&dialog, Qt::Key_F3);
}

QStringList rows(const ulo::DeviceChooser& chooser) {
  const auto* list = chooser.findChild<QListWidget*>();
  QStringList texts;
  for (int i = 0; i < list->count(); ++i)
    texts << list->item(i)->text();
  return texts;
}

TEST_F(ShareWithDevice, SendsFileToChosenDevice) {
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_TRUE(share("Buy milk.vcs", QByteArray("one\0two\xff", 8)));
  EXPECT_EQ(obexd.name, "Buy milk.vcs");
  EXPECT_EQ(obexd.content, QByteArray("one\0two\xff", 8));
  EXPECT_THAT(obexd.calls,
              ElementsAre("CreateSession 00:00:00:00:00:01", "SendFile", "RemoveSession"));
  EXPECT_EQ(obexd.arguments, (QVariantMap{{"Target", "opp"}}));
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress", "Sent to Phone."));
  EXPECT_THAT(user.icons, testing::AllOf(testing::SizeIs(3),
                                         testing::Each(testing::Truly([](const QPixmap& icon) {
                                           return isIcon(icon, "bluetooth_pop.gif");
                                         }))));
  EXPECT_EQ(log.text(), "");
}

TEST_F(ShareWithDevice, PublicInterfaceSendsFile) {
  ObexdStandIn obexd(session, Manner::completes);
  QArray<char> data;
  data.duplicate("text", 4);
  EXPECT_TRUE(SHARE_Tool::shareByBt({".vcs", "text/x-vCalendar", QString()}, data));
  EXPECT_EQ(obexd.name, ".vcs");
  EXPECT_EQ(obexd.content, "text");
}

TEST_F(ShareWithDevice, DirectoryIsPrivateAndDeletedAfterwards) {
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_TRUE(share());
  EXPECT_EQ(obexd.directoryMode, 0700);
  EXPECT_EQ(QFileInfo(obexd.directory).path().toStdString(), runtime.path().string());
}

TEST_F(ShareWithDevice, UsesTemporaryDirectoryWithoutRuntimeDirectory) {
  ObexdStandIn obexd(session, Manner::completes);
  setenv("XDG_RUNTIME_DIR", "/nowhere/at/all", 1);
  EXPECT_TRUE(share());
  EXPECT_EQ(QFileInfo(obexd.directory).path(), QDir::tempPath());
  EXPECT_FALSE(QFileInfo::exists(obexd.directory));
  EXPECT_THAT(log.text(), HasSubstr("No directory can be made in /nowhere/at/all"));
}

TEST_F(ShareWithDevice, SmallFileCompletesImmediately) {
  ObexdStandIn obexd(session, Manner::completesAtOnce);
  EXPECT_TRUE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress", "Sent to Phone."));
}

TEST_F(ShareWithDevice, SuccessMessageClosesItself) {
  ObexdStandIn obexd(session, Manner::completes);
  settings.confirmation = std::chrono::milliseconds(1);
  user.read = [](ZMessageDlg&) {};
  EXPECT_TRUE(share());
}

TEST_F(ShareWithDevice, ListsPairedDevicesFirstAndNamesAsPlainText) {
  bluez.addDevice("02", "<b>Anna</b>", false);
  bluez.addDevice("03", QString::fromUtf8("\xe2\x80\xaeyz\nx\x01"), true);
  bluez.addDevice("04", "", false);
  bluez.addDevice("zz", "no address", true);
  QStringList shown;
  user.choose = [&](ulo::DeviceChooser& chooser) {
    shown = rows(chooser);
    cancel(chooser);
  };
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_FALSE(share());
  EXPECT_THAT(shown, ElementsAre("Phone", "yz x", "00:00:00:00:00:04", "<b>Anna</b>"));
}

TEST_F(ShareWithDevice, UpdatesDevicesWhileChoosing) {
  ObexdStandIn obexd(session, Manner::completes);
  int step = 0;
  user.choose = [&](ulo::DeviceChooser& chooser) {
    const auto reached = [&](const QStringList& wanted) { return rows(chooser) == wanted; };
    if (step == 0) {
      bluez.addDevice("02", "Anna", true);
      ++step;
    } else if (step == 1 && reached({"Anna", "Phone"})) {
      EXPECT_EQ(chooser.chosen().name, "Phone") << "the mark stays with its device";
      bluez.setDevice("02", {{"Alias", "Zoe"}});
      ++step;
    } else if (step == 2 && reached({"Phone", "Zoe"})) {
      bluez.removeDevice("01");
      ++step;
    } else if (step == 3 && reached({"Zoe"})) {
      QTest::keyClick(&chooser, Qt::Key_Return);
      ++step;
    }
  };
  EXPECT_TRUE(share());
  EXPECT_THAT(obexd.calls.value(0).toStdString(), HasSubstr("00:00:00:00:00:02"));
}

TEST_F(Share, SearchesIfNoDeviceIsKnown) {
  BluezStandIn bluez(system);
  bluez.addAdapter(true);
  bluez.discoveryStarted = [&] { bluez.addDevice("07", "Found", false); };
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_TRUE(share());
  EXPECT_TRUE(QTest::qWaitFor([&] { return bluez.calls.contains("StopDiscovery"); }, 20000));
  EXPECT_THAT(bluez.calls, ElementsAre("SetDiscoveryFilter", "StartDiscovery", "StopDiscovery"));
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress", "Sent to Found."));
}

TEST_F(Share, ReportsNoDevicesIfAdapterCannotSearch) {
  BluezStandIn bluez(system);
  bluez.addAdapter(true);
  bluez.refused = QStringList{"StartDiscovery"};
  ObexdStandIn obexd(session, Manner::completes);
  user.choose = [&](ulo::DeviceChooser& chooser) {
    QTest::keyClick(&chooser, Qt::Key_F1);
    for (const QWidget* part : chooser.findChildren<QWidget*>())
      if (part->accessibleName() == QLatin1String("No devices found."))
        cancel(chooser);
  };
  EXPECT_FALSE(share());
  EXPECT_THAT(log.text(), HasSubstr("The Bluetooth adapter refuses StartDiscovery"));
  EXPECT_THAT(log.text(), HasSubstr("No device was chosen, nothing is sent"));
  EXPECT_THAT(obexd.calls, IsEmpty());
}

TEST_F(ShareWithDevice, SendsNothingWithoutChoice) {
  ObexdStandIn obexd(session, Manner::completes);
  user.choose = cancel;
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser"));
  EXPECT_THAT(obexd.calls, IsEmpty());
  EXPECT_THAT(log.text(), HasSubstr("No device was chosen, nothing is sent"));
}

TEST_F(ShareWithDevice, CancelDuringTransferIsSilentAndReachesObexd) {
  ObexdStandIn obexd(session, Manner::stays);
  QString told;
  user.watch = [&](ulo::PushProgress& progress) {
    for (const QWidget* part : progress.findChildren<QWidget*>())
      if (part->accessibleName().contains(QLatin1String(" of ")))
        told = part->accessibleName();
    if (!told.isEmpty())
      cancel(progress);
  };
  EXPECT_TRUE(share("a.vcs", QByteArray(100, 'x')));
  EXPECT_EQ(told, "50 bytes of 100 bytes");
  EXPECT_THAT(obexd.calls, ElementsAre("CreateSession 00:00:00:00:00:01", "SendFile", "Cancel",
                                       "RemoveSession"));
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress"));
}

TEST_F(ShareWithDevice, CancelSucceedsEvenIfObexdRefuses) {
  ObexdStandIn obexd(session, Manner::refusesToCancel);
  user.watch = [&](ulo::PushProgress& progress) {
    if (obexd.calls.contains("SendFile"))
      QTest::keyClick(&progress, Qt::Key_Escape);
  };
  share();
  EXPECT_EQ(obexd.calls.last(), "RemoveSession");
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress"));
}

TEST_F(ShareWithDevice, CancelBeforeConnectionStartsNoTransfer) {
  ObexdStandIn obexd(session, Manner::neverAnswers);
  user.watch = [&](ulo::PushProgress& progress) {
    if (!obexd.calls.isEmpty())
      cancel(progress);
  };
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress"));
  EXPECT_THAT(log.text(), HasSubstr("It did not come to a transfer to 00:00:00:00:00:01"));
}

TEST_F(ShareWithDevice, ReportsFailedTransfer) {
  ObexdStandIn obexd(session, Manner::fails);
  EXPECT_TRUE(share());
  EXPECT_THAT(user.seen,
              ElementsAre("chooser", "progress",
                          "Phone has not received it: it was declined, or the connection broke."));
  EXPECT_EQ(obexd.calls.last(), "RemoveSession");
  EXPECT_THAT(log.text(), HasSubstr("Pushing an object to 00:00:00:00:00:01 failed"));
}

class ShareWithoutConnection : public ShareWithDevice,
                               public testing::WithParamInterface<Manner> {};

TEST_P(ShareWithoutConnection, IsReported) {
  ObexdStandIn obexd(session, GetParam());
  settings.push.stall = std::chrono::milliseconds(GetParam() == Manner::neverAnswers ? 50 : 20000);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress",
                                     "No connection to Phone. Is it switched on and in reach?"));
  EXPECT_THAT(log.text(), HasSubstr("Pushing an object to 00:00:00:00:00:01 failed"));
}

INSTANTIATE_TEST_SUITE_P(Of, ShareWithoutConnection,
                         testing::Values(Manner::neverAnswers, Manner::refusesSession,
                                         Manner::refusesFile, Manner::answersOtherwise),
                         [](const auto& test) {
                           return test.param == Manner::neverAnswers     ? "NoAnswer"
                                  : test.param == Manner::refusesSession ? "RefusedSession"
                                  : test.param == Manner::refusesFile    ? "RefusedFile"
                                                                         : "OtherAnswer";
                         });

TEST_F(ShareWithDevice, StalledTransferFails) {
  ObexdStandIn obexd(session, Manner::stays);
  settings.push.stall = std::chrono::milliseconds(300);
  EXPECT_TRUE(share());
  EXPECT_THAT(log.text(), HasSubstr("no sign of life"));
  EXPECT_EQ(user.seen.size(), 3);
}

TEST_F(ShareWithDevice, EndsWhenObexdVanishes) {
  auto obexd = std::make_unique<ObexdStandIn>(session, Manner::stays);
  user.watch = [&](ulo::PushProgress&) {
    if (obexd != nullptr && obexd->calls.contains("SendFile"))
      obexd.reset();
  };
  share();
  EXPECT_EQ(user.seen.size(), 3);
  EXPECT_THAT(log.text(), HasSubstr("Pushing an object to 00:00:00:00:00:01 failed"));
}

TEST_F(ShareWithDevice, EndsWhenSessionBusVanishes) {
  ObexdStandIn obexd(session, Manner::stays);
  user.watch = [&](ulo::PushProgress&) {
    if (obexd.calls.contains("SendFile"))
      session.end();
  };
  share();
  EXPECT_EQ(user.seen.size(), 3);
  EXPECT_THAT(log.text(), HasSubstr("Pushing an object to 00:00:00:00:00:01 failed"));
}

// This happens when the application returns to its idle screen.
TEST_F(ShareWithDevice, DeletingWindowCancelsTransfer) {
  ObexdStandIn obexd(session, Manner::stays);
  auto window = std::make_unique<QWidget>();
  window->show();
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  user.watch = [&](ulo::PushProgress& progress) {
    EXPECT_EQ(progress.parentWidget(), window.get());
    if (obexd.calls.contains("SendFile"))
      window.reset();
  };
  share();
  EXPECT_EQ(obexd.calls.last(), "RemoveSession");
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress"));
}

TEST_F(ShareWithDevice, DeletingWindowCancelsChoice) {
  ObexdStandIn obexd(session, Manner::stays);
  auto window = std::make_unique<QWidget>();
  window->show();
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  user.choose = [&](ulo::DeviceChooser&) { window.reset(); };
  EXPECT_FALSE(share());
  EXPECT_THAT(obexd.calls, IsEmpty());
}

TEST_F(ShareWithDevice, AllowsOneShareAtATime) {
  ObexdStandIn obexd(session, Manner::completes);
  bool second = true;
  user.choose = [&](ulo::DeviceChooser& chooser) {
    second = share("second.vcs");
    cancel(chooser);
  };
  EXPECT_FALSE(share());
  EXPECT_FALSE(second);
  EXPECT_THAT(log.text(), HasSubstr("Something is being sent already"));
}

TEST_F(ShareWithDevice, ReportsMissingObexd) {
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen,
              ElementsAre("Nothing can be sent: the Bluetooth sending service is missing."));
  EXPECT_THAT(log.text(), HasSubstr("There is no obexd on the session bus, nothing is sent"));
}

TEST_F(ShareWithDevice, EndsWhenSessionBusVanishesWhileChoosing) {
  ObexdStandIn obexd(session, Manner::completes);
  user.choose = [&](ulo::DeviceChooser& chooser) {
    session.end();
    QTest::keyClick(&chooser, Qt::Key_F1);
  };
  EXPECT_FALSE(share());
  EXPECT_EQ(user.seen.last(), "No connection to Phone. Is it switched on and in reach?");
}

TEST_F(ShareWithDevice, ReportsMissingSessionBus) {
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen,
              ElementsAre("Nothing can be sent: the Bluetooth sending service is missing."));
}

TEST_F(ShareWithDevice, ReportsFileThatCannotBeCreated) {
  ObexdStandIn obexd(session, Manner::completes);
  setenv("XDG_RUNTIME_DIR", "/nowhere", 1);
  setenv("TMPDIR", "/nowhere", 1);
  EXPECT_FALSE(share());
  unsetenv("TMPDIR");
  EXPECT_THAT(user.seen,
              ElementsAre("chooser", "Nothing was sent: there is no room for a copy to send."));
  EXPECT_THAT(log.text(), HasSubstr("No directory can be made"));
  EXPECT_THAT(obexd.calls, IsEmpty());
}

constexpr char noAdapter[] = "Bluetooth cannot be used: no adapter was found.";
constexpr char adapterOff[] = "Bluetooth is switched off. Switch it on and try again.";

TEST_F(Share, ReportsNoAdapterWithoutSystemBus) {
  ObexdStandIn obexd(session, Manner::completes);
  setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/at/all", 1);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre(noAdapter));
  EXPECT_THAT(log.text(), HasSubstr("There is no Bluetooth adapter, nothing is sent"));
}

TEST_F(Share, ReportsNoAdapterWithoutBluez) {
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre(noAdapter));
}

TEST_F(Share, ReportsNoAdapterIfBluezHasNone) {
  const BluezStandIn bluez(system);
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre(noAdapter));
}

// Neither BlueZ nor obexd answers: waiting ends after settings.patience.
TEST_F(Share, ReportsBluezThatDoesNotAnswer) {
  const BusConnection bluez(system, QStringLiteral("org.bluez"));
  ObexdStandIn obexd(session, Manner::completes);
  settings.patience = std::chrono::milliseconds(50);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre(noAdapter));
}

TEST_F(Share, ReportsAdapterThatIsOff) {
  BluezStandIn bluez(system);
  bluez.addAdapter(false);
  ObexdStandIn obexd(session, Manner::completes);
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre(adapterOff));
  EXPECT_THAT(log.text(), HasSubstr("The Bluetooth adapter is off, nothing is sent"));
}

TEST_F(ShareWithDevice, SwitchingAdapterOffEndsChoice) {
  ObexdStandIn obexd(session, Manner::completes);
  user.choose = [&](ulo::DeviceChooser&) { bluez.setPowered(false); };
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser", adapterOff));
}

TEST_F(Share, EndsChoiceWhenBluezVanishes) {
  auto bluez = std::make_unique<BluezStandIn>(system);
  bluez->addAdapter(true);
  ObexdStandIn obexd(session, Manner::completes);
  user.choose = [&](ulo::DeviceChooser&) { bluez.reset(); };
  EXPECT_FALSE(share());
  EXPECT_THAT(user.seen, ElementsAre("chooser", noAdapter));
}

}  // namespace
