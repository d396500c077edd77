// The journal of changes: one entry for each changed task row, written in the same transaction.

#include "announcement.h"
#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"
#include "ulo/change_journal.h"
#include "ulo/directory_watch.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <csignal>
#include <fstream>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char engine[] = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";
constexpr char addText[] = "insert into task_table_task (priority) values (1) returnuid";

// Runs statements on a file directly through SQLite.
void sql(const std::filesystem::path& file, const std::string& statements) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(database);
  sqlite3_close(database);
}

class Journal : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
  }
  void TearDown() override { DB_Close(); }

  // Returns the entries added since the previous call, each as "UID TYPE".
  std::vector<std::string> entries() {
    ulo::ChangeJournal journal;
    std::vector<ulo::Change> changes;
    EXPECT_TRUE(journal.entriesSince(last_, changes));
    std::vector<std::string> result;
    for (const ulo::Change& change : changes) {
      EXPECT_EQ(change.source, engine);
      EXPECT_EQ(change.entry, ++last_);
      result.push_back(std::to_string(change.uid) + " " +
                       std::to_string(static_cast<int>(change.type)));
    }
    return result;
  }
  void reopen() {
    DB_Close();
    ASSERT_EQ(DB_Open(1), DB_OK);
  }
  [[nodiscard]] std::filesystem::path file() const { return directory_.path() / "tasks.db"; }

  DataDirectory directory_;
  LogCapture log_;
  std::int64_t last_ = 0;
};

TEST_F(Journal, RecordsEachChangedTask) {
  EXPECT_THAT(entries(), IsEmpty());
  for (int i = 0; i < 4; ++i)
    ASSERT_EQ(DB_Exec(addText), DB_OK);
  EXPECT_EQ(DB_GetTag(), 4);
  EXPECT_THAT(entries(), ElementsAre("1 1", "2 1", "3 1", "4 1"));
  ASSERT_EQ(DB_Exec("sml:cursor $c = open_cursor('task_index_priority');"
                    "while($c->move_next()){"
                    "if ($c->get_field('UID') > 2){"
                    "tuple $data = $c->get_data_tuple();"
                    "$data->set_field('status', 1);"
                    "$c->update($data);};};"),
            DB_OK);
  EXPECT_THAT(entries(), testing::UnorderedElementsAre("4 2", "3 2"));
  ASSERT_EQ(DB_Exec("sml:cursor $c = open_cursor('task_table_task');$c->move_next();$c->del();"),
            DB_OK);
  EXPECT_THAT(entries(), ElementsAre("1 3"));
  ASSERT_EQ(DB_Exec("sml:cursor $c = open_cursor('main.task_table_task');"
                    "while($c->move_next()){\n$c->del();\n};"),
            DB_OK);
  EXPECT_THAT(entries(), ElementsAre("2 3", "3 3", "4 3"));
}

TEST_F(Journal, IgnoresCategories) {
  ASSERT_EQ(DB_Exec("insert into task_table_category (name, flag) values ('a', true)"), DB_OK);
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Journal, IgnoresFailedChanges) {
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  EXPECT_THAT(entries(), ElementsAre("1 1"));
  // The script deletes and then fails.
  EXPECT_EQ(DB_Exec("sml:int $i = 0;cursor $c = open_cursor('task_table_task');$c->move_next();"
                    "$c->del();$i = :0;"),
            DB_BAD_PARAMETER);
  EXPECT_THAT(entries(), IsEmpty());
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  EXPECT_THAT(entries(), IsEmpty());
  ASSERT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_THAT(entries(), IsEmpty());
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(entries(), ElementsAre("2 1"));
}

TEST_F(Journal, IsHiddenFromTexts) {
  for (const char* table : {"ulo_changes", "ulo_journal", "main.ulo_changes"}) {
    EXPECT_EQ(DB_Exec("sml:cursor $c = open_cursor('%s');", table), DB_UNKNOWN_NAME) << table;
    EXPECT_THAT(rowsOf(std::string("sml:declare schema s (there bool);declare buffer schema s;"
                                   "buffer_put(there, check_table_exist('") +
                           table + "'));",
                       1),
                ElementsAre("0"))
        << table;
  }
}

// Programs that watch the file must be notified when readers can see the commit.
TEST_F(Journal, AnnouncesCommits) {
  const ulo::DirectoryWatch nothing(directory_.path(), "nothing");
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  ulo::DirectoryWatch watch(directory_.path(), "tasks.db");
  ASSERT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_TRUE(watch.sawChange());
  struct stat status {};
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  ASSERT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_FALSE(watch.sawChange());
}

// The reporter must announce nothing within a transaction, and everything after it.
TEST_F(Journal, TellsReporterOfTransactions) {
  using Changes = ulo::UncommittedChanges;
  EXPECT_FALSE(Changes::exist());
  for (const auto end : {DB_CommitTransaction, DB_AbortTransaction}) {
    ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
    EXPECT_TRUE(Changes::exist());
    ASSERT_EQ(DB_Exec(addText), DB_OK);
    EXPECT_TRUE(Changes::exist());
    ASSERT_EQ(end(), DB_OK);
    EXPECT_FALSE(Changes::exist());
    ASSERT_EQ(DB_Exec(addText), DB_OK);
    EXPECT_FALSE(Changes::exist());
  }
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  EXPECT_EQ(DB_BeginTransaction(0), DB_TRANSACTION);
  EXPECT_TRUE(Changes::exist());
  DB_Close();
  EXPECT_FALSE(Changes::exist());
}

// Another process adds tasks one by one until it is killed. There must be one entry for each task
// at any time.
TEST_F(Journal, HasOneEntryPerTaskOfKilledProgram) {
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  for (int round = 0; round < 10; ++round) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    DB_Close();
    const pid_t writer = fork();
    if (writer == 0) {
      close(ends[0]);
      if (DB_Open(1) != DB_OK)
        _exit(1);
      while (DB_Exec(addText) == DB_OK && write(ends[1], ".", 1) == 1) {
      }
      _exit(2);
    }
    close(ends[1]);
    char byte = 0;
    for (int i = 0; i < 5 + round; ++i)
      EXPECT_EQ(read(ends[0], &byte, 1), 1);
    kill(writer, SIGKILL);
    close(ends[0]);
    int status = 0;
    waitpid(writer, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    ASSERT_EQ(DB_Open(1), DB_OK);
    const std::vector<std::string> uids =
        rowsOf("sml:declare schema s (uid integer);declare buffer schema s;"
               "cursor $c=open_cursor('task_table_task');while($c->move_next()){"
               "buffer_put(uid, $c->get_field('UID'));buffer_move_next();};",
               1);
    last_ = 0;
    std::vector<std::string> told = entries();
    for (std::string& entry : told)
      entry.resize(entry.find(' '));
    EXPECT_EQ(told, uids);
  }
}

TEST_F(Journal, IsAddedToStoreOfVersion01) {
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  DB_Close();
  sql(file(), "DROP TRIGGER ulo_after_INSERT; DROP TRIGGER ulo_after_UPDATE;"
              "DROP TRIGGER ulo_after_DELETE; DROP TABLE ulo_changes; DROP TABLE ulo_journal");
  const std::filesystem::path old = directory_.path() / "changes.db";
  sql(old, "CREATE TABLE changes (entry INTEGER PRIMARY KEY AUTOINCREMENT, time, source, uid, "
           "type); INSERT INTO changes (entry, uid) VALUES (41, 1)");
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_FALSE(std::filesystem::exists(old));
  ulo::ChangeJournal journal;
  ulo::NetChanges net;
  ASSERT_TRUE(journal.changesSince(engine, 41, net));
  EXPECT_TRUE(net.incomplete);
  last_ = net.lastEntry;
  EXPECT_EQ(last_, 42);
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  EXPECT_THAT(entries(), ElementsAre("2 1"));
  reopen();  // the conversion runs only once
  EXPECT_THAT(entries(), IsEmpty());
  ASSERT_TRUE(journal.changesSince(engine, 42, net));
  EXPECT_FALSE(net.incomplete);
}

TEST_F(Journal, ContinuesAfterUnreadableJournalOfVersion01) {
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  DB_Close();
  sql(file(), "DROP TRIGGER ulo_after_INSERT; DROP TRIGGER ulo_after_UPDATE;"
              "DROP TRIGGER ulo_after_DELETE; DROP TABLE ulo_changes; DROP TABLE ulo_journal");
  std::ofstream(directory_.path() / "changes.db") << std::string(8192, 'x');
  ASSERT_EQ(DB_Open(1), DB_OK);
  ulo::ChangeJournal journal;
  std::int64_t last = 0;
  ASSERT_TRUE(journal.lastEntry(last));
  EXPECT_GT(last, 1'000'000'000);
}

TEST_F(Journal, BeginsNewGenerationIfPartIsLost) {
  ASSERT_EQ(DB_Exec(addText), DB_OK);
  for (const char* part : {"TRIGGER ulo_after_UPDATE", "TABLE ulo_changes", "TABLE ulo_journal",
                           "TABLE task_table_task"}) {
    ulo::NetChanges before;
    ASSERT_TRUE(ulo::ChangeJournal().changesSince(engine, 0, before));
    DB_Close();
    sql(file(), std::string("DROP ") + part);
    ASSERT_EQ(DB_Open(1), DB_OK);
    if (std::string(part) == "TABLE task_table_task") {
      ASSERT_EQ(DB_Exec("%s", taskTableStatements[0].c_str()), DB_OK);
    }
    ulo::NetChanges after;
    ASSERT_TRUE(ulo::ChangeJournal().changesSince(engine, before.lastEntry, after));
    EXPECT_TRUE(after.incomplete) << part;
    EXPECT_NE(after.generation, before.generation) << part;
    EXPECT_GT(after.lastEntry, before.lastEntry) << part;
    last_ = after.lastEntry;
    ASSERT_EQ(DB_Exec(addText), DB_OK);
    EXPECT_EQ(entries().size(), 1U) << part;
  }
}

// The first program fills the database completely or not at all.
class Filling : public testing::Test {
protected:
  void SetUp() override { ASSERT_EQ(DB_Open(1), DB_OK); }
  void TearDown() override { DB_Close(); }

  DataDirectory directory_;
  LogCapture log_;
};

const std::string tables = "sml:declare schema s (tasks bool, categories bool);"
                           "declare buffer schema s;"
                           "buffer_put(tasks, check_table_exist('task_table_task'));"
                           "buffer_put(categories, check_table_exist('task_table_category'));";

TEST_F(Filling, StartsOverIfKilledBetweenTablesAndRows) {
  for (std::size_t done = 1; done < taskTableStatements.size(); ++done) {
    for (std::size_t i = 0; i < done; ++i)
      ASSERT_EQ(DB_Exec("%s", taskTableStatements[i].c_str()), DB_OK);
    DB_Close();
    ASSERT_EQ(DB_Open(1), DB_OK);
    EXPECT_THAT(rowsOf(tables, 2), ElementsAre("0|0")) << done;
  }
  createTaskTables();
  DB_Close();
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_THAT(rowsOf(tables, 2), ElementsAre("1|1"));
  ASSERT_EQ(DB_Exec("sml:cursor $c = open_cursor('task_table_category');"
                    "while($c->move_next()){$c->del();};"),
            DB_OK);
  DB_Close();
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_THAT(rowsOf(tables, 2), ElementsAre("1|1"));  // a table emptied by the user is kept
}

TEST_F(Filling, KeepsNoRowsIfOneFails) {
  createTaskTables();
  DB_Close();
  const DataDirectory fresh;
  ASSERT_EQ(DB_Open(1), DB_OK);
  for (std::size_t i = 0; i + 1 < taskTableStatements.size(); ++i)
    ASSERT_EQ(DB_Exec("%s", taskTableStatements[i].c_str()), DB_OK);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(DB_Exec("%s", taskTableStatements.back().c_str()), DB_OK);
  EXPECT_EQ(DB_Exec("insert into task_table_category (name) values (:0)"), DB_BAD_PARAMETER);
  EXPECT_EQ(DB_Exec("insert into task_table_category (name) values ('a')"), DB_OK);
  EXPECT_EQ(DB_CommitTransaction(), DB_BAD_PARAMETER);
  // It rejects writes until it has been reopened and filled again.
  EXPECT_EQ(DB_Exec(addText), DB_BAD_PARAMETER);
  DB_Close();
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_THAT(rowsOf(tables, 2), ElementsAre("0|0"));
  createTaskTables();
  EXPECT_EQ(DB_Exec(addText), DB_OK);
}

}  // namespace
