#pragma once

#include "bluetooth_share.h"
#include "bluez_stand_in.h"
#include "dialog_user.h"
#include "gui_test.h"
#include "log_capture.h"
#include "obexd_stand_in.h"
#include "temporary_directory.h"
#include "test_bus.h"

#include <QGuiApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>

// Sets up private buses and directories in the environment.
class Surroundings {
public:
  Surroundings() {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", system.address().toUtf8().constData(), 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", session.address().toUtf8().constData(), 1);
    setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;
  ~Surroundings() {
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
  }

  TestBus system;
  TestBus session;
  TemporaryDirectory runtime;
};

// Shares a file, with a simulated user.
class Share : public testing::Test, protected Surroundings {
protected:
  Share() {
    // Closing a dialog must not end the application.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // Long enough for a slow machine; the expected events come earlier.
    settings.patience = std::chrono::seconds(20);
    settings.push.farewell = std::chrono::seconds(20);
  }

  void TearDown() override {
    EXPECT_TRUE(std::filesystem::is_empty(runtime.path())) << "something was left behind";
  }

  bool share(const QString& name = QStringLiteral("Buy milk.vcs"),
             const QByteArray& content = "BEGIN:VCALENDAR\r\n") {
    return ulo::shareByBluetooth({name, QStringLiteral("text/x-vCalendar"), QString()}, content,
                                 settings);
  }

  DialogUser user;
  LogCapture log;
  ulo::ShareSettings settings;
};
