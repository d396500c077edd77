#pragma once

#include "app_lock.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

// A lock in a private data directory, with a settable clock.
class LockTest : public testing::Test {
protected:
  DataDirectory directory_;

public:
  ulo::LockTime now_{"one", std::chrono::hours(5)};
  ulo::AppLock lock_{directory_.path(), [this] { return now_; }};

  [[nodiscard]] std::string file() const { return directory_.path() / "lock.json"; }
  [[nodiscard]] std::string bytes() const {
    std::ostringstream all;
    all << std::ifstream(file()).rdbuf();
    return all.str();
  }
  void write(const std::string& bytes) const { std::ofstream(file()) << bytes; }

  ulo::AppLock::Result check(QString code) { return lock_.check(ulo::LockCode(code)); }
  ulo::AppLock::Answer answer(const QString& code) { return check(code).answer; }
  void set(QString code) { ASSERT_TRUE(lock_.set(ulo::LockCode(code))); }
  void fail(int times) {
    for (int i = 0; i < times; ++i) {
      now_.sinceBoot += lock_.wait();
      ASSERT_EQ(answer("wrong"), ulo::AppLock::Answer::wrong);
    }
  }
  [[nodiscard]] long waitSeconds() const {
    return std::chrono::duration_cast<std::chrono::seconds>(lock_.wait()).count();
  }
};
