// The texts that tasks came with: stored, discarded and removed together with the task.

#include "log_capture.h"
#include "one_task.h"
#include "raw_database.h"
#include "ulo/change_journal.h"
#include "ulodb2_files.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

constexpr char removeFirst[] = "sml:cursor $c = open_cursor('task_table_task');$c->move_next();"
                               "$c->del();";

int setText(int uid, const std::string& text) {
  return DB_SetTaskText(uid, text.data(), static_cast<unsigned int>(text.size()));
}

// Returns the text of a task; nothing if it has none.
std::optional<std::string> textOf(int uid) {
  const char* bytes = nullptr;
  unsigned int size = 0;
  EXPECT_EQ(DB_GetTaskText(uid, &bytes, &size), DB_OK);
  return bytes == nullptr ? std::nullopt : std::optional(std::string(bytes, size));
}

class TaskTexts : public OneTask {
protected:
  // Runs SQL on the file without the database library.
  std::vector<std::string> sql(const std::string& text) const {
    return RawDatabase(directory_.path()).run(text);
  }
  [[nodiscard]] fs::path file() const { return directory_.path() / "tasks.db"; }
  void reopen() {
    DB_Close();
    ASSERT_EQ(DB_Open(1), DB_OK);
  }
  LogCapture log_;
};

TEST_F(TaskTexts, KeepBytes) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all += static_cast<char>(byte);
  ASSERT_EQ(addTask(), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
  EXPECT_EQ(setText(1, "first"), DB_OK);
  EXPECT_EQ(setText(2, all), DB_OK);
  EXPECT_EQ(textOf(1), "first");
  EXPECT_EQ(setText(1, std::string(100'000, 'x') + '\0'), DB_OK);
  reopen();
  EXPECT_EQ(textOf(1), std::string(100'000, 'x') + '\0');
  EXPECT_EQ(textOf(2), all);
  EXPECT_EQ(setText(1, ""), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
  EXPECT_EQ(textOf(99), std::nullopt);
}

// A store without texts is the same as one of an older version.
TEST_F(TaskTexts, NeedNoTableUntilFirstText) {
  EXPECT_EQ(setText(1, ""), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE name LIKE 'ulo_texts%'"), IsEmpty());
  EXPECT_EQ(setText(1, "text"), DB_OK);
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE name LIKE 'ulo_texts%' ORDER BY name"),
              ElementsAre("ulo_texts", "ulo_texts_removal"));
}

TEST_F(TaskTexts, GoWithTask) {
  for (int uid = 2; uid <= 4; ++uid)
    ASSERT_EQ(addTask(), DB_OK);
  for (int uid = 1; uid <= 4; ++uid)
    ASSERT_EQ(setText(uid, "text"), DB_OK);
  ASSERT_EQ(DB_Exec(removeFirst), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
  sql("DELETE FROM task_table_task WHERE UID = 2");
  EXPECT_EQ(textOf(2), std::nullopt);
  EXPECT_EQ(textOf(3), "text");
  ASSERT_EQ(DB_Exec("%s", removeAllTasks.c_str()), DB_OK);
  EXPECT_THAT(sql("SELECT count(*) FROM ulo_texts"), ElementsAre("0"));
}

TEST_F(TaskTexts, BelongToTransactionOfTask) {
  ASSERT_EQ(setText(1, "old"), DB_OK);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  ASSERT_EQ(addTask(), DB_OK);
  EXPECT_EQ(setText(2, "new"), DB_OK);
  EXPECT_EQ(setText(1, "new"), DB_OK);
  EXPECT_EQ(textOf(1), "new");
  ASSERT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_EQ(textOf(1), "old");
  EXPECT_EQ(textOf(2), std::nullopt);
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(setText(1, "kept"), DB_OK);
  ASSERT_EQ(DB_EndWrite(1), DB_OK);
  EXPECT_EQ(textOf(1), "kept");
}

TEST_F(TaskTexts, FirstTextThatIsDiscardedLeavesNoTable) {
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(setText(1, "text"), DB_OK);
  ASSERT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE name LIKE 'ulo_texts%'"), IsEmpty());
  EXPECT_EQ(textOf(1), std::nullopt);
  EXPECT_EQ(setText(1, "again"), DB_OK);
  EXPECT_EQ(textOf(1), "again");
}

TEST_F(TaskTexts, AppearInOtherConnections) {
  EXPECT_EQ(textOf(1), std::nullopt);
  // Each thread has its own connection.
  std::thread([] {
    ASSERT_EQ(DB_Open(1), DB_OK);
    EXPECT_EQ(setText(1, "of another connection"), DB_OK);
    DB_Close();
  }).join();
  EXPECT_EQ(textOf(1), "of another connection");
  EXPECT_THAT(rowsOf(uidsOfTasks, 1), ElementsAre("1"));
}

TEST_F(TaskTexts, AppearAfterStateThatIsRead) {
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
  std::thread([] {
    ASSERT_EQ(DB_Open(1), DB_OK);
    EXPECT_EQ(setText(1, "new"), DB_OK);
    DB_Close();
  }).join();
  EXPECT_EQ(textOf(1), std::nullopt);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(textOf(1), "new");
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(textOf(1), "new");
  EXPECT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(TaskTexts, FailuresChangeNothing) {
  ASSERT_EQ(setText(1, "text"), DB_OK);
  EXPECT_EQ(setText(2, "of no task"), DB_CONSTRAINT);
  EXPECT_THAT(DB_LastFailure(), HasSubstr("no task has the UID 2"));
  EXPECT_EQ(setText(2, ""), DB_CONSTRAINT);
  EXPECT_EQ(DB_SetTaskText(1, nullptr, 1), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_SetTaskText(1, "", DB_MAX_TASK_TEXT + 1U), DB_LIMIT);
  const char* bytes = nullptr;
  unsigned int size = 0;
  EXPECT_EQ(DB_GetTaskText(1, nullptr, &size), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_GetTaskText(1, &bytes, nullptr), DB_BAD_ARGUMENT);
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(textOf(1), "text");
  EXPECT_EQ(setText(1, "while reading"), DB_TRANSACTION);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(textOf(1), "text");
  DB_Close();
  EXPECT_EQ(setText(1, "closed"), DB_NOT_OPEN);
  EXPECT_EQ(DB_GetTaskText(1, &bytes, &size), DB_NOT_OPEN);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(textOf(1), "text");
}

TEST_F(TaskTexts, AcceptLargestText) {
  const std::string largest(DB_MAX_TASK_TEXT, 'x');
  EXPECT_EQ(setText(1, largest), DB_OK);
  EXPECT_TRUE(textOf(1) == largest);
}

sqlite3* lastConnection = nullptr;
int rememberConnection(sqlite3* connection, const char**, const void*) {
  lastConnection = connection;
  return SQLITE_OK;
}

TEST_F(TaskTexts, FullStoreKeepsOldText) {
  ASSERT_EQ(setText(1, "old"), DB_OK);
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(rememberConnection));
  reopen();
  sqlite3_reset_auto_extension();
  ASSERT_EQ(sqlite3_exec(lastConnection, "PRAGMA max_page_count = 1", nullptr, nullptr, nullptr),
            SQLITE_OK);
  EXPECT_EQ(setText(1, std::string(100'000, 'x')), DB_FULL);
  EXPECT_EQ(textOf(1), "old");
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(setText(1, std::string(100'000, 'x')), DB_FULL);
  ASSERT_EQ(DB_EndWrite(0), DB_OK);
  EXPECT_EQ(textOf(1), "old");
}

TEST_F(TaskTexts, AddNoEntryToJournal) {
  ulo::ChangeJournal journal(directory_.path().string());
  std::int64_t before = 0;
  ASSERT_TRUE(journal.lastEntry(before));
  ASSERT_EQ(setText(1, "text"), DB_OK);
  std::int64_t after = 0;
  ASSERT_TRUE(journal.lastEntry(after));
  EXPECT_EQ(after, before);
  reopen();
  EXPECT_EQ(textOf(1), "text");
  // Opening did not begin a new journal.
  ASSERT_TRUE(journal.lastEntry(after));
  EXPECT_EQ(after, before);
}

TEST_F(TaskTexts, StayIfJournalBeginsAnew) {
  ASSERT_EQ(setText(1, "text"), DB_OK);
  DB_Close();
  sql("DROP TRIGGER ulo_after_UPDATE");
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_THAT(sql("SELECT count(*) FROM sqlite_schema WHERE name = 'ulo_after_UPDATE'"),
              ElementsAre("1"));
  EXPECT_EQ(textOf(1), "text");
  ASSERT_EQ(DB_Exec(removeFirst), DB_OK);
  EXPECT_EQ(textOf(1), std::nullopt);
}

TEST_F(TaskTexts, GoWithTaskTable) {
  ASSERT_EQ(setText(1, "text"), DB_OK);
  DB_Close();
  sql("DROP TABLE task_table_task");
  ASSERT_EQ(DB_Open(1), DB_OK);
  ASSERT_EQ(DB_Exec("%s", taskTableStatements[0].c_str()), DB_OK);
  sql("INSERT INTO task_table_task (UID) VALUES (1)");
  EXPECT_EQ(textOf(1), std::nullopt);
}

TEST_F(TaskTexts, AreHiddenFromTextsOfLanguages) {
  ASSERT_EQ(setText(1, "text"), DB_OK);
  EXPECT_EQ(DB_Exec("sml:cursor $c = open_cursor('ulo_texts');"), DB_UNKNOWN_NAME);
  EXPECT_THAT(rowsOf("sml:declare schema s (there bool);declare buffer schema s;"
                     "buffer_put(there, check_table_exist('ulo_texts'));",
                     1),
              ElementsAre("0"));
}

// Another process adds tasks with texts until it is killed. Each task must have its text.
TEST_F(TaskTexts, OfKilledProgramAreComplete) {
  for (int round = 0; round < 10; ++round) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    DB_Close();
    const pid_t writer = fork();
    if (writer == 0) {
      close(ends[0]);
      bool good = DB_Open(1) == DB_OK;
      while (good) {
        good = DB_BeginWrite() == DB_OK &&
               DB_Exec("insert into task_table_task (priority) values (1) returnuid") == DB_OK &&
               setText(DB_GetTag(), "text of " + std::to_string(DB_GetTag())) == DB_OK &&
               DB_EndWrite(1) == DB_OK && write(ends[1], ".", 1) == 1;
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
    const std::vector<std::string> uids = rowsOf(uidsOfTasks, 1);
    EXPECT_GT(uids.size(), 5U);
    for (const std::string& uid : uids) {
      if (uid != "1") {
        EXPECT_EQ(textOf(std::stoi(uid)), "text of " + uid);
      }
    }
  }
}

// The file as a whole.

class FileWithTexts : public TaskTexts {
protected:
  static constexpr int tasks = 60;

  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
    DB_Close();
    fs::copy_file(file(), sample());
    ASSERT_EQ(DB_Open(1), DB_OK);
    ASSERT_EQ(DB_BeginWrite(), DB_OK);
    for (int uid = 1; uid <= tasks; ++uid) {
      ASSERT_EQ(DB_Exec("insert into task_table_task (note, status) values ('%s', 1)",
                        std::string(200, 'n').c_str()),
                DB_OK);
      ASSERT_EQ(setText(uid, textFor(uid)), DB_OK);
    }
    ASSERT_EQ(DB_EndWrite(1), DB_OK);
    DB_Close();
  }
  void TearDown() override {}

  // Every tenth text fills several pages.
  static std::string textFor(int uid) {
    return std::to_string(uid) + std::string(uid % 10 == 0 ? 50'000 : 300, 't');
  }

  static void addLine(void* lines, const char* text) {
    static_cast<std::vector<std::string>*>(lines)->emplace_back(text);
  }
  int inspect() { return DB_Inspect(1, sample().c_str(), addLine, &lines_); }
  int rescue() { return DB_Rescue(1, sample().c_str(), addLine, &lines_); }
  [[nodiscard]] fs::path sample() const { return elsewhere_.path() / "sample.db"; }
  [[nodiscard]] fs::path saved() const { return elsewhere_.path() / "saved.db"; }

  // Overwrites the root page of a table.
  void corruptRoot(const std::string& table) const {
    const int page =
        std::stoi(sql("SELECT rootpage FROM sqlite_schema WHERE name = '" + table + "'").at(0));
    const int size = std::stoi(sql("PRAGMA page_size").at(0));
    std::fstream out(file(), std::ios::in | std::ios::out | std::ios::binary);
    out.seekp(static_cast<std::streamoff>(page - 1) * size);
    out << std::string(static_cast<std::size_t>(size), 'x');
  }
  void expectAllTexts() {
    ASSERT_EQ(DB_Open(1), DB_OK);
    for (int uid = 1; uid <= tasks; ++uid)
      EXPECT_TRUE(textOf(uid) == textFor(uid)) << uid;
    ASSERT_EQ(DB_Exec(removeFirst), DB_OK);
    EXPECT_EQ(textOf(1), std::nullopt);
    DB_Close();
  }

  const TemporaryDirectory elsewhere_;
  std::vector<std::string> lines_;
};

TEST_F(FileWithTexts, IsSound) {
  EXPECT_EQ(inspect(), DB_OK) << testing::PrintToString(lines_);
}

TEST_F(FileWithTexts, IsUnsoundWithoutTriggerOrTask) {
  sql("DROP TRIGGER ulo_texts_removal");
  EXPECT_EQ(inspect(), DB_ERROR);
  EXPECT_THAT(lines_, ElementsAre("the trigger ulo_texts_removal is missing"));
  sql("DELETE FROM task_table_task WHERE UID IN (3, 4)");
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(setText(1, "creates the trigger again"), DB_OK);
  DB_Close();
  lines_.clear();
  EXPECT_EQ(inspect(), DB_ERROR);
  EXPECT_THAT(lines_, ElementsAre("the table ulo_texts has texts of tasks that are not stored: 2"));
  lines_.clear();
  EXPECT_EQ(rescue(), DB_OK) << testing::PrintToString(lines_);
  lines_.clear();
  EXPECT_EQ(inspect(), DB_OK) << testing::PrintToString(lines_);
  EXPECT_THAT(sql("SELECT count(*) FROM ulo_texts"), ElementsAre(std::to_string(tasks - 2)));
}

TEST_F(FileWithTexts, IsUnsoundWithAnotherTable) {
  sql("DROP TABLE ulo_texts");
  sql("CREATE TABLE ulo_texts (uid, text)");
  EXPECT_EQ(inspect(), DB_ERROR);
  EXPECT_THAT(lines_, ElementsAre("the table ulo_texts is not the one of this program"));
}

TEST_F(FileWithTexts, SurvivesBackupAndRestore) {
  ASSERT_EQ(DB_Backup(1, saved().c_str(), 0, addLine, &lines_), DB_OK);
  sql("UPDATE ulo_texts SET text = x'00'");
  ASSERT_EQ(DB_Restore(1, saved().c_str(), sample().c_str(), addLine, &lines_), DB_OK)
      << testing::PrintToString(lines_);
  expectAllTexts();
}

TEST_F(FileWithTexts, RescueReadsTextsOfDamagedStore) {
  for (const char* table : {"task_index_due", "task_table_task", "ulo_texts", "ulo_changes"}) {
    fs::copy_file(file(), saved(), fs::copy_options::overwrite_existing);
    corruptRoot(table);
    lines_.clear();
    EXPECT_EQ(inspect(), DB_ERROR) << table;
    lines_.clear();
    ASSERT_EQ(rescue(), DB_OK) << table << testing::PrintToString(lines_);
    lines_.clear();
    EXPECT_EQ(inspect(), DB_OK) << table << testing::PrintToString(lines_);
    expectAllTexts();
    fs::copy_file(saved(), file(), fs::copy_options::overwrite_existing);
  }
}

}  // namespace
