// Fixture for tests of the screens, on a platform of stubs.
#pragma once

#include "TASK_UI_DetailView.h"
#include "gui_test.h"
#include "log_capture.h"
#include "log_messages.h"
#include "temporary_directory.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Task = ZTASK_ENG_Task;

// The source that the log lines of the detail view name.
inline constexpr char detailViewSource[] = "uistyle/prism/TASK_UI_DetailView.cpp";

// The results that the stubs for the loader, the launcher, the Bluetooth push and the menu return,
// and the calls that they received.
struct Platform {
  // The lock.
  bool hasLockLibrary = true;
  bool hasLockFunction = true;
  int lockResult = 1;
  std::vector<std::string> lockCalls;  // "application mode"
  int librariesOpen = 0;
  // The launcher.
  std::vector<std::string> launched;  // "application action Files=... AutoDelete=... wait"
  // The push.
  bool shareResult = true;
  QString sharedName, sharedType;
  std::string sharedBytes;
  int shares = 0;
  // The ID of an item that every menu has in addition to its own; 0 for none.
  int unknownMenuItem = 0;
};
// The platform of the running test.
extern Platform* platform;

class Screen : public testing::Test {
protected:
  Screen() { ::platform = &platform_; }
  ~Screen() override { ::platform = nullptr; }

  // Returns the messages in the log, only those of the source file `from` if given.
  std::vector<std::string> lines(const std::string& from = {}) {
    return messagesOf(log_.withoutLines(), from);
  }

  DataDirectory directory_;
  Platform platform_;
  LogCapture log_;
};
