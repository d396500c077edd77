// db check, backup, restore and rescue.

#include "ulotask_runner.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include <sqlite3.h>
#include <sys/stat.h>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

constexpr std::size_t pageSize = 4096;

// Another program with the store open.
class OpenStore {
public:
  explicit OpenStore(const std::string& file) {
    EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
  }
  OpenStore(const OpenStore&) = delete;
  OpenStore& operator=(const OpenStore&) = delete;
  ~OpenStore() { sqlite3_close(database_); }

  [[nodiscard]] std::size_t number(const std::string& query) const {
    std::size_t result = 0;
    const auto take = [](void* place, int, char** values, char**) {
      *static_cast<std::size_t*>(place) = std::strtoul(values[0], nullptr, 10);
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(database_, query.c_str(), take, &result, nullptr), SQLITE_OK);
    return result;
  }

private:
  sqlite3* database_ = nullptr;
};

class Recovery : public UlotaskTest {
protected:
  std::string storeFile() { return path("data/tasks.db"); }

  // Stores `count` tasks with notes that spread them over many pages.
  void fill(int count) {
    std::string todos;
    for (int i = 1; i <= count; ++i) {
      const std::string number = std::to_string(i);
      todos += todo("SUMMARY:task " + number + "\r\nDESCRIPTION:" + std::string(500, 'n') + number +
                    "\r\nPRIORITY:" + std::to_string(i % 10) + "\r\nDUE:20270" +
                    std::to_string(1 + i % 9) +
                    "05T170000Z\r\nCATEGORIES:" + (i % 3 == 0 ? "garden" : "house") + "\r\n");
    }
    succeed({"import", "-"}, calendar(todos));
  }
  std::string list() { return succeed({"list", "--json"}).out; }

  // Files in the data directory whose names begin like this.
  std::vector<std::string> files(const std::string& prefix) {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(path("data"))) {
      if (entry.path().filename().string().rfind(prefix, 0) == 0)
        found.push_back(entry.path().string());
    }
    return found;
  }
  std::vector<std::string> keptFiles() { return files("tasks.db.2"); }

  void corrupt(std::size_t at, std::size_t size) {
    std::string bytes = readWhole(storeFile());
    ASSERT_LE(at + size, bytes.size());
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), size, '\x55');
    file("data/tasks.db", bytes);
  }

  // The page, counted from 0, with the task in the middle of 100.
  std::size_t middlePage() {
    const std::string note("n\0005\0000\000", 6);
    return readWhole(storeFile()).find(note) / pageSize;
  }
  // Overwrites the first page of a table or an index.
  void corruptRoot(const std::string& name) {
    std::size_t page = 0;
    {
      const OpenStore store(storeFile());
      page = store.number("SELECT rootpage FROM sqlite_schema WHERE name = '" + name + "'");
    }
    ASSERT_GT(page, 1U);
    corrupt((page - 1) * pageSize, pageSize);
  }
};

// Reports.

TEST_F(Recovery, CheckReportsDatabaseErrors) {
  fill(10);
  sql("PRAGMA writable_schema = 1; DELETE FROM sqlite_schema WHERE name = 'task_index_due'");
  sql("PRAGMA wal_checkpoint(TRUNCATE)");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_THAT(run.out, HasSubstr("never used"));
  EXPECT_THAT(run.out, HasSubstr("the index task_index_due is missing"));
  EXPECT_THAT(run.out, HasSubstr("database file: damaged\n"));
  EXPECT_THAT(run.err, HasSubstr("try \"ulotask db rescue\""));
}

TEST_F(Recovery, CheckReportsUidsAboveTheCounter) {
  fill(3);
  sql("UPDATE sqlite_sequence SET seq = 2 WHERE name = 'task_table_task'");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("the UID 3 of task_table_task is above the counter, which is 2"));
  succeed({"db", "rescue"});
  succeed({"db", "check"});
  EXPECT_EQ(add({"next"}), "4");
}

// Opening a store without a numbered row drops its tables and creates them again.
TEST_F(Recovery, StoreWithoutCountersKeepsItsTasks) {
  fill(3);
  const std::string before = list();
  sql("DELETE FROM sqlite_sequence");
  EXPECT_EQ(ulotask({"list"}).code, 10);
  EXPECT_EQ(ulotask({"db", "check"}).code, 11);
  EXPECT_THAT(succeed({"db", "rescue"}).out, HasSubstr("Rescued 3 tasks"));
  EXPECT_EQ(list(), before);
}

// Followers of the journal compare everything after the store was replaced.
TEST_F(Recovery, RestoreStartsNewGeneration) {
  fill(3);
  succeed({"db", "backup", path("saved.db")});
  add({"later"});
  const int last = succeed({"changes", "--net", "--json"}).object()["lastEntry"].toInt();
  succeed({"db", "restore", path("saved.db")});
  add({"other"});
  const Outcome run = ulotask({"changes", "--net", "--json", "--since", std::to_string(last - 1)});
  EXPECT_TRUE(run.object()["incomplete"].toBool());
  EXPECT_GT(run.object()["lastEntry"].toInt(), last);
}

TEST_F(Recovery, CheckReportsForeignTables) {
  fill(1);
  sql("CREATE TABLE other (x)");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("the table other is unknown"));
}

TEST_F(Recovery, CheckReportsAndMergesDoubledCategories) {
  add({"one", "--category", "garden"});
  sql("INSERT INTO task_table_category(name, flag) VALUES ('garden', 0), (NULL, 0)");
  sql("INSERT INTO task_table_task(priority, status, summary, alarm, due, end, categoryUid) "
      "SELECT 1, 1, 'two', 0, 0, 0, max(UID) - 1 FROM task_table_category");
  Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("categories: \"garden\" stored 2 times\n"));
  EXPECT_THAT(run.out, HasSubstr("category of tasks without one: stored 2 times\n"));
  EXPECT_THAT(run.err, HasSubstr("try \"ulotask db check --repair\""));

  run = ulotask({"db", "check", "--repair"});
  EXPECT_EQ(run.code, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("repaired: category \"garden\": 1 double removed, 1 task moved to "
                                 "the first\n"));
  EXPECT_THAT(run.out, HasSubstr("categories: sound\n"));
  EXPECT_EQ(succeed({"db", "check"}).out.find("repaired"), std::string::npos);
  EXPECT_THAT(uids({"list", "--category", "garden"}), testing::UnorderedElementsAre(1, 2));
}

TEST_F(Recovery, CheckReportsAndAddsMissingDefaultCategories) {
  add({"one", "--category", "meeting"});
  sql("DELETE FROM task_table_category WHERE name <> 'meeting'; "
      "UPDATE task_table_category SET flag = 0");
  Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("default categories: missing"));
  run = ulotask({"db", "check", "--repair"});
  EXPECT_EQ(run.code, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("repaired: default categories: 4 added\n"));
  EXPECT_THAT(succeed({"db", "check"}).out, HasSubstr("1 task and 5 categories"));
}

TEST_F(Recovery, CheckComparesTheJournalWithTheStore) {
  add({"one"});
  add({"two"});
  sql("UPDATE ulo_changes SET type = 3 WHERE uid = 2; UPDATE sqlite_sequence SET seq = 7 WHERE "
      "name = 'task_table_task'; UPDATE ulo_changes SET uid = 7 WHERE uid = 1");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_THAT(run.out, HasSubstr("change journal: 1 task of its last entries not in the store, 1 "
                                 "task removed by its last entries still in the store\n"));
}

TEST_F(Recovery, CheckReportsFilesReadableByOthers) {
  add({"one"});
  EXPECT_THAT(succeed({"db", "check"}).out, Not(HasSubstr("other users")));
  chmod(storeFile().c_str(), 0644);
  chmod(path("data").c_str(), 0777);
  const std::string out = succeed({"db", "check"}).out;
  EXPECT_THAT(out, HasSubstr("note: " + storeFile() + " is readable by other users (mode 0644)\n"));
  EXPECT_THAT(out,
              HasSubstr("note: " + path("data") + " is writable by other users (mode 0777)\n"));
}

constexpr int damagesOfEach = 40;

class Damage : public Recovery, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Seeds, Damage, testing::Range(1, 6));

// Flips one bit in each of 200 copies of a store of 100 tasks. Either the damage is reported, or
// the tasks are unchanged. Only data without redundancy (a text, a status or a time of change) may
// differ in one task.
TEST_P(Damage, IsReportedOrHarmless) {
  fill(100);
  const std::string sound = readWhole(storeFile());
  const QJsonArray before = succeed({"list", "--json"}).array();
  std::mt19937 random(static_cast<unsigned int>(GetParam()));
  int reported = 0;
  int harmless = 0;
  int once = 0;
  for (int i = 0; i < damagesOfEach; ++i) {
    std::string damaged = sound;
    const std::size_t at = random() % damaged.size();
    damaged[at] = static_cast<char>(damaged[at] ^ 1 << random() % 8);
    for (const std::string& old : files("tasks.db"))
      fs::remove(old);
    file("data/tasks.db", damaged);
    if (const Outcome run = ulotask({"db", "check"}); run.code != 0) {
      EXPECT_THAT(run.code, testing::AnyOf(10, 11)) << at << run.err;
      ++reported;
      continue;
    }
    const Outcome listed = ulotask({"list", "--json"});
    ASSERT_EQ(listed.code, 0) << at;
    const QJsonArray after = listed.array();
    if (after == before) {
      ++harmless;
      continue;
    }
    ASSERT_EQ(after.size(), before.size()) << "byte " << at;
    int different = 0;
    for (int task = 0; task < after.size(); ++task) {
      QJsonObject a = before[task].toObject();
      QJsonObject b = after[task].toObject();
      different += a == b ? 0 : 1;
      for (const char* field :
           {"note", "summary", "uuid", "status", "statusWord", "completed", "revision"}) {
        a.remove(field);
        b.remove(field);
      }
      EXPECT_EQ(a, b) << "byte " << at;
    }
    EXPECT_EQ(different, 1) << "byte " << at;
    ++once;
  }
  RecordProperty("reported", reported);
  RecordProperty("harmless", harmless);
  RecordProperty("once", once);
  std::printf("reported %d, harmless %d, stored once %d\n", reported, harmless, once);
  EXPECT_GT(reported, 0);
}

// Backup and restore.

TEST_F(Recovery, RestoreBringsBackBackup) {
  fill(20);
  const std::string backup = path("saved.db");
  EXPECT_EQ(succeed({"db", "backup", backup}).out,
            "Saved the store in " + backup + " (20 tasks and 7 categories)\n");
  struct stat status {};
  ASSERT_EQ(stat(backup.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  const std::string before = list();
  succeed({"rm", "1"});
  add({"later"});
  const Outcome run = succeed({"db", "restore", backup});
  ASSERT_EQ(keptFiles().size(), 1U);
  EXPECT_EQ(run.out, "the old file is kept as " + keptFiles()[0] + "\nRestored the store from " +
                         backup + " (20 tasks and 7 categories)\n");
  EXPECT_EQ(list(), before);
  succeed({"db", "check"});
  // The replaced file is a store, too.
  succeed({"db", "restore", keptFiles()[0]});
  EXPECT_THAT(list(), HasSubstr("later"));
}

TEST_F(Recovery, BackupIncludesChangesOfOpenProgram) {
  add({"one"});
  QProcess process;
  prepare(process);
  Running follower(process, {"changes", "--follow"});
  follower.line();
  add({"two"});
  succeed({"db", "backup", path("saved.db")});
  environment_["ULO_DATA_DIR"] = path("other");
  succeed({"db", "restore", path("saved.db")});
  EXPECT_THAT(uids({"list"}), testing::SizeIs(2));
}

TEST_F(Recovery, BackupReplacesFileOnlyWithForce) {
  add({"one"});
  const std::string backup = file("saved.db", "precious");
  const Outcome run = ulotask({"db", "backup", backup});
  EXPECT_EQ(run.code, 18);
  EXPECT_THAT(run.err, HasSubstr("exists already; --force replaces it"));
  EXPECT_EQ(readWhole(backup), "precious");
  succeed({"db", "backup", "--force", backup});
  EXPECT_THAT(readWhole(backup), testing::StartsWith("SQLite format 3"));
}

TEST_F(Recovery, FailedBackupLeavesNoFile) {
  fill(100);
  EXPECT_EQ(ulotask({"db", "backup", storeFile()}).code, 12);
  EXPECT_EQ(ulotask({"db", "backup", "--force", path("data/more.db")}).code, 12);
  const Outcome missing = ulotask({"db", "backup", path("none/saved.db")});
  EXPECT_EQ(missing.code, 12);
  EXPECT_EQ(missing.err, "ulotask: " + path("none") + ": No such file or directory\n");
  fs::create_directory(path("out"));
  environment_["OUT"] = path("out");
  const Outcome run =
      shell("trap '' XFSZ; ulimit -f 64; ULO_LOG=none \"$ULOTASK\" db backup \"$OUT/saved.db\"");
  EXPECT_EQ(run.code, 12) << run.err;
  EXPECT_TRUE(fs::is_empty(path("out")));
  succeed({"db", "check"});
}

TEST_F(Recovery, RestoreRejectsStoreInUse) {
  add({"one"});
  succeed({"db", "backup", path("saved.db")});
  add({"two"});
  const auto other = std::make_unique<OpenStore>(storeFile());
  EXPECT_EQ(other->number("SELECT count(*) FROM task_table_task"), 2U);
  const Outcome run = ulotask({"db", "restore", path("saved.db")});
  EXPECT_EQ(run.code, 17) << run.out << run.err;
  EXPECT_THAT(run.err, HasSubstr("another program has the store in " + path("data") + " open"));
  EXPECT_THAT(keptFiles(), IsEmpty());
  EXPECT_EQ(ulotask({"db", "rescue"}).code, 0);  // nothing to do
}

TEST_F(Recovery, RestoreRejectsUnsoundStore) {
  fill(100);
  const std::string before = list();
  const Outcome missing = ulotask({"db", "restore", path("none.db")});
  EXPECT_EQ(missing.code, 4);
  EXPECT_EQ(missing.err, "ulotask: " + path("none.db") + ": No such file or directory\n");
  const Outcome unnamed = ulotask({"db", "restore", ""});
  EXPECT_EQ(unnamed.code, 2);
  EXPECT_THAT(unnamed.out + unnamed.err, testing::EndsWith("the name of the file is empty\n"));
  EXPECT_EQ(ulotask({"db", "restore", storeFile()}).code, 2);
  for (const std::string& bytes : {std::string(), std::string(100, 'x'), std::string(8192, 'x')}) {
    const Outcome run = ulotask({"db", "restore", file("bad.db", bytes)});
    EXPECT_EQ(run.code, 19) << bytes.size() << run.err;
    EXPECT_EQ(run.err, "ulotask: " + path("bad.db") + " is not a sound store\n");
  }
  sql("PRAGMA encoding = 'UTF-16'; CREATE TABLE other (x)", "../foreign.db");
  EXPECT_EQ(ulotask({"db", "restore", path("foreign.db")}).code, 19);
  const std::string bytes = readWhole(storeFile());
  EXPECT_EQ(ulotask({"db", "restore", file("cut.db", bytes.substr(0, bytes.size() / 2))}).code, 19);
  EXPECT_EQ(list(), before);
  EXPECT_THAT(keptFiles(), IsEmpty());
  EXPECT_THAT(files("tasks.db.new"), IsEmpty());
}

// Rescue.

TEST_F(Recovery, RescueLeavesSoundStoreUnchanged) {
  fill(2);
  EXPECT_EQ(succeed({"db", "rescue"}).out,
            "The database file is sound: there is nothing to rescue.\n");
  EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(Recovery, RescueRebuildsADamagedIndex) {
  fill(100);
  const std::string before = list();
  corruptRoot("task_index_due");
  EXPECT_EQ(ulotask({"db", "check"}).code, 11);
  const Outcome run = succeed({"db", "rescue"});
  EXPECT_THAT(run.out, testing::EndsWith("Rescued 100 tasks and 7 categories\n"));
  EXPECT_EQ(list(), before);
  succeed({"db", "check"});
  ASSERT_EQ(keptFiles().size(), 1U);
}

TEST_F(Recovery, RescueReadsAroundTheRootOfTheTable) {
  fill(100);
  succeed({"rm", "100"});
  const std::string before = list();
  corruptRoot("task_table_task");
  EXPECT_NE(ulotask({"db", "check"}).code, 0);
  EXPECT_THAT(succeed({"db", "rescue"}).out, HasSubstr("Rescued 99 tasks and 7 categories\n"));
  EXPECT_EQ(list(), before);
  succeed({"db", "check"});
  EXPECT_EQ(add({"next"}), "101");
}

// SQLite would take a leading U+FFFE for a byte order mark, so such texts are stored as blobs.
TEST_F(Recovery, RescueKeepsTextsStoredAsBlobs) {
  fill(100);
  succeed({"edit", "50", "--summary", "\xEF\xBF\xBEmarked"});
  ASSERT_EQ(OpenStore(storeFile())
                .number("SELECT count(*) FROM task_table_task "
                        "WHERE typeof(summary) = 'blob'"),
            1);
  const std::string before = list();
  corruptRoot("task_table_task");
  succeed({"db", "rescue"});
  EXPECT_EQ(list(), before);
}

TEST_F(Recovery, RescueReadsAroundDamagedRows) {
  fill(100);
  const QJsonArray before = succeed({"list", "--json"}).array();
  corrupt(middlePage() * pageSize, pageSize);
  EXPECT_EQ(ulotask({"db", "check"}).code, 11);
  succeed({"db", "rescue"});
  const QJsonArray after = succeed({"list", "--json"}).array();
  EXPECT_LT(after.size(), before.size());
  EXPECT_GT(after.size(), before.size() - 10);
  for (const QJsonValue& task : after)
    EXPECT_TRUE(before.contains(task));
  succeed({"db", "check"});
  EXPECT_EQ(add({"next"}), "101");
}

TEST_F(Recovery, RescueReadsAStoreWithoutItsFirstPage) {
  fill(100);
  const std::string before = list();
  corrupt(0, pageSize);
  const Outcome closed = ulotask({"list"});
  EXPECT_EQ(closed.code, 10);
  EXPECT_THAT(closed.err, HasSubstr("try \"ulotask db rescue\""));
  EXPECT_THAT(succeed({"db", "rescue"}).out, HasSubstr("Rescued 100 tasks"));
  EXPECT_EQ(list(), before);
  succeed({"db", "check"});
}

TEST_F(Recovery, RescueRejectsEmptyFile) {
  succeed({"list"});
  file("data/tasks.db", std::string(8192, 'x'));
  const Outcome run = ulotask({"db", "rescue"});
  EXPECT_EQ(run.code, 19) << run.err;
  EXPECT_THAT(run.err, HasSubstr("nothing can be read"));
  EXPECT_EQ(readWhole(storeFile()), std::string(8192, 'x'));
}

// Lost stores.

TEST_F(Recovery, LostStoreIsNotReplacedByEmptyOne) {
  add({"one"});
  succeed({"db", "backup", path("saved.db")});
  file("data/tasks.db-wal", std::string(8192, 'x'));
  for (const bool isThere : {true, false}) {
    if (isThere)
      file("data/tasks.db", "");
    else
      fs::remove(storeFile());
    for (const Arguments& arguments :
         {Arguments{"list"}, Arguments{"add", "x"}, Arguments{"db", "check"}}) {
      const Outcome run = ulotask(arguments);
      EXPECT_EQ(run.code, 10) << testing::PrintToString(arguments);
      EXPECT_THAT(run.err, HasSubstr(isThere ? "is empty, but tasks.db-wal" : "is missing, but"));
      EXPECT_THAT(run.err, HasSubstr("ulotask db restore FILE"));
    }
    EXPECT_EQ(fs::exists(storeFile()), isThere);
    EXPECT_EQ(readWhole(path("data/tasks.db-wal")).size(), 8192U);
  }
  succeed({"db", "restore", path("saved.db")});
  EXPECT_THAT(uids({"list"}), testing::ElementsAre(1));
}

TEST_F(Recovery, TruncatedStoreIsNotReplacedByEmptyOne) {
  fill(10);
  const std::string bytes = readWhole(storeFile());
  for (const std::size_t size : {1UL, 50UL, 100UL, 511UL, 512UL, 4095UL, 4096UL, 8192UL}) {
    file("data/tasks.db", bytes.substr(0, size));
    EXPECT_NE(ulotask({"list"}).code, 0) << size;
    EXPECT_EQ(readWhole(storeFile()).size(), size);
  }
}

// Nothing else remains after the last program has closed the store.
TEST_F(Recovery, EmptiedStoreIsNotReplacedByEmptyOne) {
  fill(3);
  for (const bool isThere : {true, false}) {
    if (isThere)
      file("data/tasks.db", "");
    else
      fs::remove(storeFile());
    const Outcome run = ulotask({"list"});
    EXPECT_EQ(run.code, 10);
    EXPECT_THAT(run.err, HasSubstr("but tasks.reserve of a store"));
    EXPECT_EQ(fs::exists(storeFile()), isThere);
  }
  fs::remove(path("data/tasks.reserve"));
  succeed({"list"});
}

TEST_F(Recovery, StoreThatWasNeverFilledIsNotLost) {
  fs::create_directory(path("data"));
  file("data/tasks.db", "");
  succeed({"list"});
  succeed({"db", "check"});
}

// Stores of newer versions.

TEST_F(Recovery, RefusesStoreOfNewerVersion) {
  add({"one"});
  succeed({"db", "backup", path("saved.db")});
  sql("PRAGMA user_version = 1");
  const std::string before = readWhole(storeFile());
  const std::string reason = storeFile() + ": written by a newer version of this program (layout "
                                           "version 1; this version knows 0)";
  for (const Arguments& arguments :
       {Arguments{"list"}, Arguments{"add", "x"}, Arguments{"db", "check"},
        Arguments{"db", "backup", path("newer.db")}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 10) << testing::PrintToString(arguments);
    EXPECT_THAT(run.err, HasSubstr("can't be opened: " + reason));
    EXPECT_THAT(run.err, Not(HasSubstr("rescue")));
  }
  const Outcome rescue = ulotask({"db", "rescue"});
  EXPECT_EQ(rescue.code, 1);
  EXPECT_THAT(rescue.err, HasSubstr(reason));
  EXPECT_EQ(readWhole(storeFile()), before);
  EXPECT_THAT(files("tasks.db"), testing::ElementsAre(storeFile()));
  EXPECT_FALSE(fs::exists(path("newer.db")));
  file("newer.db", before);
  succeed({"db", "restore", path("saved.db")});
  const Outcome restore = ulotask({"db", "restore", path("newer.db")});
  EXPECT_EQ(restore.code, 4);
  EXPECT_THAT(restore.err, HasSubstr(path("newer.db") + ": written by a newer version"));
  EXPECT_THAT(uids({"list"}), testing::ElementsAre(1));
}

TEST_F(Recovery, RescueReadsTheWriteAheadLog) {
  fill(100);
  QProcess process;
  prepare(process);
  Running follower(process, {"changes", "--follow"});
  follower.line();
  for (int i = 0; i < 3; ++i)
    add({"in the log"});
  const std::string log = readWhole(path("data/tasks.db-wal"));
  const std::string head = readWhole(storeFile());
  follower.endBy(SIGINT);
  ASSERT_FALSE(log.empty());
  for (const std::string& old : files("tasks.db"))
    fs::remove(old);
  file("data/tasks.db", head);
  corrupt(middlePage() * pageSize, pageSize);
  file("data/tasks.db-wal", log);
  EXPECT_NE(ulotask({"db", "check"}).code, 0);
  succeed({"db", "rescue"});
  EXPECT_THAT(uids({"list"}), testing::IsSupersetOf({1, 99, 101, 102, 103}));
  succeed({"db", "check"});
}

}  // namespace
