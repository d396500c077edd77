// The synchronization program, replaced by a script.

#include "list/synchronizer.h"

#include "AM_ActionData.h"
#include "tasks_test.h"

#include <fstream>

#include <sys/stat.h>

namespace {

class SynchronizerTest : public testing::Test {
protected:
  SynchronizerTest() {
    setenv("XDG_CONFIG_HOME", directory_.path().c_str(), 1);
    setenv("XDG_STATE_HOME", directory_.path().c_str(), 1);
    std::filesystem::create_directory(directory_.path() / "ulo");
  }
  ~SynchronizerTest() override {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_STATE_HOME");
  }

  [[nodiscard]] std::string path(const char* name) const { return directory_.path() / name; }
  void entry(const std::string& exec) {
    std::ofstream(path("ulo/applications.conf"))
        << '[' << AM_ActionData::synchronizer << "]\nExec=" << exec << '\n';
  }

  TemporaryDirectory directory_;
  LogCapture log_;
};

TEST_F(SynchronizerTest, IsConfiguredByLaunchTableEntry) {
  EXPECT_FALSE(tasks::Synchronizer::isSetUp());
  EXPECT_EQ(log_.text(), "");
  EXPECT_FALSE(tasks::Synchronizer::start());
  entry("/nowhere/sync");
  EXPECT_TRUE(tasks::Synchronizer::isSetUp());
  EXPECT_FALSE(tasks::Synchronizer::start());
  EXPECT_THAT(log_.text(), testing::HasSubstr("/nowhere/sync can't be started"));
}

TEST_F(SynchronizerTest, RunsInItsOwnProcess) {
  std::ofstream(path("sync")) << "#!/bin/sh\nmkdir '" << path("ran") << "'\n";
  chmod(path("sync").c_str(), 0700);
  entry(path("sync"));
  EXPECT_TRUE(tasks::Synchronizer::start());
  EXPECT_TRUE(QTest::qWaitFor([this] { return std::filesystem::exists(path("ran")); }, 30'000));
}

}  // namespace
