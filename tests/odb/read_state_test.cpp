// Reading from a snapshot: DB_BeginRead and DB_EndRead.

#include "log_capture.h"
#include "one_task.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using testing::ElementsAre;

class ReadState : public OneTask {
protected:
  // Adds a row in another thread, which has its own connection.
  static void addElsewhere() {
    int result = DB_ERROR;
    std::thread([&] {
      DB_Open(1);
      result = addTask();
      DB_Close();
    }).join();
    ASSERT_EQ(result, DB_OK);
  }
};

TEST_F(ReadState, LastsFromFirstQueryToEnd) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  addElsewhere();
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, NestsAndEndsWithOutermost) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  addElsewhere();
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, RejectsWrites) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_TRANSACTION);
  EXPECT_EQ(DB_Exec("%s", removeAllTasks.c_str()), DB_TRANSACTION);
  EXPECT_EQ(DB_Exec("create table other (UID integer auto)"), DB_TRANSACTION);
  EXPECT_EQ(DB_BeginTransaction(0), DB_TRANSACTION);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, ContinuesAfterFailedQuery) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('nowhere');"), DB_UNKNOWN_NAME);
  addElsewhere();
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(ReadState, HasNoEffectInTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(addTask(), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1", "2", "3"));
}

TEST_F(ReadState, EndsWhenDatabaseIsClosed) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
  ASSERT_EQ(DB_Close(), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_EndRead(), DB_TRANSACTION);
  EXPECT_EQ(addTask(), DB_OK);
}

// Reading also works without a snapshot, so failures are not logged.
TEST_F(ReadState, FailsSilently) {
  LogCapture log;
  EXPECT_EQ(DB_EndRead(), DB_TRANSACTION);
  std::thread([] {
    EXPECT_EQ(DB_BeginRead(), DB_NOT_OPEN);
    EXPECT_EQ(DB_EndRead(), DB_NOT_OPEN);
  }).join();
  EXPECT_EQ(log.text(), "");
}

}  // namespace
