// Nested writing in one transaction: DB_BeginWrite or DB_BeginBulkWrite, and DB_EndWrite.

#include "log_capture.h"
#include "one_task.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <future>
#include <thread>

namespace {

using testing::ElementsAre;

struct Begin {
  const char* name;
  int (*function)();
};

void PrintTo(const Begin& begin, std::ostream* out) {
  *out << begin.name;
}

class WriteState : public OneTask, public testing::WithParamInterface<Begin> {
protected:
  static int begin() { return GetParam().function(); }
  // Returns the rows that another connection sees.
  static std::vector<std::string> committed() {
    return std::async(std::launch::async,
                      [] {
                        DB_Open(1);
                        auto rows = rowsOf(uidsOfTasks, 1);
                        DB_Close();
                        return rows;
                      })
        .get();
  }
};

TEST_P(WriteState, CommitsAtEnd) {
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2", "3"));
  EXPECT_THAT(committed(), ElementsAre("1"));
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_P(WriteState, RollsBackAtEnd) {
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(DB_Exec("%s", removeAllTasks.c_str()), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
}

TEST_P(WriteState, OutermostCallDecides) {
  ASSERT_EQ(begin(), DB_OK);
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1"));

  ASSERT_EQ(begin(), DB_OK);
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1"));
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_P(WriteState, JoinsTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  for (const int keep : {0, 1}) {
    ASSERT_EQ(begin(), DB_OK);
    EXPECT_EQ(addTask(), DB_OK);
    EXPECT_EQ(DB_EndWrite(keep), DB_OK);
    EXPECT_THAT(committed(), ElementsAre("1"));
  }
  EXPECT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_P(WriteState, OutlivesJoinedTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(begin(), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_P(WriteState, RejectsOtherTransactions) {
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_BeginTransaction(0), DB_TRANSACTION);
  EXPECT_EQ(DB_CommitTransaction(), DB_TRANSACTION);
  EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
  EXPECT_THAT(committed(), ElementsAre("1"));
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
  EXPECT_EQ(DB_BeginTransaction(0), DB_OK);
  EXPECT_EQ(DB_AbortTransaction(), DB_OK);
}

TEST_P(WriteState, NestedReadHasNoEffect) {
  ASSERT_EQ(begin(), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_P(WriteState, FailsWhileReading) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(begin(), DB_TRANSACTION);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
}

TEST_P(WriteState, ContinuesAfterFailedText) {
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_Exec("%s$c->del();", removeAllTasks.c_str()), DB_ERROR);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_P(WriteState, LocksOutOtherWriters) {
  ASSERT_EQ(begin(), DB_OK);
  auto other = std::async(std::launch::async, [] {
    DB_Open(1);
    const int begun = begin();
    const auto rows = rowsOf(uidsOfTasks, 1);
    DB_EndWrite(0);
    DB_Close();
    return begun == DB_OK ? rows : std::vector<std::string>{"refused"};
  });
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(other.get(), testing::Contains("1"));
}

TEST_P(WriteState, IsRolledBackWhenDatabaseIsClosed) {
  ASSERT_EQ(begin(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_Close(), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
}

TEST_P(WriteState, FailsSilently) {
  LogCapture log;
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  std::thread([] {
    EXPECT_EQ(begin(), DB_NOT_OPEN);
    EXPECT_EQ(DB_EndWrite(1), DB_NOT_OPEN);
  }).join();
  EXPECT_EQ(log.text(), "");
}

INSTANTIATE_TEST_SUITE_P(All, WriteState,
                         testing::Values(Begin{"Write", DB_BeginWrite},
                                         Begin{"BulkWrite", DB_BeginBulkWrite}),
                         [](const auto& info) { return std::string(info.param.name); });

// SQLite opens a temporary file as soon as the data for undoing a single text becomes large.
std::size_t openTemporaryFiles() {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closed;
    if (std::filesystem::read_symlink(entry, closed).filename().string().rfind("etilqs_", 0) == 0)
      ++count;
  }
  return count;
}

class BulkWrite : public OneTask {
protected:
  // The last text changes many pages.
  static void addAndRemoveMany() {
    for (int i = 0; i < 2000; ++i)
      ASSERT_EQ(addTask(), DB_OK);
    ASSERT_EQ(DB_Exec("%s", removeAllTasks.c_str()), DB_OK);
  }
};

TEST_F(BulkWrite, NeedsNoTemporaryFile) {
  ASSERT_EQ(DB_BeginBulkWrite(), DB_OK);
  addAndRemoveMany();
  EXPECT_EQ(openTemporaryFiles(), 0U);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  // The next transaction is an ordinary one.
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  addAndRemoveMany();
  EXPECT_EQ(openTemporaryFiles(), 1U);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
}

}  // namespace
