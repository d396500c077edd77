// The synchronization program, replaced by a script.

#include "list/synchroniser.h"

#include "AM_ActionData.h"
#include "tasks_test.h"

#include <fstream>

#include <sys/stat.h>

namespace {

class SynchroniserTest : public testing::Test {
protected:
  SynchroniserTest() {
    setenv("XDG_CONFIG_HOME", directory_.path().c_str(), 1);
    setenv("XDG_STATE_HOME", directory_.path().c_str(), 1);
    std::filesystem::create_directory(directory_.path() / "ulo");
  }
  ~SynchroniserTest() override {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_STATE_HOME");
  }

  [[nodiscard]] std::string path(const char* name) const { return directory_.path() / name; }
  void entry(const std::string& exec) {
    std::ofstream(path("ulo/applications.conf"))
        << '[' << AM_ActionData::synchroniser << "]\nExec=" << exec << '\n';
  }

  TemporaryDirectory directory_;
  LogCapture log_;
};

TEST_F(SynchroniserTest, IsConfiguredByLaunchTableEntry) {
  EXPECT_FALSE(tasks::Synchroniser::isSetUp());
  EXPECT_EQ(log_.text(), "");
  EXPECT_FALSE(tasks::Synchroniser::start());
  entry("/nowhere/sync");
  EXPECT_TRUE(tasks::Synchroniser::isSetUp());
  EXPECT_FALSE(tasks::Synchroniser::start());
  EXPECT_THAT(log_.text(), testing::HasSubstr("/nowhere/sync can't be started"));
}

TEST_F(SynchroniserTest, RunsInItsOwnProcess) {
  std::ofstream(path("sync")) << "#!/bin/sh\nmkdir '" << path("ran") << "'\n";
  chmod(path("sync").c_str(), 0700);
  entry(path("sync"));
  EXPECT_TRUE(tasks::Synchroniser::start());
  EXPECT_TRUE(QTest::qWaitFor([this] { return std::filesystem::exists(path("ran")); }, 30'000));
}

}  // namespace
