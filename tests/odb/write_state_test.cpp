// Nested writing in one transaction: DB_BeginWrite and DB_EndWrite.

#include "log_capture.h"
#include "one_task.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

namespace {

using testing::ElementsAre;

class WriteState : public OneTask {
protected:
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

TEST_F(WriteState, CommitsAtEnd) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2", "3"));
  EXPECT_THAT(committed(), ElementsAre("1"));
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_F(WriteState, RollsBackAtEnd) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(DB_Exec("%s", removeAllTasks.c_str()), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
}

TEST_F(WriteState, OutermostCallDecides) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1"));

  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1"));
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_F(WriteState, JoinsTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  for (const int keep : {0, 1}) {
    ASSERT_EQ(DB_BeginWrite(), DB_OK);
    EXPECT_EQ(addTask(), DB_OK);
    EXPECT_EQ(DB_EndWrite(keep), DB_OK);
    EXPECT_THAT(committed(), ElementsAre("1"));
  }
  EXPECT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_F(WriteState, OutlivesJoinedTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_F(WriteState, RejectsOtherTransactions) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
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

TEST_F(WriteState, NestedReadHasNoEffect) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2"));
}

TEST_F(WriteState, FailsWhileReading) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(DB_BeginWrite(), DB_TRANSACTION);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
}

TEST_F(WriteState, ContinuesAfterFailedText) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_Exec("%s$c->del();", removeAllTasks.c_str()), DB_ERROR);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(committed(), ElementsAre("1", "2", "3"));
}

TEST_F(WriteState, LocksOutOtherWriters) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  auto other = std::async(std::launch::async, [] {
    DB_Open(1);
    const int begun = DB_BeginWrite();
    const auto rows = rowsOf(uidsOfTasks, 1);
    DB_EndWrite(0);
    DB_Close();
    return begun == DB_OK ? rows : std::vector<std::string>{"refused"};
  });
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_THAT(other.get(), testing::Contains("1"));
}

TEST_F(WriteState, IsRolledBackWhenDatabaseIsClosed) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_Close(), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
}

TEST_F(WriteState, FailsSilently) {
  LogCapture log;
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  std::thread([] {
    EXPECT_EQ(DB_BeginWrite(), DB_NOT_OPEN);
    EXPECT_EQ(DB_EndWrite(1), DB_NOT_OPEN);
  }).join();
  EXPECT_EQ(log.text(), "");
}

}  // namespace
