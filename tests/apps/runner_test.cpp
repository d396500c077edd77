// Errors that the runner of the tests reports.

#include "ulotask_runner.h"

#include <gtest/gtest-spi.h>

#include <csignal>

namespace {

class Runner : public UlotaskTest {};

// A signal to process 0 or -1 would end the test run and other processes.
TEST_F(Runner, SendsNoSignalToProgramThatHasEnded) {
  QProcess process;
  prepare(process);
  Running ended(process, {"--version"});
  ASSERT_EQ(ended.code(), 0);
  for (const int signal : {0, SIGCONT})
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(ended.endBy(signal), -1), "the program is not running");
}

TEST_F(Runner, SendsNoSignalToProgramThatDidNotStart) {
  QProcess process;
  prepare(process);
  process.setWorkingDirectory(QString::fromStdString(path("missing")));
  Running missing(process, {"--version"});
  EXPECT_FALSE(process.waitForStarted());
  EXPECT_NONFATAL_FAILURE(EXPECT_EQ(missing.endBy(SIGCONT), -1), "the program is not running");
}

}  // namespace
