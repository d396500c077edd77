// Real faults: limits reached, a full disk, files that are not databases.

#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <csignal>
#include <cstdint>
#include <fstream>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

// The connection opened last. Tests use it to set the page limit and to run SQL.
sqlite3* lastConnection = nullptr;

int rememberConnection(sqlite3* connection, const char**, const void*) {
  lastConnection = connection;
  return SQLITE_OK;
}

void limitPages(int more) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(lastConnection, "PRAGMA page_count", -1, &statement, nullptr);
  sqlite3_step(statement);
  const int pages = sqlite3_column_int(statement, 0);
  sqlite3_finalize(statement);
  sqlite3_exec(lastConnection, ("PRAGMA max_page_count = " + std::to_string(pages + more)).c_str(),
               nullptr, nullptr, nullptr);
}

std::string repeated(const std::string& part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i)
    text += part;
  return text;
}

class OdbFailure : public testing::Test {
protected:
  void SetUp() override {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(rememberConnection));
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
  }
  void TearDown() override {
    DB_Close();
    sqlite3_reset_auto_extension();
  }

  static int exec(const std::string& text) { return DB_Exec("%s", text.c_str()); }
  static int addLarge() {
    return exec("insert into task_table_task (note) values ('" + repeated("x", 30000) + "')");
  }
  static int countRows() {
    DB_CURSOR cursor = nullptr;
    EXPECT_EQ(DB_Query(&cursor, "sml:declare schema s (n integer);declare buffer schema s;"
                                "table $t=open_table('task_table_task');"
                                "buffer_put(n, $t->get_record_number());"),
              DB_OK);
    const int count = DB_CSC_GetFieldAsInteger(cursor, 0);
    DB_CSC_Close(cursor);
    return count;
  }

  DataDirectory directory_;
  LogCapture log_;
};

// Limits: at and just beyond each of them.

TEST_F(OdbFailure, TextLength) {
  const std::string text = "sml:";
  EXPECT_EQ(exec(text + std::string(DB_MAX_TEXT - text.size(), ' ')), DB_OK);
  EXPECT_EQ(exec(text + std::string(DB_MAX_TEXT - text.size() + 1, ' ')), DB_LIMIT);
  // A number counts as two bytes, whatever its value.
  const std::string number = "sml:int $i=%d;";
  for (const int value : {1, INT32_MIN}) {
    const std::string full = number + std::string(DB_MAX_TEXT - number.size(), ' ');
    EXPECT_EQ(DB_Exec(full.c_str(), value), DB_OK);
    EXPECT_EQ(DB_Exec((full + ' ').c_str(), value), DB_LIMIT);
  }
}

TEST_F(OdbFailure, Nesting) {
  const auto blocks = [](int depth) {
    return "sml:" + repeated("while(false){", depth) + repeated("}", depth);
  };
  EXPECT_EQ(exec(blocks(DB_MAX_NESTING)), DB_OK);
  EXPECT_EQ(exec(blocks(DB_MAX_NESTING + 1)), DB_LIMIT);
  const auto parentheses = [](int depth) {
    return "sml:bool $b=" + repeated("(", depth) + "true" + repeated(")", depth) + ";";
  };
  EXPECT_EQ(exec(parentheses(DB_MAX_NESTING)), DB_OK);
  EXPECT_EQ(exec(parentheses(DB_MAX_NESTING + 1)), DB_LIMIT);
  const auto nots = [](int depth) { return "sml:bool $b=" + repeated("!", depth) + "true;"; };
  EXPECT_EQ(exec(nots(DB_MAX_NESTING)), DB_OK);
  EXPECT_EQ(exec(nots(DB_MAX_NESTING + 1)), DB_LIMIT);
  const auto sums = [](int operators) { return "sml:int $i=1" + repeated("+1", operators) + ";"; };
  EXPECT_EQ(exec(sums(DB_MAX_NESTING)), DB_OK);
  EXPECT_EQ(exec(sums(DB_MAX_NESTING + 1)), DB_LIMIT);
  const auto branches = [](int count) {
    return "sml:if(true){}" + repeated("else if(true){}", count - 1);
  };
  EXPECT_EQ(exec(branches(DB_MAX_NESTING - 1)), DB_OK);
  EXPECT_EQ(exec(branches(DB_MAX_NESTING + 1)), DB_LIMIT);
}

TEST_F(OdbFailure, Columns) {
  const auto table = [](const std::string& name, int columns) {
    std::string text = "create table " + name + " (UID integer auto";
    for (int i = 1; i < columns; ++i)
      text += ", c" + std::to_string(i) + " integer";
    return text + ")";
  };
  EXPECT_EQ(exec(table("t", DB_MAX_COLUMNS)), DB_OK);
  EXPECT_EQ(exec(table("u", DB_MAX_COLUMNS + 1)), DB_LIMIT);
  const auto schema = [](int columns) {
    std::string text = "sml:declare schema s (c0 bool";
    for (int i = 1; i < columns; ++i)
      text += ", c" + std::to_string(i) + " integer";
    return text + ");";
  };
  EXPECT_EQ(exec(schema(DB_MAX_COLUMNS)), DB_OK);
  EXPECT_EQ(exec(schema(DB_MAX_COLUMNS + 1)), DB_LIMIT);
}

TEST_F(OdbFailure, Variables) {
  const auto variables = [](int count) {
    std::string text = "sml:";
    for (int i = 0; i < count; ++i)
      text += "int $v" + std::to_string(i) + "=0;";
    return text;
  };
  EXPECT_EQ(exec(variables(DB_MAX_VARIABLES)), DB_OK);
  EXPECT_EQ(exec(variables(DB_MAX_VARIABLES + 1)), DB_LIMIT);
}

TEST_F(OdbFailure, Names) {
  EXPECT_EQ(exec("sml:int $" + repeated("n", DB_MAX_NAME) + "=0;"), DB_OK);
  EXPECT_EQ(exec("sml:int $" + repeated("n", DB_MAX_NAME + 1) + "=0;"), DB_LIMIT);
  const std::string longest = repeated("n", DB_MAX_NAME);
  EXPECT_EQ(exec("create table " + longest + " (UID integer auto, " + longest + " integer)"),
            DB_OK);
  EXPECT_EQ(exec("create table " + longest + "n (UID integer auto)"), DB_LIMIT);
  EXPECT_EQ(exec("create table t (UID integer auto, " + longest + "n integer)"), DB_LIMIT);
  EXPECT_EQ(exec("create index i" + longest + " on " + longest + " (UID)"), DB_LIMIT);
  EXPECT_EQ(exec("sml:cursor $c=open_cursor('main." + longest + "');"), DB_OK);
  for (const std::string& name : {longest + "n", "main." + longest + "n"}) {
    EXPECT_EQ(exec("sml:cursor $c=open_cursor('" + name + "');"), DB_LIMIT);
    EXPECT_EQ(exec("sml:bool $b=check_table_exist('" + name + "');"), DB_LIMIT);
  }
  const std::string key = "sml:cursor $c=open_cursor('" + longest +
                          "');tuple $k=$c->new_empty_key_tuple();$k->set_field('";
  EXPECT_EQ(exec(key + "UID', 1);"), DB_OK);
  EXPECT_EQ(exec(key + longest + "n', 1);"), DB_LIMIT);
}

TEST_F(OdbFailure, Parameters) {
  EXPECT_EQ(DB_PARAM_Open(0), nullptr);
  EXPECT_EQ(DB_PARAM_Open(-1), nullptr);
  EXPECT_EQ(DB_PARAM_Open(DB_MAX_PARAMETERS + 1), nullptr);
  DB_PARAM block = DB_PARAM_Open(DB_MAX_PARAMETERS);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(DB_PARAM_BindInteger(block, DB_MAX_PARAMETERS - 1, 1), DB_OK);
  EXPECT_EQ(DB_ExecWithParam(block, "sml:int $i=:%s;", "255"), DB_OK);
  EXPECT_EQ(DB_ExecWithParam(block, "sml:int $i=:%s;", "256"), DB_LIMIT);
  DB_PARAM_Close(block);
}

TEST_F(OdbFailure, Rows) {
  const std::string text = "sml:declare schema s (n bool);declare buffer schema s;int $i=0;"
                           "while($i<%d){buffer_put(n, true);$i=$i+1;};";
  EXPECT_EQ(DB_Exec(text.c_str(), DB_MAX_ROWS), DB_OK);
  EXPECT_EQ(DB_Exec(text.c_str(), DB_MAX_ROWS + 1), DB_LIMIT);
}

TEST_F(OdbFailure, LoopPasses) {
  const char* text = "sml:int $i=0;while($i<%d){$i=$i+1;};";
  EXPECT_EQ(DB_Exec(text, DB_MAX_LOOP_PASSES), DB_OK);
  EXPECT_EQ(DB_Exec(text, DB_MAX_LOOP_PASSES + 1), DB_LIMIT);
  EXPECT_EQ(exec("sml:while(true){};"), DB_LIMIT);
}

TEST_F(OdbFailure, ReportsIntegerOverflow) {
  EXPECT_EQ(exec("sml:int $i=1;while($i>0){$i=$i+$i;};"), DB_LIMIT);
  EXPECT_THAT(log_.text(), HasSubstr("the number leaves 64 bits"));
}

TEST_F(OdbFailure, InsertFailsAfterLastUid) {
  ASSERT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  ASSERT_EQ(sqlite3_exec(lastConnection,
                         "UPDATE sqlite_sequence SET seq = 2147483646 WHERE name = "
                         "'task_table_task'",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1) returnuid"), DB_OK);
  EXPECT_EQ(DB_GetTag(), INT32_MAX);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1) returnuid"), DB_CONSTRAINT);
  EXPECT_EQ(DB_GetTag(), INT32_MAX);
  EXPECT_EQ(countRows(), 2);
}

// A full database

TEST_F(OdbFailure, FullDatabaseReturns12AndKeepsItsRows) {
  ASSERT_EQ(addLarge(), DB_OK);
  limitPages(2);
  EXPECT_EQ(addLarge(), DB_FULL);
  EXPECT_EQ(DB_FULL, 12);
  EXPECT_EQ(countRows(), 1);
  EXPECT_EQ(exec("create table t (UID integer auto)"), DB_OK) << "a small table still fits";
  limitPages(1000);
  EXPECT_EQ(addLarge(), DB_OK);
}

TEST_F(OdbFailure, TransactionCanBeAbortedInFullDatabase) {
  limitPages(2);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  EXPECT_EQ(addLarge(), DB_FULL);
  EXPECT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_EQ(countRows(), 0);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
}

TEST_F(OdbFailure, TransactionEndedBySqliteRejectsEverything) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  // SQLite itself does this when it cannot continue, for example after an I/O error.
  ASSERT_EQ(sqlite3_exec(lastConnection, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (2)"), DB_TRANSACTION);
  EXPECT_EQ(DB_CommitTransaction(), DB_TRANSACTION);
  EXPECT_EQ(countRows(), 0);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(sqlite3_exec(lastConnection, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(DB_AbortTransaction(), DB_OK) << "an abort must then succeed";
}

TEST_F(OdbFailure, WriteEndedBySqliteKeepsNothing) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  ASSERT_EQ(sqlite3_exec(lastConnection, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (2)"), DB_TRANSACTION);
  EXPECT_EQ(DB_BeginWrite(), DB_TRANSACTION);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  EXPECT_EQ(DB_EndWrite(1), DB_TRANSACTION);
  EXPECT_EQ(countRows(), 0);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  ASSERT_EQ(sqlite3_exec(lastConnection, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(DB_EndWrite(0), DB_OK);
}

TEST_F(OdbFailure, WriteWithFailedCommitKeepsNothing) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  // A commit that the hook rejects fails like one that cannot be written.
  sqlite3_commit_hook(
      lastConnection, [](void*) { return 1; }, nullptr);
  EXPECT_NE(DB_EndWrite(1), DB_OK);
  sqlite3_commit_hook(lastConnection, nullptr, nullptr);
  EXPECT_EQ(countRows(), 0);
  EXPECT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  EXPECT_EQ(countRows(), 1);
}

enum class Outcome { kept, refused, lostByCommit, notBegun };

// Runs a text in a transaction, in a process whose files cannot grow beyond `size`.
// Requires: the database is closed here.
Outcome runWithin(rlim_t size, const std::string& text) {
  const pid_t process = fork();
  if (process == 0) {
    const auto end = [](Outcome outcome) { _exit(static_cast<int>(outcome)); };
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{size, size};
    if (DB_Open(1) != DB_OK || setrlimit(RLIMIT_FSIZE, &limit) != 0 ||
        DB_BeginTransaction(0) != DB_OK)
      end(Outcome::notBegun);
    if (DB_Exec("%s", text.c_str()) != DB_OK)
      end(DB_AbortTransaction() == DB_OK ? Outcome::refused : Outcome::notBegun);
    end(DB_CommitTransaction() == DB_OK ? Outcome::kept : Outcome::lostByCommit);
  }
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : Outcome::notBegun;
}

// Callers may ignore the result of the commit. A script in their transaction therefore succeeds
// only if the log has room for all of its changes and for the commit.
TEST_F(OdbFailure, RejectsScriptIfItsCommitHasNoRoom) {
  // Few enough for SQLite to keep the data that undoes the script in memory, not in a limited file.
  constexpr int rows = 50;
  constexpr rlim_t step = 2048;  // half a page of the log
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  for (int i = 0; i < rows; ++i)
    ASSERT_EQ(DB_Exec("insert into task_table_task (due) values (%d)", i), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  const std::string removeAll = "sml:cursor $c = open_cursor('task_table_task');"
                                "while($c->move_next()){$c->del();};";
  Outcome outcome = Outcome::refused;
  int refusals = 0;
  for (rlim_t size = step; outcome == Outcome::refused && size < 500 * step; size += step) {
    DB_Close();
    outcome = runWithin(size, removeAll);
    ASSERT_EQ(DB_Open(1), DB_OK);
    ASSERT_EQ(countRows(), outcome == Outcome::kept ? 0 : rows) << size;
    refusals += outcome == Outcome::refused ? 1 : 0;
  }
  EXPECT_EQ(outcome, Outcome::kept);
  EXPECT_GT(refusals, 2);
}

// Tables changed by other programs

TEST_F(OdbFailure, UsesTableRecreatedByAnotherProgram) {
  const std::string text = "sml:declare schema s (a integer);declare buffer schema s;"
                           "cursor $c=open_cursor('t');while($c->move_next()){"
                           "buffer_put(a, $c->get_field('a'));};";
  ASSERT_EQ(exec("create table t (UID integer auto, a integer)"), DB_OK);
  ASSERT_EQ(exec("insert into t (a) values (5)"), DB_OK);
  EXPECT_THAT(rowsOf(text, 1), ElementsAre("5"));

  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((directory_.path() / "tasks.db").c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "DROP TABLE t", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_NE(rowsOf(text, 1).at(0), "5");
  EXPECT_THAT(rowsOf(text, 1), ElementsAre("error 4")) << "the removed table must be noticed";
  ASSERT_EQ(sqlite3_exec(other,
                         "CREATE TABLE t (b INTEGER, UID INTEGER PRIMARY KEY AUTOINCREMENT, a "
                         "INTEGER); INSERT INTO t (a, b) VALUES (6, 7)",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  EXPECT_THAT(rowsOf(text, 1), ElementsAre("6"));
  sqlite3_close(other);
}

// Files

TEST_F(OdbFailure, SoundFileHasNoDefects) {
  std::vector<std::string> defects;
  EXPECT_EQ(DB_CheckFile(
                [](void* context, const char* line) {
                  static_cast<std::vector<std::string>*>(context)->emplace_back(line);
                },
                &defects),
            DB_OK);
  EXPECT_THAT(defects, SizeIs(0));
}

TEST_F(OdbFailure, ReportsDamagedFile) {
  ASSERT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  // Lets two indexes use the same page.
  ASSERT_EQ(sqlite3_exec(lastConnection,
                         "PRAGMA writable_schema = ON;"
                         "UPDATE sqlite_schema SET rootpage = (SELECT rootpage FROM sqlite_schema "
                         "WHERE name = 'task_index_category') WHERE name = 'task_index_alarm';"
                         "PRAGMA writable_schema = RESET",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  std::vector<std::string> defects;
  DB_CheckFile(
      [](void* context, const char* line) {
        static_cast<std::vector<std::string>*>(context)->emplace_back(line);
      },
      &defects);
  EXPECT_THAT(defects, Contains(HasSubstr("2nd reference to page")));
}

TEST_F(OdbFailure, ExceptionFromSinkEndsExplanation) {
  const char* text = "sml:int $i=0;cursor $c=open_cursor('task_table_task');"
                     "while($c->move_next()){$c->del();};";
  const auto explain = [&](int lines, bool standard) {
    struct Sink {
      int left;
      bool standard;
    } sink{lines, standard};
    return DB_Explain(
        text, DB_EXPLAIN_TREE | DB_EXPLAIN_RUN, nullptr,
        [](void* context, const char*) {
          auto& counted = *static_cast<Sink*>(context);
          if (counted.left-- > 0)
            return;
          if (counted.standard)
            throw std::runtime_error("the sink is full");
          throw 5;
        },
        &sink);
  };
  ASSERT_EQ(exec("insert into task_table_task (priority) values (1)"), DB_OK);
  int lines = 0;
  for (; lines < 1000; ++lines) {
    const int result = explain(lines, lines % 2 == 0);
    if (result == DB_OK)
      break;
    EXPECT_EQ(result, DB_ERROR);
    EXPECT_EQ(countRows(), 1) << "the run must be undone, at line " << lines;
    EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
  }
  EXPECT_GT(lines, 5);
  EXPECT_EQ(countRows(), 0);
  // The sink may also throw when it receives an error message.
  EXPECT_NE(
      DB_Explain(
          "sml:nonsense", DB_EXPLAIN_TREE, nullptr, [](void*, const char*) { throw 5; }, nullptr),
      DB_OK);
}

TEST_F(OdbFailure, KeepsReasonOfLastFailure) {
  EXPECT_EQ(exec("sml:nonsense"), DB_SYNTAX);
  EXPECT_THAT(DB_LastFailure(), HasSubstr("line 1, column 5"));
  EXPECT_EQ(exec("sml:"), DB_OK);
  EXPECT_THAT(DB_LastFailure(), HasSubstr("line 1, column 5"));
  EXPECT_EQ(exec("sml:cursor $c=open_cursor('" + std::string(100, 'n') + "');"), DB_UNKNOWN_NAME);
  EXPECT_EQ(DB_Explain("sml:", DB_EXPLAIN_TREE, nullptr, nullptr, nullptr), DB_BAD_ARGUMENT);
  EXPECT_THAT(DB_LastFailure(), HasSubstr("null"));
}

TEST(OdbFiles, RejectsFileThatIsNotDatabase) {
  const DataDirectory directory;
  std::ofstream(directory.path() / "tasks.db") << repeated("this is no database. ", 100);
  LogCapture log;
  EXPECT_EQ(DB_Open(1), DB_CORRUPT);
  EXPECT_EQ(DB_Exec("sml:"), DB_NOT_OPEN);
}

TEST(OdbFiles, RejectsDatabaseOfAnotherProgram) {
  const DataDirectory directory;
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((directory.path() / "tasks.db").c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE t (a)", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  LogCapture log;
  EXPECT_EQ(DB_Open(1), DB_CORRUPT);
}

TEST(OdbFiles, FailsIfDataDirectoryIsFile) {
  const TemporaryDirectory directory;
  std::ofstream(directory.path() / "file") << "x";
  setenv("ULO_DATA_DIR", (directory.path() / "file").c_str(), 1);
  LogCapture log;
  EXPECT_EQ(DB_Open(1), DB_IO);
  unsetenv("ULO_DATA_DIR");
}

TEST(OdbFiles, FailsIfDatabaseFileIsDirectory) {
  const DataDirectory directory;
  std::filesystem::create_directory(directory.path() / "tasks.db");
  LogCapture log;
  EXPECT_EQ(DB_Open(1), DB_IO);
}

TEST(OdbFiles, OnlyOwnerCanAccessFiles) {
  const DataDirectory directory;
  ASSERT_EQ(DB_Open(1), DB_OK);
  createTaskTables();
  namespace fs = std::filesystem;
  for (const auto& entry : fs::directory_iterator(directory.path()))
    EXPECT_EQ(fs::status(entry.path()).permissions() &
                  (fs::perms::group_all | fs::perms::others_all),
              fs::perms::none)
        << entry.path();
  DB_Close();
}

// Otherwise a failed first start would look like a lost store to the next one.
TEST(OdbFiles, ReserveIsCreatedOnceStoreIsComplete) {
  const DataDirectory directory;
  const auto reserve = directory.path() / "tasks.reserve";
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_FALSE(std::filesystem::exists(reserve));
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  createTaskTables();
  EXPECT_FALSE(std::filesystem::exists(reserve));
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_TRUE(std::filesystem::exists(reserve));
  DB_Close();

  std::filesystem::remove(reserve);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_TRUE(std::filesystem::exists(reserve));
  DB_Close();
}

// Callers do not check every result while they fill a database.
TEST(OdbFiles, KeepsNothingIfFillingFailsInPart) {
  const DataDirectory directory;
  LogCapture log;
  ASSERT_EQ(DB_Open(1), DB_OK);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  createTaskTables();
  EXPECT_EQ(DB_Exec("insert into task_table_absent (name) values ('a')"), DB_UNKNOWN_NAME);
  EXPECT_EQ(DB_CommitTransaction(), DB_UNKNOWN_NAME);
  DB_Close();

  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_Exec("insert into task_table_task (priority) values (1)"), DB_UNKNOWN_NAME);
  DB_Close();
}

TEST(OdbFailures, AreCountedPerThread) {
  const DataDirectory directory;
  LogCapture log;
  ASSERT_EQ(DB_Open(1), DB_OK);
  const unsigned int before = DB_FailureCount();
  std::thread([] { EXPECT_NE(DB_Exec("nonsense"), DB_OK); }).join();
  EXPECT_EQ(DB_FailureCount(), before);
  EXPECT_EQ(DB_CommitTransaction(), DB_TRANSACTION);
  EXPECT_EQ(DB_FailureCount(), before + 1);
  EXPECT_EQ(DB_LastResult(), DB_TRANSACTION);
  EXPECT_EQ(DB_BeginTransaction(0), DB_OK);
  EXPECT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_EQ(DB_FailureCount(), before + 1);
  EXPECT_EQ(DB_LastResult(), DB_TRANSACTION);
  DB_Close();
}

}  // namespace
