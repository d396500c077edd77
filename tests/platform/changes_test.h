// Fixtures for tests of the change journal and of its reporter.
#pragma once

#include "SVC_CT_ChangeReporter.h"
#include "journal_schema.h"
#include "temporary_directory.h"
#include "ulo/change_journal.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using ulo::Change;
using ulo::ChangeJournal;
using ulo::ChangeType;
using ulo::NetChanges;

inline constexpr ChangeType allTypes[] = {ChangeType::added, ChangeType::updated,
                                          ChangeType::removed};

inline Change changeOf(std::uint32_t uid, ChangeType type = ChangeType::added) {
  Change change;
  change.source = "engine";
  change.uid = uid;
  change.type = type;
  return change;
}

inline SVC_CT_ChangeRecord recordOf(unsigned uid, int type = SVC_CT_ADDED,
                                    const char* source = "engine") {
  SVC_CT_ChangeRecord record;
  record.source = source;
  record.uid = uid;
  record.changeType = type;
  return record;
}

// A database file with a journaled table, and a connection to it.
class FollowedFile {
public:
  explicit FollowedFile(const fs::path& file, std::int64_t floor = 0) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open(file.c_str(), &handle);
    handle_.reset(handle);
    if (result != SQLITE_OK)
      throw std::runtime_error("cannot open " + file.string());
    run("PRAGMA journal_mode = WAL");
    run("CREATE TABLE tasks (UID INTEGER PRIMARY KEY, x)");
    for (const std::string& sql : ulo::createJournalSql({"tasks", "UID", "engine"}, floor))
      run(sql);
  }
  void run(const std::string& sql) {
    if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_.get()));
  }
  // Appends journal entries without changing any task.
  void append(const std::vector<Change>& changes) {
    run("BEGIN");
    for (const Change& change : changes)
      run("INSERT INTO ulo_changes SELECT max((SELECT ifnull(max(entry), 0) FROM ulo_changes), "
          "floor) + 1, unixepoch(), " +
          std::to_string(change.uid) + ", " + std::to_string(static_cast<int>(change.type)) +
          " FROM ulo_journal");
    run("COMMIT");
  }

private:
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> handle_{nullptr, sqlite3_close};
};

inline std::vector<Change> entriesOf(ChangeJournal& journal, std::int64_t since = 0) {
  std::vector<Change> changes;
  EXPECT_TRUE(journal.entriesSince(since, changes));
  return changes;
}
// Returns the UIDs of all entries, as another reader sees them.
inline std::vector<std::uint32_t> uidsIn(const fs::path& directory) {
  ChangeJournal journal(directory);
  std::vector<std::uint32_t> uids;
  for (const Change& change : entriesOf(journal))
    uids.push_back(change.uid);
  return uids;
}
inline std::int64_t lastOf(ChangeJournal& journal) {
  std::int64_t entry = -1;
  EXPECT_TRUE(journal.lastEntry(entry));
  return entry;
}
inline NetChanges netOf(ChangeJournal& journal, std::int64_t since = 0,
                        const std::string& source = "engine") {
  NetChanges net;
  net.added = {1234};  // must be cleared
  EXPECT_TRUE(journal.changesSince(source, since, net));
  return net;
}

inline std::string generationOf(ChangeJournal& journal) {
  std::string generation = "none";
  EXPECT_TRUE(journal.generation(generation));
  return generation;
}

class Journal : public testing::Test {
protected:
  [[nodiscard]] fs::path path() const { return directory_.path() / "tasks.db"; }
  // The file is created at the first call.
  FollowedFile& file() {
    if (!file_)
      file_ = std::make_unique<FollowedFile>(path());
    return *file_;
  }
  void append(const std::vector<Change>& changes) { file().append(changes); }

  DataDirectory directory_;
  ChangeJournal journal_{directory_.path()};
  std::unique_ptr<FollowedFile> file_;
};
