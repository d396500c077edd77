// The version of a store's layout: a store written by a newer program is rejected and left
// unchanged.

#include "log_capture.h"
#include "one_task.h"
#include "store_layout.h"
#include "temporary_directory.h"
#include "ulo/change_journal.h"
#include "ulodb2_files.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <map>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

std::string bytesOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Another, perhaps newer program. It uses SQLite directly.
class OtherProgram {
public:
  explicit OtherProgram(const fs::path& file) {
    EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;
  ~OtherProgram() { sqlite3_close(database_); }

  void run(const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database_);
  }
  // Keeps the write-ahead log when closed, like a killed program.
  void keepLog() { sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); }

private:
  sqlite3* database_ = nullptr;
};

std::string versionSql(std::int64_t version) {
  return "PRAGMA user_version = " + std::to_string(version);
}

class Layout : public testing::Test {
protected:
  void SetUp() override {
    create();
    fs::copy_file(file(), sample());
    ASSERT_EQ(DB_Open(1), DB_OK);
    ASSERT_EQ(addTask(), DB_OK);
    DB_Close();
  }

  static void create() {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
    DB_Close();
  }

  [[nodiscard]] fs::path file() const { return directory_.path() / "tasks.db"; }
  [[nodiscard]] fs::path file(const std::string& suffix) const { return file().string() + suffix; }
  [[nodiscard]] fs::path sample() const { return elsewhere_.path() / "sample.db"; }

  // Sets the version in the file itself.
  void setVersion(std::int64_t version) { OtherProgram(file()).run(versionSql(version)); }
  // Sets the version only in the write-ahead log.
  void setVersionInLog(std::int64_t version) {
    OtherProgram newer(file());
    newer.run(versionSql(version));
    newer.keepLog();
  }

  // Returns the names and contents of the files in the data directory. The contents of the log's
  // index, which every reader may change, are omitted.
  [[nodiscard]] std::map<std::string, std::string> contents() const {
    std::map<std::string, std::string> result;
    for (const auto& entry : fs::directory_iterator(directory_.path())) {
      const std::string name = entry.path().filename().string();
      result[name] = name == "tasks.db-shm" ? "" : bytesOf(entry.path());
    }
    return result;
  }

  void expectRefused(int result = DB_IO) {
    const auto before = contents();
    const std::string reason = result == DB_IO ? "newer version" : "damaged";
    {
      LogCapture log;
      EXPECT_EQ(DB_Open(1), result);
      EXPECT_THAT(DB_LastFailure(), HasSubstr(reason));
      EXPECT_THAT(log.text(), HasSubstr(reason));
      EXPECT_EQ(DB_Exec("sml:"), DB_NOT_OPEN);
    }
    EXPECT_EQ(contents(), before);
  }
  static std::vector<std::string> storedUids() {
    EXPECT_EQ(DB_Open(1), DB_OK);
    auto rows = rowsOf(uidsOfTasks, 1);
    DB_Close();
    return rows;
  }

  // Maintenance operations. Each returns a result code.
  struct Lines {
    std::vector<std::string> texts;
    static void add(void* lines, const char* text) {
      static_cast<Lines*>(lines)->texts.emplace_back(text);
    }
  };
  int inspect() { return DB_Inspect(1, sample().c_str(), Lines::add, &lines_); }
  int backUp() { return DB_Backup(1, saved().c_str(), 0, Lines::add, &lines_); }
  int restore() { return DB_Restore(1, saved().c_str(), sample().c_str(), Lines::add, &lines_); }
  int rescue() { return DB_Rescue(1, sample().c_str(), Lines::add, &lines_); }
  [[nodiscard]] fs::path saved() const { return elsewhere_.path() / "saved.db"; }

  const DataDirectory directory_;
  const TemporaryDirectory elsewhere_;
  LogCapture log_;
  Lines lines_;
};

TEST_F(Layout, BackupDoesNotReplaceStoreItself) {
  const auto modified = fs::last_write_time(file());
  const auto overwrites = 1;
  EXPECT_EQ(DB_Backup(1, file().c_str(), overwrites, Lines::add, &lines_), DB_BAD_ARGUMENT);
  EXPECT_EQ(fs::last_write_time(file()), modified);
  EXPECT_THAT(storedUids(), ElementsAre("1"));
}

TEST_F(Layout, IsCurrentlyZero) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &database), SQLITE_OK);
  EXPECT_EQ(ulo::layoutOf(database), 0);
  sqlite3_close(database);
  EXPECT_EQ(ulo::knownLayout, 0);
}

TEST_F(Layout, OpensKnownVersion) {
  setVersion(ulo::knownLayout);
  EXPECT_THAT(storedUids(), ElementsAre("1"));
}

TEST_F(Layout, RefusesNextVersion) {
  setVersion(ulo::knownLayout + 1);
  expectRefused();
  setVersion(ulo::highestLayout);
  expectRefused();
}

TEST_F(Layout, TreatsLargerNumberAsDamage) {
  setVersion(ulo::highestLayout + 1);
  expectRefused(DB_CORRUPT);
  setVersion(-1);
  expectRefused(DB_CORRUPT);
}

TEST_F(Layout, OpensAgainWhenVersionIsKnown) {
  setVersion(ulo::knownLayout + 1);
  expectRefused();
  setVersion(ulo::knownLayout);
  EXPECT_THAT(storedUids(), ElementsAre("1"));
}

TEST_F(Layout, RefusesVersionInLog) {
  setVersionInLog(ulo::knownLayout + 1);
  ASSERT_TRUE(fs::exists(file("-shm")));
  expectRefused();
}

// A copy of a store usually lacks the index of the log.
TEST_F(Layout, RefusesVersionInLogWithoutIndex) {
  setVersionInLog(ulo::knownLayout + 1);
  fs::remove(file("-shm"));
  expectRefused();
}

TEST_F(Layout, ReadsLogOfKnownVersion) {
  for (const bool hasIndex : {true, false}) {
    {
      OtherProgram same(file());
      same.run("INSERT INTO task_table_task (priority) VALUES (2)");
      same.keepLog();
    }
    if (!hasIndex)
      fs::remove(file("-shm"));
    EXPECT_THAT(storedUids(), SizeIs(hasIndex ? 2 : 3));
    // The last program to close the store has copied the log.
    EXPECT_FALSE(fs::exists(file("-wal")));
  }
}

TEST_F(Layout, RefusesStoreThatNewerProgramHasOpen) {
  OtherProgram newer(file());
  newer.run(versionSql(ulo::knownLayout + 1));
  expectRefused();
  newer.run("INSERT INTO task_table_task (priority) VALUES (2)");
}

TEST_F(Layout, MaintenanceRefusesNewerStore) {
  for (const bool inLog : {false, true}) {
    setVersion(ulo::knownLayout);
    ASSERT_EQ(backUp(), DB_OK);
    fs::remove(saved());
    inLog ? setVersionInLog(ulo::knownLayout + 1) : setVersion(ulo::knownLayout + 1);
    const auto before = contents();
    for (const int result : {inspect(), backUp(), rescue()}) {
      EXPECT_EQ(result, DB_IO);
      EXPECT_THAT(lines_.texts, Contains(HasSubstr("newer version")));
    }
    EXPECT_EQ(contents(), before);
    EXPECT_FALSE(fs::exists(saved()));
  }
}

TEST_F(Layout, RestoreRefusesNewerFile) {
  fs::copy_file(file(), saved());
  OtherProgram(saved()).run(versionSql(ulo::knownLayout + 1));
  const auto before = contents();
  EXPECT_EQ(restore(), DB_IO);
  ASSERT_THAT(lines_.texts, SizeIs(1));
  EXPECT_THAT(lines_.texts.front(), HasSubstr(saved().string() + ": written by a newer version"));
  EXPECT_EQ(contents(), before);
}

// This is how users return to an older program. The newer store is kept, with its log.
TEST_F(Layout, RestoreReplacesNewerStoreAndKeepsItUnchanged) {
  ASSERT_EQ(backUp(), DB_OK);
  setVersionInLog(ulo::knownLayout + 1);
  const std::string store = bytesOf(file());
  const std::string log = bytesOf(file("-wal"));
  ASSERT_NE(log, "");
  ASSERT_EQ(restore(), DB_OK) << testing::PrintToString(lines_.texts);
  EXPECT_THAT(storedUids(), ElementsAre("1"));
  std::vector<std::string> kept;
  for (const auto& entry : fs::directory_iterator(directory_.path()))
    if (entry.path().filename().string().rfind("tasks.db.", 0) == 0)
      kept.push_back(bytesOf(entry.path()));
  EXPECT_THAT(kept, testing::UnorderedElementsAre(store, log));
}

TEST_F(Layout, RescueRepairsDamagedVersion) {
  setVersion(ulo::highestLayout + 1);
  ASSERT_EQ(rescue(), DB_OK) << testing::PrintToString(lines_.texts);
  EXPECT_THAT(storedUids(), ElementsAre("1"));
}

TEST_F(Layout, DoesNotUseJournalOfNewerStore) {
  ulo::ChangeJournal journal;
  std::vector<ulo::Change> changes;
  setVersion(ulo::knownLayout + 1);
  const auto before = contents();
  EXPECT_FALSE(journal.entriesSince(0, changes));
  EXPECT_FALSE(journal.prune(1));
  EXPECT_THAT(changes, IsEmpty());
  EXPECT_THAT(log_.text(), HasSubstr("newer version"));
  EXPECT_EQ(contents(), before);
  setVersion(ulo::knownLayout);
  EXPECT_TRUE(journal.entriesSince(0, changes));
  EXPECT_THAT(changes, SizeIs(1));
}

}  // namespace
