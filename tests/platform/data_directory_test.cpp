// Tests for the data directory.

#include "environment_variable.h"
#include "temporary_directory.h"
#include "ulo/data_directory.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fstream>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

class DataDirectoryTest : public testing::Test {
protected:
  [[nodiscard]] fs::path below(const char* name) const { return directory_.path() / name; }
  static void expectMade(const fs::path& path) {
    EXPECT_EQ(ulo::dataDirectory(), path);
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0700));
  }

  TemporaryDirectory directory_;
  EnvironmentVariable own_{"ULO_DATA_DIR", nullptr};
  EnvironmentVariable xdg_{"XDG_DATA_HOME", nullptr};
  EnvironmentVariable home_{"HOME", below("home").c_str()};
};

TEST_F(DataDirectoryTest, PrefersOwnVariable) {
  const EnvironmentVariable own("ULO_DATA_DIR", below("a/b/c").c_str());
  const EnvironmentVariable xdg("XDG_DATA_HOME", below("xdg").c_str());
  expectMade(below("a/b/c"));
  for (const char* parent : {"a", "a/b"})
    EXPECT_EQ(fs::status(below(parent)).permissions(), fs::perms(0700));
  EXPECT_FALSE(fs::exists(below("xdg")));
}

TEST_F(DataDirectoryTest, ThenUsesXdgVariable) {
  const EnvironmentVariable own("ULO_DATA_DIR", "");
  const EnvironmentVariable xdg("XDG_DATA_HOME", below("xdg").c_str());
  expectMade(below("xdg/ulo"));
  EXPECT_FALSE(fs::exists(below("home")));
}

TEST_F(DataDirectoryTest, ThenUsesHome) {
  expectMade(below("home/.local/share/ulo"));
  const EnvironmentVariable xdg("XDG_DATA_HOME", "");
  expectMade(below("home/.local/share/ulo"));
}

// As required by the XDG base directory specification.
TEST_F(DataDirectoryTest, IgnoresRelativeXdgVariable) {
  const EnvironmentVariable xdg("XDG_DATA_HOME", "data");
  expectMade(below("home/.local/share/ulo"));
}

TEST_F(DataDirectoryTest, IsEmptyWithoutHome) {
  for (const char* home : {"", static_cast<const char*>(nullptr)}) {
    const EnvironmentVariable unset("HOME", home);
    errno = 0;
    EXPECT_EQ(ulo::dataDirectory(), "");
    EXPECT_EQ(errno, ENOENT);
  }
}

TEST_F(DataDirectoryTest, LeavesExistingDirectoryUnchanged) {
  fs::create_directory(below("there"));
  fs::permissions(below("there"), fs::perms(0755));
  const EnvironmentVariable own("ULO_DATA_DIR", below("there").c_str());
  EXPECT_EQ(ulo::dataDirectory(), below("there"));
  EXPECT_EQ(fs::status(below("there")).permissions(), fs::perms(0755));
}

TEST_F(DataDirectoryTest, AcceptsTrailingSlash) {
  const EnvironmentVariable own("ULO_DATA_DIR", (below("a/b").string() + "/").c_str());
  EXPECT_EQ(ulo::dataDirectory(), below("a/b").string() + "/");
  EXPECT_TRUE(fs::is_directory(below("a/b")));
}

TEST_F(DataDirectoryTest, FailsIfFileIsInTheWay) {
  std::ofstream(below("file")) << "";
  for (const char* name : {"file", "file/a", "file/a/b"}) {
    const EnvironmentVariable own("ULO_DATA_DIR", below(name).c_str());
    errno = 0;
    EXPECT_EQ(ulo::dataDirectory(), "");
    EXPECT_EQ(errno, ENOTDIR) << name;
  }
  EXPECT_TRUE(fs::is_regular_file(below("file")));
}

TEST_F(DataDirectoryTest, FailsIfDirectoryCannotBeCreated) {
  const EnvironmentVariable own("ULO_DATA_DIR", "/proc/ulo/data");
  errno = 0;
  EXPECT_EQ(ulo::dataDirectory(), "");
  EXPECT_EQ(errno, ENOENT);  // the kernel's error for /proc
}

}  // namespace
