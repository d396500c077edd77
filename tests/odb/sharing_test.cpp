// Sharing a database file among threads and processes.

#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string uids = "sml:declare schema s (uid integer);declare buffer schema s;"
                         "cursor $c=open_cursor('task_table_task');while($c->move_next()){"
                         "buffer_put(uid, $c->get_field('UID'));buffer_move_next();};";

int addRow() {
  return DB_Exec("insert into task_table_task (priority) values (1) returnuid") == DB_OK
             ? DB_GetTag()
             : 0;
}

// Runs `work` in a child process, which exits with the result. Returns its process ID.
template <typename Work> pid_t startProcess(Work work) {
  const pid_t child = fork();
  if (child == 0)
    _exit(work());
  return child;
}

int waitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Starts like the store: looks for the tables and creates them if they are missing. Returns 0 on
// success.
int startLikeTheStore() {
  if (DB_Open(1) != DB_OK)
    return 1;
  DB_CURSOR cursor = nullptr;
  if (DB_Query(&cursor, "sml:declare schema s (there bool);declare buffer schema s;"
                        "buffer_put(there, check_table_exist('task_table_category'));") != DB_OK)
    return 2;
  const bool there = DB_CSC_GetFieldAsBool(cursor, 0) != 0;
  DB_CSC_Close(cursor);
  if (!there) {
    if (DB_BeginTransaction(0) != DB_OK)
      return 3;
    for (std::size_t i = 0; i + 1 < taskTableStatements.size(); ++i)
      if (DB_Exec("%s", taskTableStatements[i].c_str()) != DB_OK)
        return 4;
    if (DB_CommitTransaction() != DB_OK || DB_BeginTransaction(0) != DB_OK ||
        DB_Exec("%s", taskTableStatements.back().c_str()) != DB_OK ||
        DB_CommitTransaction() != DB_OK)
      return 5;
  }
  return DB_Close() == DB_OK ? 0 : 6;
}

TEST(OdbSharing, ConcurrentProcessesFillNewDatabaseOnce) {
  for (int round = 0; round < 10; ++round) {
    const DataDirectory directory;
    std::vector<pid_t> children;
    for (int i = 0; i < 6; ++i)
      children.push_back(startProcess(startLikeTheStore));
    for (const pid_t child : children)
      EXPECT_EQ(waitFor(child), 0);
    ASSERT_EQ(DB_Open(1), DB_OK);
    EXPECT_EQ(rowsOf("sml:declare schema s (n integer);declare buffer schema s;"
                     "table $t=open_table('task_table_category');"
                     "buffer_put(n, $t->get_record_number());",
                     1),
              std::vector<std::string>{"1"});
    DB_Close();
  }
}

TEST(OdbSharing, ConcurrentThreadsFillNewDatabaseOnce) {
  const DataDirectory directory;
  std::vector<std::thread> threads;
  std::atomic<int> failures = 0;
  for (int i = 0; i < 6; ++i)
    threads.emplace_back([&] { failures += startLikeTheStore() != 0 ? 1 : 0; });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(failures, 0);
}

TEST(OdbSharing, KilledProcessLeavesNoLockAndNoPartialDatabase) {
  const DataDirectory directory;
  const pid_t child = startProcess([] {
    if (DB_Open(1) != DB_OK || DB_BeginTransaction(0) != DB_OK ||
        DB_Exec("%s", taskTableStatements[0].c_str()) != DB_OK)
      return 1;
    kill(getpid(), SIGKILL);
    return 0;
  });
  EXPECT_EQ(waitFor(child), 128 + SIGKILL);
  EXPECT_EQ(startLikeTheStore(), 0);
}

TEST(OdbSharing, ProcessesAndThreadsAddConcurrently) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  constexpr int perWriter = 60;
  const auto addMany = [] {
    if (DB_Open(1) != DB_OK)
      return 1;
    for (int i = 0; i < perWriter; ++i)
      if (addRow() == 0)
        return 2;
    return DB_Close() == DB_OK ? 0 : 3;
  };
  const pid_t first = startProcess(addMany);
  const pid_t second = startProcess(addMany);
  std::atomic<int> failures = 0;
  std::thread third([&] { failures += addMany(); });
  failures += addMany();
  third.join();
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(waitFor(first), 0);
  EXPECT_EQ(waitFor(second), 0);
  ASSERT_EQ(DB_Open(1), DB_OK);
  const std::vector<std::string> all = rowsOf(uids, 1);
  EXPECT_EQ(all.size(), 4U * perWriter);
  EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
  DB_Close();
}

TEST(OdbSharing, TagBelongsToThread) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  ASSERT_EQ(DB_Open(1), DB_OK);
  ASSERT_EQ(DB_Exec("sml:set_session_tag(5);"), DB_OK);
  int other = -1;
  std::thread([&] {
    ASSERT_EQ(DB_Open(1), DB_OK);
    other = DB_GetTag();
    EXPECT_EQ(DB_Exec("sml:set_session_tag(6);"), DB_OK);
    DB_Close();
  }).join();
  EXPECT_EQ(other, 0);
  EXPECT_EQ(DB_GetTag(), 5);
  DB_Close();
}

TEST(OdbSharing, SeesTableCreatedByAnotherProcess) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  // The process is created before the database is opened here, and waits for a byte from the pipe.
  int word[2];
  ASSERT_EQ(pipe(word), 0);
  const pid_t child = startProcess([&] {
    char byte = 0;
    close(word[1]);
    const bool done = read(word[0], &byte, 1) == 1 && DB_Open(1) == DB_OK &&
                      DB_Exec("create table later (UID integer auto)") == DB_OK;
    return done && DB_Close() == DB_OK ? 0 : 1;
  });
  ASSERT_EQ(DB_Open(1), DB_OK);
  LogCapture log;
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('later');"), DB_UNKNOWN_NAME);
  ASSERT_EQ(write(word[1], "x", 1), 1);
  EXPECT_EQ(waitFor(child), 0);
  close(word[0]);
  close(word[1]);
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('later');"), DB_OK);
  DB_Close();
}

// Returns true if another connection can write immediately.
bool isUnlocked(const DataDirectory& directory) {
  sqlite3* database = nullptr;
  sqlite3_open((directory.path() / "tasks.db").c_str(), &database);
  const bool result =
      sqlite3_exec(database, "BEGIN IMMEDIATE; ROLLBACK", nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(database);
  return result;
}

// Returns the size of the write-ahead log.
std::uintmax_t logSize(const DataDirectory& directory) {
  std::error_code none;
  const auto size = std::filesystem::file_size(directory.path() / "tasks.db-wal", none);
  return none ? 0 : size;
}

// A reader on another connection that can hold a snapshot of the database.
class HeldReader {
public:
  explicit HeldReader(const DataDirectory& directory) {
    sqlite3_open((directory.path() / "tasks.db").c_str(), &database_);
  }
  HeldReader(const HeldReader&) = delete;
  HeldReader& operator=(const HeldReader&) = delete;
  ~HeldReader() { sqlite3_close(database_); }
  void hold() { run("BEGIN; SELECT count(*) FROM task_table_task"); }
  void letGo() { run("ROLLBACK"); }

private:
  void run(const char* sql) {
    EXPECT_EQ(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr), SQLITE_OK);
  }
  sqlite3* database_ = nullptr;
};

constexpr std::uintmax_t megabyte = 1024 * 1024;
const std::string largeRow =
    "insert into task_table_task (note) values ('" + std::string(60000, 'x') + "')";
const std::string removeAll =
    "sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){$c->del();};";

void writeMegabytes(int count) {
  for (int i = 0; i < count * 8; ++i) {
    ASSERT_EQ(DB_Exec("%s", largeRow.c_str()), DB_OK);
    if (i % 8 == 7) {
      ASSERT_EQ(DB_Exec("%s", removeAll.c_str()), DB_OK);
    }
  }
}

TEST(OdbSharing, LogStaysShortWithOverlappingReaders) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  ASSERT_EQ(DB_Open(1), DB_OK);
  // At any time one of them holds a snapshot, but none holds it for long.
  std::atomic<bool> goesOn{true};
  std::thread readers([&] {
    HeldReader first(directory);
    HeldReader second(directory);
    first.hold();
    while (goesOn) {
      second.hold();
      first.letGo();
      first.hold();
      second.letGo();
    }
    first.letGo();
  });
  std::uintmax_t longest = 0;
  for (int i = 0; i < 24; ++i) {
    writeMegabytes(1);
    longest = std::max(longest, logSize(directory));
  }
  goesOn = false;
  readers.join();
  EXPECT_LE(longest, 14 * megabyte);
  DB_Close();
}

TEST(OdbSharing, LogShrinksAfterHeldReaderEnds) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  ASSERT_EQ(DB_Open(1), DB_OK);
  HeldReader reader(directory);
  reader.hold();
  writeMegabytes(10);
  EXPECT_GT(logSize(directory), 9 * megabyte) << "the pages of the reader's snapshot must be kept";
  reader.letGo();
  writeMegabytes(2);
  EXPECT_LE(logSize(directory), 5 * megabyte);
  DB_Close();
}

TEST(OdbSharing, ForkedChildDoesNotTouchDatabaseOfParent) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  ASSERT_EQ(DB_Open(1), DB_OK);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  const int uid = addRow();
  LogCapture log;
  EXPECT_EQ(waitFor(startProcess([] {
              if (DB_Exec("sml:") != DB_NOT_OPEN || DB_Open(1) != DB_NOT_OPEN ||
                  DB_CommitTransaction() != DB_NOT_OPEN)
                return 1;
              if (std::string(DB_LastFailure()).find("forked") == std::string::npos)
                return 2;
              // A static object of the parent does this in the child.
              return DB_Close() == DB_OK && DB_Close() == DB_NOT_OPEN ? 0 : 3;
            })),
            0);
  EXPECT_FALSE(isUnlocked(directory)) << "the child released the parent's lock";
  EXPECT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_EQ(rowsOf(uids, 1), std::vector<std::string>{std::to_string(uid)});
  EXPECT_EQ(DB_Close(), DB_OK);
  // Nothing is shared if the database was closed before the fork.
  EXPECT_EQ(waitFor(startProcess([] { return DB_Open(1) == DB_OK && addRow() > 0 ? 0 : 1; })), 0);
}

TEST(OdbSharing, ForkedChildHoldsNoLockOnNewDatabase) {
  const DataDirectory directory;
  ASSERT_EQ(DB_Open(1), DB_OK);
  int word[2];
  ASSERT_EQ(pipe(word), 0);
  const pid_t child = startProcess([&] {
    char byte = 0;
    close(word[1]);
    return read(word[0], &byte, 1) == 0 ? 0 : 1;
  });
  createTaskTables();
  const int lock = open(directory.path().c_str(), O_RDONLY | O_DIRECTORY);
  EXPECT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  close(lock);
  close(word[0]);
  close(word[1]);
  EXPECT_EQ(waitFor(child), 0);
  DB_Close();
}

TEST(OdbSharing, EndingThreadClosesItsDatabase) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  std::thread([] {
    EXPECT_EQ(DB_Open(1), DB_OK);
    EXPECT_EQ(DB_BeginTransaction(0), DB_OK);
    EXPECT_GT(addRow(), 0);
  }).join();
  EXPECT_TRUE(isUnlocked(directory));
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "tasks.db-wal"));
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(rowsOf(uids, 1), std::vector<std::string>{});
  DB_Close();
}

TEST(OdbSharing, KilledWriterLosesUncommittedRows) {
  const DataDirectory directory;
  ASSERT_EQ(startLikeTheStore(), 0);
  const pid_t child = startProcess([] {
    DB_Open(1);
    addRow();
    DB_BeginTransaction(0);
    for (int i = 0; i < 500; ++i)
      addRow();
    kill(getpid(), SIGKILL);
    return 0;
  });
  EXPECT_EQ(waitFor(child), 128 + SIGKILL);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(rowsOf(uids, 1), std::vector<std::string>{"1"});
  DB_Close();
}

}  // namespace
