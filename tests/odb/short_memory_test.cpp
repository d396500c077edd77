// Failing allocations of the library and of SQLite: a single one, or all from some point on.

#include "failing_allocation.h"
#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <functional>
#include <string_view>

namespace {

sqlite3_mem_methods sqliteMemory;

// Makes SQLite's allocations fail along with the others.
class FailingSqliteMemory {
public:
  FailingSqliteMemory() {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &sqliteMemory);
    sqlite3_mem_methods failing = sqliteMemory;
    failing.xMalloc = [](int size) -> void* {
      return allocationFails() ? nullptr : sqliteMemory.xMalloc(size);
    };
    failing.xRealloc = [](void* memory, int size) -> void* {
      return allocationFails() ? nullptr : sqliteMemory.xRealloc(memory, size);
    };
    sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
  }
} const failingSqliteMemory;

using testing::ElementsAre;

struct Operation {
  const char* name;
  std::function<int()> run;
};
void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.name;
}

int query(const char* text, DB_PARAM block = nullptr) {
  DB_CURSOR cursor = nullptr;
  const int result = block == nullptr ? DB_Query(&cursor, "%s", text)
                                      : DB_QueryWithParam(&cursor, block, "%s", text);
  EXPECT_EQ(cursor == nullptr, result != DB_OK);
  for (; DB_CSC_Eof(cursor) == 0; DB_CSC_MoveNext(cursor)) {
    DB_CSC_GetFieldAsUnicode(cursor, 0);
    DB_CSC_GetFieldAsChar(cursor, 0);
  }
  DB_CSC_Close(cursor);
  return result;
}

int withParameter(const char* text, int number) {
  DB_PARAM block = DB_PARAM_Open(2);
  if (block == nullptr)
    return DB_NO_MEMORY;
  static const unsigned short units[] = {0x6100, 0x6200, 0};
  int result = DB_PARAM_BindInteger(block, 0, number);
  if (result == DB_OK)
    result = DB_PARAM_BindUnicode(block, 1, units);
  if (result == DB_OK)
    result = query(text, block);
  DB_PARAM_Close(block);
  return result;
}

constexpr char update[] =
    "sml:cursor $c=open_cursor('task_table_task');tuple $k=$c->new_empty_key_tuple();"
    "$k->set_field('UID', :0);if($c->find($k)){tuple $d=$c->get_data_tuple();"
    "$d->set_field('summary', :1);$d->set_field('priority', 9);$c->update($d);};";
constexpr char removal[] =
    "sml:cursor $c=open_cursor('task_table_task');tuple $k=$c->new_empty_key_tuple();"
    "$k->set_field('UID', :0);if($c->find($k)){$c->del();};";
constexpr char page[] =
    "sml:declare schema s (n unicode, u integer);declare buffer schema s;"
    "cursor $c=open_cursor('task_index_due');tuple $k=$c->new_empty_key_tuple();"
    "$k->set_field('due', 1);$k->set_field('priority', :0);bool $f=$c->find($k);"
    "while($f){buffer_put(n, $c->get_field('note'));buffer_put(u, $c->get_field('UID'));"
    "buffer_move_next();$f=$c->move_next();};";
constexpr char sameKey[] =
    "sml:declare schema s (n unicode);declare buffer schema s;"
    "cursor $c=open_cursor('task_index_due');tuple $k=$c->new_empty_key_tuple();"
    "$k->set_field('due', 1);bool $f=$c->find($k);while($f){"
    "buffer_put(n, $c->get_field('summary'));buffer_move_next();$f=$c->move_next_in_dup();};";
constexpr char counting[] =
    "sml:declare schema s (n integer);declare buffer schema s;"
    "table $t=open_table('task_table_task');buffer_put(n, $t->get_record_number());";
constexpr char names[] =
    "sml:declare schema s (n varchar, b bool);declare buffer schema s;"
    "cursor $c=open_cursor('task_table_category');while($c->move_next()){"
    "buffer_put(n, $c->get_field('name'));buffer_put(b, check_table_exist('task_table_task'));"
    "buffer_move_next();};";

const std::vector<Operation> operations = {
    {"Insert",
     [] {
       return DB_Exec("insert into task_table_task (note, due) values ('%s', %d) returnuid", "note",
                      1);
     }},
    {"Update", [] { return withParameter(update, 1); }},
    {"Remove", [] { return withParameter(removal, 2); }},
    {"RemoveAll",
     [] {
       return DB_Exec("sml:cursor $c=open_cursor('task_table_task');"
                      "while($c->move_next()){$c->del();};");
     }},
    {"Page", [] { return withParameter(page, 1); }},
    {"SameKey", [] { return query(sameKey); }},
    {"Count", [] { return query(counting); }},
    {"Names", [] { return query(names); }},
    {"CreateTable", [] { return DB_Exec("create table t (UID integer auto, a unicode)"); }},
    {"Transaction",
     [] {
       int result = DB_BeginTransaction(0);
       if (result != DB_OK)
         return result;
       result = DB_Exec("insert into task_table_task (note) values ('in a transaction')");
       if (result == DB_OK)
         result = withParameter(update, 1);
       if (result == DB_OK)
         result = withParameter(removal, 2);
       if (result == DB_OK)
         return DB_CommitTransaction();
       DB_AbortTransaction();
       return result;
     }},
    {"FirstText", [] { return DB_SetTaskText(1, "first", 5); }},
    {"Texts",
     [] {
       int result = DB_BeginTransaction(0);
       if (result != DB_OK)
         return result;
       const char* bytes = nullptr;
       unsigned int size = 0;
       result = DB_SetTaskText(1, "first", 5);
       if (result == DB_OK)
         result = DB_SetTaskText(2, "second", 6);
       if (result == DB_OK)
         result = DB_GetTaskText(1, &bytes, &size);
       if (result == DB_OK)
         result = DB_SetTaskText(1, nullptr, 0);
       if (result == DB_OK)
         return DB_CommitTransaction();
       DB_AbortTransaction();
       return result;
     }},
    {"Snapshot",
     [] {
       const int result = DB_BeginRead();
       if (result != DB_OK)
         return result;
       const int read = withParameter(page, 1);
       const int ended = DB_EndRead();
       return read != DB_OK ? read : ended;
     }},
    {"Explain",
     [] {
       return DB_Explain(
           counting, DB_EXPLAIN_TOKENS | DB_EXPLAIN_TREE | DB_EXPLAIN_SQL | DB_EXPLAIN_RUN, nullptr,
           [](void*, const char*) {}, nullptr);
     }},
    {"CheckFile", [] { return DB_CheckFile([](void*, const char*) {}, nullptr); }},
};

class WithoutMemory : public testing::TestWithParam<Operation> {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
    DB_Close();
    ASSERT_EQ(sqlite3_open((directory_.path() / "tasks.db").c_str(), &other_), SQLITE_OK);
    fill();
  }
  void TearDown() override { sqlite3_close(other_); }

  // Runs an SQL text on another connection. Returns the cells of its rows, and the error if any.
  std::vector<std::string> rowsOfSql(const char* sql) {
    std::vector<std::string> rows;
    char* error = nullptr;
    sqlite3_exec(
        other_, sql,
        [](void* all, int count, char** cells, char**) {
          for (int i = 0; i < count; ++i)
            static_cast<std::vector<std::string>*>(all)->emplace_back(
                cells[i] == nullptr ? "null" : cells[i]);
          return 0;
        },
        &rows, &error);
    if (error != nullptr)
      rows.push_back(error);
    sqlite3_free(error);
    return rows;
  }
  void fill() {
    EXPECT_THAT(rowsOfSql("BEGIN; DROP TABLE IF EXISTS t; DELETE FROM task_table_task;"
                          "DROP TRIGGER IF EXISTS ulo_texts_removal;"
                          "DROP TABLE IF EXISTS ulo_texts;"
                          "INSERT INTO task_table_task (UID, note, summary, due, priority) VALUES "
                          "(1, 'first', 's', 1, 1), (2, 'second', 's', 1, 1), "
                          "(3, 'third', 's', 1, 2); COMMIT"),
                ElementsAre());
  }
  std::vector<std::string> everything() {
    return rowsOfSql("SELECT * FROM task_table_task; SELECT name FROM sqlite_schema; "
                     "SELECT uid, text FROM ulo_texts");
  }

  // Runs the operation with the given allocation failing. Returns true if one failed.
  bool failsOnce(int number, bool usedUp, bool knownBefore) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    LogCapture log;
    EXPECT_EQ(DB_Open(1), DB_OK);
    // The table of the texts exists, except for the operation that creates it. If a transaction
    // that has created a table is discarded while there is no memory, the next operation does that.
    if (std::string_view(GetParam().name) != "FirstText") {
      EXPECT_EQ(DB_SetTaskText(3, "third", 5), DB_OK);
    }
    if (knownBefore) {
      EXPECT_EQ(query(counting), DB_OK);
      EXPECT_EQ(withParameter(page, 1), DB_OK);
    }
    const auto before = everything();
    int result = DB_OK;
    const bool failed = withoutMemory(number, usedUp, [&] { result = GetParam().run(); });
    EXPECT_TRUE(failed || result == DB_OK) << result;
    const auto changed = everything();
    EXPECT_TRUE(result == DB_OK || changed == before) << "a failed operation changed the database";
    // Nothing was left open, and the store still works.
    EXPECT_THAT(rowsOfSql("BEGIN IMMEDIATE; ROLLBACK"), ElementsAre());
    EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
    EXPECT_EQ(DB_EndRead(), DB_TRANSACTION);
    EXPECT_EQ(withParameter(page, 1), DB_OK);
    EXPECT_EQ(DB_BeginTransaction(0), DB_OK);
    EXPECT_EQ(DB_Exec("insert into task_table_task (note) values ('after')"), DB_OK);
    EXPECT_EQ(DB_AbortTransaction(), DB_OK);
    EXPECT_TRUE(everything() == changed);
    if (changed != before)
      fill();
    EXPECT_EQ(DB_Close(), DB_OK);
    return failed;
  }

private:
  DataDirectory directory_;
  sqlite3* other_ = nullptr;
};

TEST_P(WithoutMemory, SurvivesEveryFailedAllocation) {
  int runs = 0;
  for (const bool usedUp : {false, true})
    for (const bool knownBefore : {false, true})
      for (int number = 0; failsOnce(number, usedUp, knownBefore) && !HasFailure(); ++number)
        ++runs;
  EXPECT_GT(runs, 0);
  RecordProperty("runs", runs);
}

INSTANTIATE_TEST_SUITE_P(Operations, WithoutMemory, testing::ValuesIn(operations),
                         [](const auto& info) { return std::string(info.param.name); });

// Opens and closes the database with the given allocation failing. Returns true if one failed.
bool opensWithout(int number, bool usedUp) {
  SCOPED_TRACE("allocation " + std::to_string(number));
  int opened = DB_OK;
  int closed = DB_OK;
  const bool failed = withoutMemory(number, usedUp, [&] {
    opened = DB_Open(1);
    closed = DB_Close();
  });
  EXPECT_TRUE(failed || opened == DB_OK) << opened;
  EXPECT_EQ(closed == DB_OK, opened == DB_OK);
  EXPECT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_Close(), DB_OK);
  return failed;
}

TEST(ShortMemory, OpeningSucceedsAfterFailedAllocation) {
  LogCapture log;
  const DataDirectory directory;
  ASSERT_EQ(DB_Open(1), DB_OK);
  createTaskTables();
  DB_Close();
  int number = 0;
  for (const bool usedUp : {false, true})
    for (number = 0; opensWithout(number, usedUp) && !testing::Test::HasFailure();)
      ++number;
  EXPECT_GT(number, 0);
}

TEST(ShortMemory, FirstOpeningSucceedsAfterFailedAllocation) {
  LogCapture log;
  bool failed = true;
  for (int number = 0; failed && !testing::Test::HasFailure(); number += 5) {
    const DataDirectory directory;
    failed = opensWithout(number, true);
  }
}

}  // namespace
