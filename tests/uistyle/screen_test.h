// What tests of the screens share: what the platform was asked, and what it answers.
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

// The platform's answers, and what it was asked, in the place of the loader, the launcher and the
// Bluetooth push.
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
  // What adding an item answers, without adding it; negative to add it.
  int addAnswer = -1;
  // An id that the menu has besides its own; 0 for none.
  int strangeMenuItem = 0;
  // The reader gives a list with a null in it.
  bool nullTask = false;
};
// Of the running test.
extern Platform* platform;

class Screen : public testing::Test {
protected:
  Screen() { ::platform = &platform_; }
  ~Screen() override { ::platform = nullptr; }

  // The lines of the log, each without its place, of the source file `from` alone when given.
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
