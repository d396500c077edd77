// Reading in one state of the database: DB_BeginRead and DB_EndRead.

#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using testing::ElementsAre;

const std::string uids = "sml:declare schema s (uid integer);declare buffer schema s;"
                         "cursor $c=open_cursor('task_table_task');while($c->move_next()){"
                         "buffer_put(uid, $c->get_field('UID'));buffer_move_next();};";
const std::string removeAll =
    "sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){$c->del();};";

int addRow() {
  return DB_Exec("insert into task_table_task (priority) values (1)");
}

class ReadState : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
    ASSERT_EQ(addRow(), DB_OK);
  }
  void TearDown() override { DB_Close(); }

  // Another thread, with a connection of its own, adds a row.
  static void addElsewhere() {
    int result = DB_ERROR;
    std::thread([&] {
      DB_Open(1);
      result = addRow();
      DB_Close();
    }).join();
    ASSERT_EQ(result, DB_OK);
  }

  DataDirectory directory_;
};

TEST_F(ReadState, IsThatOfTheFirstQueryUntilTheEnd) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  addElsewhere();
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, NestsAndEndsWithTheOuterOne) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  addElsewhere();
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, RefusesToWrite) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addRow(), DB_TRANSACTION);
  EXPECT_EQ(DB_Exec("%s", removeAll.c_str()), DB_TRANSACTION);
  EXPECT_EQ(DB_Exec("create table other (UID integer auto)"), DB_TRANSACTION);
  EXPECT_EQ(DB_BeginTransaction(0), DB_TRANSACTION);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(addRow(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1", "2"));
}

TEST_F(ReadState, GoesOnAfterAQueryThatFailed) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('nowhere');"), DB_UNKNOWN_NAME);
  addElsewhere();
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(ReadState, WithinATransactionChangesNothing) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(addRow(), DB_OK);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(addRow(), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1", "2", "3"));
}

TEST_F(ReadState, EndsWithTheDatabase) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_THAT(rowsOf(uids, 1), ElementsAre("1"));
  ASSERT_EQ(DB_Close(), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_EndRead(), DB_TRANSACTION);
  EXPECT_EQ(addRow(), DB_OK);
}

// Reading works without it too, so its failures are nobody's news.
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
