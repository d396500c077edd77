// Tests for watching the files of a directory.

#include "ulo/directory_watch.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <poll.h>

namespace {

class DirectoryWatchTest : public testing::Test {
protected:
  [[nodiscard]] std::string path(const char* name) const { return directory_.path() / name; }
  void write(const char* name) { std::ofstream(path(name), std::ios::app) << "text"; }
  [[nodiscard]] bool isReadable() const {
    pollfd state{watch_.descriptor(), POLLIN, 0};
    return poll(&state, 1, 0) == 1;
  }

  TemporaryDirectory directory_;
  ulo::DirectoryWatch watch_{directory_.path().string(), "tasks.db"};
};

TEST_F(DirectoryWatchTest, ReportsFilesWithPrefixWrittenOrMovedThere) {
  EXPECT_FALSE(watch_.sawChange());
  write("tasks.db");
  EXPECT_TRUE(isReadable());
  EXPECT_TRUE(watch_.sawChange());
  EXPECT_FALSE(isReadable());
  EXPECT_FALSE(watch_.sawChange());
  write("tasks.db-wal");
  EXPECT_TRUE(watch_.sawChange());
  write("other");
  EXPECT_FALSE(watch_.sawChange());
  std::filesystem::rename(path("other"), path("tasks.db"));
  EXPECT_TRUE(watch_.sawChange());
}

TEST_F(DirectoryWatchTest, IgnoresReading) {
  write("tasks.db");
  EXPECT_TRUE(watch_.sawChange());
  std::ifstream file(path("tasks.db"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "text");
  EXPECT_FALSE(watch_.sawChange());
}

TEST_F(DirectoryWatchTest, ReportsNothingForMissingDirectory) {
  ulo::DirectoryWatch nowhere(path("nowhere"), "");
  EXPECT_EQ(nowhere.descriptor(), -1);
  EXPECT_FALSE(nowhere.sawChange());
}

}  // namespace
