// Base of the tests of the screens: records the calls to the platform and sets their results.
#pragma once

#include "TASK_UI_DetailView.h"
#include "gui_test.h"
#include "log_capture.h"
#include "temporary_directory.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Task = ZTASK_ENG_Task;

// The results and the recorded calls of the loader, the launcher and the Bluetooth push.
struct Platform {
  // The lock.
  bool hasLockLibrary = true;
  bool hasLockFunction = true;
  int lockAnswer = 1;
  std::vector<std::string> lockCalls;  // "application mode"
  int librariesOpen = 0;
  // The launcher.
  std::vector<std::string> launched;  // "application action Files=... AutoDelete=... wait"
  // The push.
  bool shareAnswer = true;
  QString sharedName, sharedType;
  std::string sharedBytes;
  int shares = 0;
  // The result of adding an item, without adding it; negative to add it.
  int addAnswer = -1;
  // An ID that the menu has in addition to its own; 0 for none.
  int strangeMenuItem = 0;
  // The reader returns a list with a null task.
  bool nullTask = false;
};
// That of the running test.
extern Platform* platform;

class Screen : public testing::Test {
protected:
  Screen() { ::platform = &platform_; }
  ~Screen() override { ::platform = nullptr; }

  // The lines of the log without their positions; only those of the source file `from` if it is
  // given.
  std::vector<std::string> lines(const std::string& from = {}) {
    std::vector<std::string> result;
    std::string text = log_.withoutLines();
    for (std::size_t at = text.find("(u"); at != text.npos;) {
      const std::size_t next = text.find("(u", at + 1);
      const std::string line = text.substr(at, next == text.npos ? next : next - at);
      const std::size_t end = line.find(')');
      if (from.empty() || line.substr(1, end - 1) == from)
        result.push_back(line.substr(end + 1));
      at = next;
    }
    return result;
  }

  DataDirectory directory_;
  Platform platform_;
  LogCapture log_;
};
