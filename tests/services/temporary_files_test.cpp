// Tests for temporary files, which are deleted after a day.

#include "temporary_files.h"

#include "log_capture.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using ulo::TemporaryFiles;

constexpr std::int64_t noon = 1'800'000'000;
constexpr std::int64_t day = 24L * 60 * 60;

class TemporaryFilesTest : public testing::Test {
protected:
  [[nodiscard]] std::string path(const std::string& name) const { return directory_.path() / name; }
  std::string file(const std::string& name) {
    std::ofstream(path(name)) << name;
    return path(name);
  }
  [[nodiscard]] bool isThere(const std::string& name) const {
    return std::filesystem::exists(path(name));
  }
  [[nodiscard]] TemporaryFiles at(std::int64_t time) const {
    return TemporaryFiles(path("state"), time);
  }
  auto note(const std::string& file, std::int64_t time) {
    return at(time).note(QString::fromStdString(file));
  }
  [[nodiscard]] std::string notes() const {
    std::ostringstream all;
    all << std::ifstream(path("state/temporary-files")).rdbuf();
    return all.str();
  }

  TemporaryDirectory directory_;
};

TEST_F(TemporaryFilesTest, AreDeletedAfterADay) {
  ASSERT_TRUE(note(file("a b%\nä.vcs"), noon));
  at(noon).removeOld();
  at(noon + day - 1).removeOld();
  EXPECT_TRUE(isThere("a b%\nä.vcs"));
  at(noon + day).removeOld();
  EXPECT_FALSE(isThere("a b%\nä.vcs"));
  EXPECT_EQ(notes(), "");
}

TEST_F(TemporaryFilesTest, EachIsDeletedAtItsTime) {
  ASSERT_TRUE(note(file("a"), noon));
  ASSERT_TRUE(note(file("b"), noon + 1));
  at(noon + day).removeOld();
  EXPECT_FALSE(isThere("a"));
  EXPECT_TRUE(isThere("b"));
  at(noon + day + 1).removeOld();
  EXPECT_FALSE(isThere("b"));
}

TEST_F(TemporaryFilesTest, NotesAreReadableByOwnerOnly) {
  const mode_t before = umask(0);
  ASSERT_TRUE(note(file("a"), noon));
  umask(before);
  struct stat status {};
  ASSERT_EQ(stat(path("state/temporary-files").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(TemporaryFilesTest, NotingAgainKeepsFileForAnotherDay) {
  ASSERT_TRUE(note(file("a"), noon));
  ASSERT_TRUE(note(path("a"), noon + 100));
  at(noon + day + 99).removeOld();
  EXPECT_TRUE(isThere("a"));
  at(noon + day + 100).removeOld();
  EXPECT_FALSE(isThere("a"));
}

TEST_F(TemporaryFilesTest, ReplacedFileIsKept) {
  ASSERT_TRUE(note(file("a"), noon));
  std::filesystem::rename(file("b"), path("a"));
  at(noon + day).removeOld();
  EXPECT_TRUE(isThere("a"));
  EXPECT_EQ(notes(), "");
}

TEST_F(TemporaryFilesTest, ReplacementOfAnyKindIsKept) {
  ASSERT_TRUE(note(file("a"), noon));
  ASSERT_TRUE(note(file("b"), noon));
  std::filesystem::remove(path("a"));
  std::filesystem::create_symlink(file("c"), path("a"));
  std::filesystem::remove(path("b"));
  std::filesystem::create_directory(path("b"));
  at(noon + day).removeOld();
  EXPECT_TRUE(isThere("a"));
  EXPECT_TRUE(isThere("b"));
  EXPECT_TRUE(isThere("c"));
}

TEST_F(TemporaryFilesTest, DropsNotesOfMissingFiles) {
  ASSERT_TRUE(note(file("a"), noon));
  std::filesystem::remove(path("a"));
  at(noon).removeOld();
  EXPECT_EQ(notes(), "");
}

TEST_F(TemporaryFilesTest, TreatsNoteFromTheFutureAsNow) {
  ASSERT_TRUE(note(file("a"), noon + 1000 * day));
  at(noon).removeOld();
  EXPECT_TRUE(isThere("a"));
  at(noon + day - 1).removeOld();
  EXPECT_TRUE(isThere("a"));
  at(noon + day).removeOld();
  EXPECT_FALSE(isThere("a"));
}

TEST_F(TemporaryFilesTest, RemovesFileAndNote) {
  const auto noted = note(file("a"), noon);
  ASSERT_TRUE(noted);
  ASSERT_TRUE(note(file("b"), noon));
  at(noon).remove(*noted);
  EXPECT_FALSE(isThere("a"));
  EXPECT_TRUE(isThere("b"));
  EXPECT_THAT(notes(), testing::Not(HasSubstr(path("a"))));
  EXPECT_THAT(notes(), HasSubstr(path("b")));
}

TEST_F(TemporaryFilesTest, DoesNotRemoveReplacedFile) {
  const auto noted = note(file("a"), noon);
  ASSERT_TRUE(noted);
  std::filesystem::rename(file("b"), path("a"));
  at(noon).remove(*noted);
  EXPECT_TRUE(isThere("a"));
}

TEST_F(TemporaryFilesTest, NotesOnlyRegularFiles) {
  std::filesystem::create_directory(path("directory"));
  std::filesystem::create_symlink(file("a"), path("link"));
  for (const std::string& name :
       {path("directory"), path("link"), path("missing"), std::string()}) {
    LogCapture log;
    EXPECT_FALSE(note(name, noon)) << name;
    EXPECT_THAT(log.text(), HasSubstr("can't be noted")) << name;
  }
}

TEST_F(TemporaryFilesTest, RemovesNothingForInvalidNotes) {
  file("a");
  std::filesystem::create_directory(path("state"));
  std::ofstream(path("state/temporary-files"))
      << "1 2 3 4 " << path("a") << "\n\n1 2 3\n-9223372036854775808 1 1 1 " << path("a")
      << "\n99999999999999999999 1 1 1 /\nx y z w " << path("a") << "\n1 1 1 1 a%00%\n"
      << std::string(1000, '\0') << "\xff\n";
  at(noon + day).removeOld();
  EXPECT_TRUE(isThere("a"));
  ASSERT_TRUE(note(file("b"), noon));
  at(noon + day).removeOld();
  EXPECT_FALSE(isThere("b"));
}

TEST_F(TemporaryFilesTest, IgnoresNotesThatAreNotARegularFile) {
  std::filesystem::create_directory(path("state"));
  ASSERT_EQ(mkfifo(path("state/temporary-files").c_str(), 0600), 0);
  LogCapture log;
  at(noon).removeOld();
  EXPECT_FALSE(note(file("a"), noon));
  EXPECT_THAT(log.text(), HasSubstr("the file of notes can't be written"));
}

TEST_F(TemporaryFilesTest, IgnoresNotesThatAreTooLarge) {
  std::filesystem::create_directory(path("state"));
  for (const std::int64_t size : {TemporaryFiles::largest, TemporaryFiles::largest + 1}) {
    std::ofstream(path("state/temporary-files"))
        << std::string(static_cast<std::size_t>(size), ' ');
    LogCapture log;
    EXPECT_EQ(note(file("a"), noon).has_value(), size == TemporaryFiles::largest) << size;
  }
}

TEST_F(TemporaryFilesTest, NotesNothingWithoutStateDirectory) {
  LogCapture log;
  TemporaryFiles nowhere("", noon);
  EXPECT_FALSE(nowhere.note(QString::fromStdString(file("a"))));
  nowhere.removeOld();
  EXPECT_TRUE(isThere("a"));
}

TEST_F(TemporaryFilesTest, NotesFilesWhileAnotherProgramHoldsTheLock) {
  ASSERT_TRUE(note(file("a"), noon));
  const int other = open(path("state/temporary-files").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  ASSERT_TRUE(note(file("b"), noon));
  at(noon + day).removeOld();
  EXPECT_TRUE(isThere("a"));
  close(other);
  at(noon + day).removeOld();
  EXPECT_FALSE(isThere("a"));
  EXPECT_FALSE(isThere("b"));
}

TEST_F(TemporaryFilesTest, ConcurrentProgramsLoseNoNotes) {
  constexpr int programs = 3;
  constexpr int files = 10;
  for (int program = 0; program < programs; ++program) {
    if (fork() == 0) {
      bool noted = true;
      for (int i = 0; i < files; ++i) {
        const std::string name = std::to_string(program) + "-" + std::to_string(i);
        noted = note(file(name), noon).has_value() && noted;
        at(noon + 1).removeOld();
      }
      _exit(noted ? 0 : 1);
    }
  }
  for (int program = 0; program < programs; ++program) {
    int status = -1;
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  const std::string all = notes();
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), programs * files);
  at(noon + day).removeOld();
  for (const auto& entry : std::filesystem::directory_iterator(directory_.path()))
    EXPECT_EQ(entry.path().filename(), "state");
}

}  // namespace
