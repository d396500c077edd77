// Faults of the journal of changes, and what comes after them.

#include "changes_test.h"
#include "log_capture.h"

#include <sqlite3.h>

#include <fstream>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr const char* cannotWrite =
    "(platform/changes/change_journal.cpp)The change journal can't be written: ";

TEST_F(Reporter, ADirectoryInPlaceOfTheJournal) {
  fs::create_directory(file());
  {
    LogCapture log;
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(),  // once
              cannotWrite + std::string("unable to open database file"));
  }
  fs::remove(file());
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(2));
}

TEST_F(Reporter, AFileThatIsNoDatabase) {
  std::ofstream(file()) << std::string(5000, 'x');
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("file is not a database"));
  }
  {
    LogCapture log;
    std::vector<Change> changes{changeOf(1)};
    std::int64_t entry = 5;
    NetChanges net;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_FALSE(journal_.lastEntry(entry));
    EXPECT_FALSE(journal_.changesSince("engine", 0, net));
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_THAT(changes, SizeIs(1));
    const auto line = [](const char* what) {
      return std::string("(platform/changes/change_journal.cpp)The change journal can't be ") +
             what + ": file is not a database";
    };
    EXPECT_EQ(log.withoutLines(), line("read") + line("read") + line("read") + line("pruned"));
  }
  EXPECT_EQ(fs::file_size(file()), 5000U);  // whosever it is
  fs::remove(file());
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_EQ(lastOf(journal_), 1);
}

TEST_F(Reporter, NoDataDirectory) {
  const fs::path way = directory_.path() / "way";
  std::ofstream(way) << "";
  setenv("ULO_DATA_DIR", way.c_str(), 1);
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(reporter_.beginBatch("engine"), 0);
    EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
    EXPECT_EQ(reporter_.endBatch("engine"), 1);
    EXPECT_EQ(log.withoutLines(),
              cannotWrite + std::string("there is no data directory: Not a directory"));
  }
  EXPECT_EQ(reporter_.endBatch("engine"), 1);  // the failed one is over
  fs::remove(way);
  EXPECT_EQ(reporter_.report(recordOf(3), -1), 0);
  EXPECT_THAT(uidsIn(way), ElementsAre(3));
}

// Remembers the connections that are opened, so that a test can set their page limit.
sqlite3* lastConnection = nullptr;

int rememberConnection(sqlite3* connection, const char**, const void*) {
  lastConnection = connection;
  return SQLITE_OK;
}

// A disk with room for so many pages more.
int limitPages(sqlite3* connection, int more) {
  int pages = 0;
  const auto first = [](void* result, int, char** values, char**) {
    *static_cast<int*>(result) = std::atoi(values[0]);
    return 0;
  };
  sqlite3_exec(connection, "PRAGMA page_count", first, &pages, nullptr);
  return sqlite3_exec(connection,
                      ("PRAGMA max_page_count = " + std::to_string(pages + more)).c_str(), nullptr,
                      nullptr, nullptr);
}

class FullDisk : public Reporter {
protected:
  FullDisk() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(rememberConnection));
    lastConnection = nullptr;
  }
  ~FullDisk() override { sqlite3_reset_auto_extension(); }
  const std::string large_ = std::string(20000, 'x');
};

TEST_F(FullDisk, ReportsFailUntilThereIsRoom) {
  ASSERT_EQ(reporter_.report(recordOf(1), -1), 0);
  sqlite3* connection = lastConnection;
  ASSERT_NE(connection, nullptr);
  ASSERT_EQ(limitPages(connection, 0), SQLITE_OK);
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(2, SVC_CT_ADDED, large_.c_str()), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  {
    LogCapture log;
    const SVC_CT_ChangeRecord records[] = {recordOf(3), recordOf(4, SVC_CT_ADDED, large_.c_str()),
                                           recordOf(5)};
    EXPECT_EQ(reporter_.reportMany(records, 3, -1), 1);
    EXPECT_EQ(log.text(), "");  // still the same
  }
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
  EXPECT_EQ(reporter_.report(recordOf(8), -1), 0);  // a small one fits
  {
    LogCapture log;
    ASSERT_EQ(reporter_.beginBatch("engine"), 0);
    EXPECT_EQ(reporter_.report(recordOf(6), -1), 0);
    EXPECT_EQ(reporter_.report(recordOf(7, SVC_CT_ADDED, large_.c_str()), -1), 0);
    EXPECT_EQ(reporter_.endBatch("engine"), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  ASSERT_EQ(limitPages(connection, 1000), SQLITE_OK);
  const SVC_CT_ChangeRecord records[] = {recordOf(9, SVC_CT_ADDED, large_.c_str()), recordOf(10)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 8, 9, 10));
}

TEST_F(FullDisk, NoRoomForTheJournalItself) {
  const auto limit = +[](sqlite3* connection, const char**, const void*) {
    sqlite3_exec(connection, "PRAGMA max_page_count = 2", nullptr, nullptr, nullptr);
    return SQLITE_OK;
  };
  sqlite3_reset_auto_extension();
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(limit));
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  sqlite3_reset_auto_extension();
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(2));
}

// Another program broke the journal while we have it open.
TEST_F(Reporter, TheLogSaysWhyABatchFailed) {
  ASSERT_EQ(reporter_.report(recordOf(1), -1), 0);
  ASSERT_EQ(lastOf(journal_), 1);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "ALTER TABLE changes RENAME TO away", nullptr, nullptr, nullptr),
            SQLITE_OK);
  {
    LogCapture log;
    const SVC_CT_ChangeRecord records[] = {recordOf(2), recordOf(3)};
    EXPECT_EQ(reporter_.reportMany(records, 2, -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("no such table: changes"));
  }
  {
    LogCapture log;
    std::vector<Change> changes;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_EQ(log.withoutLines(),
              "(platform/changes/change_journal.cpp)The change journal can't be "
              "read: no such table: changes");
  }
  {
    LogCapture log;
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_EQ(log.withoutLines(),
              "(platform/changes/change_journal.cpp)The change journal can't be "
              "pruned: no such table: changes");
  }
  ASSERT_EQ(sqlite3_exec(other, "ALTER TABLE away RENAME TO changes", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  EXPECT_EQ(reporter_.report(recordOf(4), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 4));
}

}  // namespace
