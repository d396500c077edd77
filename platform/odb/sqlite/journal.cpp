#include "journal.h"

#include "base/failure.h"
#include "base/sql_name.h"
#include "handle.h"
#include "statement.h"

#include <algorithm>
#include <memory>

#include <unistd.h>

namespace ulo::odb {
namespace {

// The journal of version 0.1.
constexpr const char* separateJournal = "/changes.db";
constexpr const char* filesBeside[] = {"", "-wal", "-shm"};

void runAll(sqlite3* database, const std::vector<std::string>& statements) {
  for (const std::string& sql : statements)
    execute(database, sql);
}

// SQL condition for the journal's tables and triggers in SQLite's schema.
constexpr const char* isPartSql =
    "(name IN ('ulo_journal', 'ulo_changes') OR name LIKE 'ulo\\_after\\_%' ESCAPE '\\')";
constexpr int partsOfWholeJournal = 5;

// Returns the names of the journal's tables ("table") or triggers ("trigger").
std::vector<std::string> partsOfJournal(sqlite3* database, const std::string& type) {
  SqlStatement statement(database, "SELECT name FROM sqlite_schema WHERE type = '" + type +
                                       "' AND " + isPartSql);
  std::vector<std::string> names;
  while (statement.step())
    names.push_back(statement.text(0));
  return names;
}

// Returns a number that no journal has reached, not even the one whose parts exist: it would take
// decades to write that many entries.
std::int64_t unreachedEntry(sqlite3* database) {
  std::int64_t entry = numberOf(database, "SELECT unixepoch()");
  for (const char* sql :
       {"SELECT max(entry) + 1 FROM ulo_changes", "SELECT max(floor) + 1000000 FROM ulo_journal"}) {
    try {
      entry = std::max(entry, numberOf(database, sql));
    } catch (const Failure&) {
      // That part does not exist.
    }
  }
  return entry;
}

// Returns the number of the last entry in the separate file, or 0 if there is no file. If the file
// cannot be read, returns a number that it cannot have reached.
std::int64_t lastOfSeparateJournal(sqlite3* database, const std::string& path) {
  if (access(path.c_str(), F_OK) != 0)
    return 0;
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> file(opened, sqlite3_close);
  try {
    if (result == SQLITE_OK)
      return numberOf(opened, "SELECT seq FROM sqlite_sequence WHERE name = 'changes'");
  } catch (const Failure&) {
    // The file is damaged, or not a journal.
  }
  return unreachedEntry(database);
}

}  // namespace

bool isFollowed(std::string_view table) {
  return table == followedTable.name;
}

void createJournal(sqlite3* database, std::int64_t floor) {
  for (const char* type : {"trigger", "table"})
    for (const std::string& name : partsOfJournal(database, type))
      SqlStatement(database, std::string("DROP ") + type + ' ' + quoteName(name)).run();
  runAll(database, createJournalSql(followedTable, floor));
}

void beginJournal(sqlite3* database) {
  createJournal(database, partsOfJournal(database, "table").empty() ? 0 : unreachedEntry(database));
}

void adoptJournal(sqlite3* database, const std::string& directory) {
  int parts = 0;
  {
    SqlStatement schema(database, std::string("SELECT sum(") + isPartSql +
                                      "), sum(type = 'table' AND name = '" + followedTable.name +
                                      "') FROM sqlite_schema");
    if (!schema.step() || schema.integer(1) == 0)
      return;
    parts = static_cast<int>(schema.integer(0));
  }
  if (parts == partsOfWholeJournal)
    return;
  const std::string path = directory + separateJournal;
  // Skips one number: a reader at the file's last entry may have missed a change that the file does
  // not have.
  const std::int64_t floor =
      parts > 0 ? unreachedEntry(database) : lastOfSeparateJournal(database, path) + 1;
  execute(database, "BEGIN IMMEDIATE");
  try {
    createJournal(database, floor);
    execute(database, "COMMIT");
  } catch (const Failure&) {
    if (sqlite3_get_autocommit(database) == 0)
      sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  for (const char* beside : filesBeside)
    unlink((path + beside).c_str());
}

void renewJournal(sqlite3* database, std::int64_t floor) {
  runAll(database, renewJournalSql(floor));
}

}  // namespace ulo::odb
