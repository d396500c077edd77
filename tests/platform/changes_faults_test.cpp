// Tests for faults of the change journal, and the recovery from them.

#include "changes_test.h"
#include "log_capture.h"

#include <fstream>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

std::string cannot(const char* what, const char* why) {
  return std::string("(platform/changes/change_journal.cpp)The change journal can't be ") + what +
         ": " + why;
}

TEST_F(Journal, ReportsDirectoryInItsPlace) {
  fs::create_directory(path());
  {
    LogCapture log;
    std::int64_t entry = 5;
    EXPECT_FALSE(journal_.lastEntry(entry));
    EXPECT_EQ(log.withoutLines(), cannot("read", "unable to open database file"));
  }
  fs::remove(path());
  append({changeOf(2)});
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(2));
}

TEST_F(Journal, ReportsFileThatIsNotADatabase) {
  std::ofstream(path()) << std::string(5000, 'x');
  {
    LogCapture log;
    std::vector<Change> changes{changeOf(1)};
    std::int64_t entry = 5;
    std::string generation;
    NetChanges net;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_FALSE(journal_.lastEntry(entry));
    EXPECT_FALSE(journal_.generation(generation));
    EXPECT_FALSE(journal_.changesSince("engine", 0, net));
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_THAT(changes, SizeIs(1));
    const std::string unread = cannot("read", "file is not a database");
    EXPECT_EQ(log.withoutLines(),
              unread + unread + unread + unread + cannot("pruned", "file is not a database"));
  }
  EXPECT_EQ(fs::file_size(path()), 5000U);
  fs::remove(path());
  append({changeOf(2)});
  EXPECT_EQ(lastOf(journal_), 1);
}

TEST_F(Journal, ReportsMissingDataDirectory) {
  const fs::path way = directory_.path() / "way";
  std::ofstream(way) << "";
  setenv("ULO_DATA_DIR", way.c_str(), 1);
  ChangeJournal journal;
  LogCapture log;
  std::int64_t entry = 5;
  EXPECT_FALSE(journal.lastEntry(entry));
  EXPECT_EQ(log.withoutLines(), cannot("read", "there is no data directory: Not a directory"));
}

// Another program damages the journal while it is open here.
TEST_F(Journal, RecoversAfterRepair) {
  append({changeOf(1)});
  ASSERT_EQ(lastOf(journal_), 1);
  file().run("ALTER TABLE ulo_changes RENAME TO away");
  {
    LogCapture log;
    std::vector<Change> changes;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_EQ(log.withoutLines(), cannot("read", "no such table: ulo_changes") +
                                      cannot("pruned", "no such table: ulo_changes"));
  }
  file().run("ALTER TABLE away RENAME TO ulo_changes");
  append({changeOf(4)});
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 4));
  EXPECT_EQ(lastOf(journal_), 2);
}

}  // namespace
