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

// A text that runs repeatedly in one state is answered from memory.

// Returns the priority of a task, or "none"; sets the tag to 1 or 0.
std::string priorityOf(int uid) {
  DB_PARAM block = DB_PARAM_Open(1);
  DB_PARAM_BindInteger(block, 0, uid);
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_QueryWithParam(
                &cursor, block,
                "sml:declare schema s (priority integer);declare buffer schema s;"
                "cursor $c=open_cursor('task_table_task');tuple $key=$c->new_empty_key_tuple();"
                "$key->set_field('UID', :0);if($c->find($key)){"
                "buffer_put(priority, $c->get_field('priority'));set_session_tag(1);}"
                "else{set_session_tag(0);};"),
            DB_OK);
  const std::string priority =
      DB_CSC_Eof(cursor) != 0 ? "none" : std::to_string(DB_CSC_GetFieldAsInteger(cursor, 0));
  DB_CSC_Close(cursor);
  DB_PARAM_Close(block);
  return priority;
}

TEST_F(ReadState, RepeatedTextDependsOnParameters) {
  ASSERT_EQ(DB_Exec("insert into task_table_task (priority) values (7)"), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  for (int pass = 0; pass < 3; ++pass) {
    EXPECT_EQ(priorityOf(1), "1");
    EXPECT_EQ(DB_GetTag(), 1);
    EXPECT_EQ(priorityOf(2), "7");
    EXPECT_EQ(priorityOf(3), "none");
    EXPECT_EQ(DB_GetTag(), 0);
  }
  ASSERT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(ReadState, RepeatedTextDependsOnNumbersAndTextsOfTemplate) {
  const char* text = "sml:declare schema s (n integer, name varchar);declare buffer schema s;"
                     "buffer_put(n, %d);buffer_put(name, '%s');";
  const auto rowOf = [&](int number, const char* name) {
    DB_CURSOR cursor = nullptr;
    EXPECT_EQ(DB_Query(&cursor, text, number, name), DB_OK);
    const std::string row =
        std::to_string(DB_CSC_GetFieldAsInteger(cursor, 0)) + DB_CSC_GetFieldAsChar(cursor, 1);
    DB_CSC_Close(cursor);
    return row;
  };
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  for (int pass = 0; pass < 3; ++pass) {
    EXPECT_EQ(rowOf(1, "a"), "1a");
    EXPECT_EQ(rowOf(2, "a"), "2a");
    EXPECT_EQ(rowOf(2, "b"), "2b");
  }
  ASSERT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(ReadState, RepeatedTextSeesChangesAfterState) {
  const auto change = [](int priority) {
    std::thread([&] {
      DB_Open(1);
      DB_Exec("sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){"
              "tuple $data=$c->get_data_tuple();$data->set_field('priority', %d);"
              "$c->update($data);};",
              priority);
      DB_Close();
    }).join();
  };
  for (const int priority : {5, 6}) {
    change(priority);
    ASSERT_EQ(DB_BeginRead(), DB_OK);
    for (int pass = 0; pass < 3; ++pass)
      EXPECT_EQ(priorityOf(1), std::to_string(priority));
    change(9);
    EXPECT_EQ(priorityOf(1), std::to_string(priority));
    ASSERT_EQ(DB_EndRead(), DB_OK);
    EXPECT_EQ(priorityOf(1), "9");
  }
}

TEST_F(ReadState, RepeatedTextSeesChangesOfTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(priorityOf(2), "none");
  EXPECT_EQ(priorityOf(2), "none");
  ASSERT_EQ(addTask(), DB_OK);
  EXPECT_EQ(priorityOf(2), "1");
  ASSERT_EQ(DB_EndRead(), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
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
