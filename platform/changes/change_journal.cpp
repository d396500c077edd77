#include "ulo/change_journal.h"

#include "module_log.h"
#include "store_layout.h"
#include "ulo/data_directory.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <utility>

#include <unistd.h>

namespace ulo {
namespace {

// How long to wait for another process.
constexpr int busyTimeoutMs = 10000;

constexpr const char* existsSql = "SELECT 1 FROM sqlite_schema WHERE name = 'ulo_journal'";
constexpr const char* generationSql = "SELECT generation FROM ulo_journal";
constexpr const char* sourceSql = "SELECT source FROM ulo_journal";
constexpr const char* floorSql = "SELECT floor FROM ulo_journal";
constexpr const char* highestSql = "SELECT max(entry) FROM ulo_changes";
constexpr const char* entriesSql =
    "SELECT entry, time, source, uid, type FROM ulo_changes, ulo_journal WHERE entry > ? "
    "ORDER BY entry";
constexpr const char* fatesSql = "SELECT uid, type FROM ulo_changes WHERE entry > ? ORDER BY entry";
constexpr const char* raiseFloorSql = "UPDATE ulo_journal SET floor = max(floor, ?)";
constexpr const char* pruneSql = "DELETE FROM ulo_changes WHERE entry <= ?";

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};

// Resets a statement at the end of a scope.
using Reset = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_reset)>;

}  // namespace

// A connection to an existing file, which may be empty. Failures are thrown.
class ChangeJournal::Database {
public:
  explicit Database(const std::string& path) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    check(result);
    sqlite3_busy_timeout(handle, busyTimeoutMs);
    if (layoutOf(handle) > knownLayout)
      throw std::runtime_error("a newer version of this program has written the store");
  }

  [[nodiscard]] bool hasJournal() { return number(existsSql) != 0; }
  // Returns the number of the last change ever recorded.
  [[nodiscard]] std::int64_t lastEntry() { return std::max(number(highestSql), number(floorSql)); }

  // Runs a statement and calls `row` for each result row. The prepared statement is kept.
  template <typename Row>
  void run(const char* sql, std::initializer_list<std::int64_t> values, Row row) {
    const Reset prepared(statement(sql), sqlite3_reset);
    int parameter = 0;
    for (const std::int64_t value : values)
      check(sqlite3_bind_int64(prepared.get(), ++parameter, value));
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(prepared.get())) == SQLITE_ROW)
      row(prepared.get());
    check(result == SQLITE_DONE ? SQLITE_OK : result);
  }
  void run(const char* sql, std::initializer_list<std::int64_t> values = {}) {
    run(sql, values, [](sqlite3_stmt*) {});
  }
  // Returns the integer that a statement returns, or 0 if it returns no row.
  std::int64_t number(const char* sql) {
    std::int64_t result = 0;
    run(sql, {}, [&](sqlite3_stmt* row) { result = sqlite3_column_int64(row, 0); });
    return result;
  }
  // Returns the text that a statement returns, or an empty string if it returns no row.
  std::string text(const char* sql) {
    std::string result;
    run(sql, {}, [&](sqlite3_stmt* row) { result = columnText(row, 0); });
    return result;
  }
  static std::string columnText(sqlite3_stmt* row, int column) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return {bytes == nullptr ? "" : bytes,
            static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
  }

  // Runs `work` in a transaction: all or nothing, and on a single state of the file.
  template <typename Work> void inTransaction(const char* begin, Work work) {
    run(begin);
    try {
      work();
      run("COMMIT");
    } catch (...) {
      if (sqlite3_get_autocommit(handle_.get()) == 0)
        sqlite3_exec(handle_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
      throw;
    }
  }

private:
  void check(int result) const {
    if (result != SQLITE_OK)
      throw std::runtime_error(handle_ ? sqlite3_errmsg(handle_.get()) : "no memory");
  }
  sqlite3_stmt* statement(const char* sql) {
    auto& slot = statements_[sql];
    if (!slot) {
      sqlite3_stmt* prepared = nullptr;
      check(sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared,
                               nullptr));
      slot.reset(prepared);
    }
    return slot.get();
  }
  std::unique_ptr<sqlite3, CloseDatabase> handle_;
  std::map<const char*, std::unique_ptr<sqlite3_stmt, Finalize>> statements_;
};

ChangeJournal::ChangeJournal(std::string directory) noexcept : directory_(std::move(directory)) {}

ChangeJournal::~ChangeJournal() = default;

// Returns the file's path.
std::string ChangeJournal::path() const {
  const std::string directory = directory_.empty() ? dataDirectory() : directory_;
  if (directory.empty())
    throw std::runtime_error(std::string("there is no data directory: ") + std::strerror(errno));
  return directory + "/" + fileName;
}

// Returns null as long as there is no journal.
ChangeJournal::Database* ChangeJournal::existing() {
  if (database_)
    return database_.get();
  if (const std::string file = path(); access(file.c_str(), F_OK) == 0) {
    auto database = std::make_unique<Database>(file);
    if (database->hasJournal())
      database_ = std::move(database);
  }
  return database_.get();
}

template <typename Work> bool ChangeJournal::attempt(const char* what, Work work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    ULO_LOG_ERROR("The change journal can't be %s: %s", what, error.what());
    return false;
  }
}

// Calls `work` with a snapshot of the database, if there is a journal.
template <typename Work> bool ChangeJournal::read(Work work) {
  return attempt("read", [&] {
    if (Database* const database = existing())
      database->inTransaction("BEGIN", [&] { work(*database); });
  });
}

bool ChangeJournal::entriesSince(std::int64_t entry, std::vector<Change>& changes) {
  std::vector<Change> found;
  const bool done = read([&](Database& database) {
    database.run(entriesSql, {entry}, [&](sqlite3_stmt* row) {
      Change change;
      change.entry = sqlite3_column_int64(row, 0);
      change.time = sqlite3_column_int64(row, 1);
      change.source = Database::columnText(row, 2);
      change.uid = static_cast<std::uint32_t>(sqlite3_column_int64(row, 3));
      change.type = static_cast<ChangeType>(sqlite3_column_int(row, 4));
      found.push_back(std::move(change));
    });
  });
  if (done)
    changes.insert(changes.end(), std::make_move_iterator(found.begin()),
                   std::make_move_iterator(found.end()));
  return done;
}

bool ChangeJournal::lastEntry(std::int64_t& entry) {
  entry = 0;
  return read([&](Database& database) { entry = database.lastEntry(); });
}

bool ChangeJournal::generation(std::string& generation) {
  generation.clear();
  return read([&](Database& database) { generation = database.text(generationSql); });
}

bool ChangeJournal::changesSince(const std::string& source, std::int64_t entry, NetChanges& net,
                                 const std::string& generation) {
  struct Fate {
    std::uint32_t uid;
    ChangeType first;
    ChangeType last;
  };
  std::vector<Fate> fates;
  std::map<std::uint32_t, std::size_t> fateOf;
  std::int64_t floor = 0;

  net = {};
  const bool done = read([&](Database& database) {
    net.lastEntry = database.lastEntry();
    net.generation = database.text(generationSql);
    floor = database.number(floorSql);
    if (database.text(sourceSql) != source)
      return;
    database.run(fatesSql, {entry}, [&](sqlite3_stmt* row) {
      const auto uid = static_cast<std::uint32_t>(sqlite3_column_int64(row, 0));
      const auto type = static_cast<ChangeType>(sqlite3_column_int(row, 1));
      const auto [found, isNew] = fateOf.emplace(uid, fates.size());
      if (isNew)
        fates.push_back({uid, type, type});
      else
        fates[found->second].last = type;
    });
  });
  if (!done)
    return false;

  net.incomplete = std::max<std::int64_t>(entry, 0) < floor || entry > net.lastEntry ||
                   (!generation.empty() && generation != net.generation);
  // Only whether a UID existed before and whether it exists now matters.
  for (const Fate& fate : fates) {
    const bool existed = fate.first != ChangeType::added;
    const bool exists = fate.last != ChangeType::removed;
    if (exists)
      (existed ? net.updated : net.added).push_back(fate.uid);
    else if (existed)
      net.removed.push_back(fate.uid);
  }
  return true;
}

bool ChangeJournal::prune(std::int64_t entry) {
  return attempt("pruned", [&] {
    Database* const database = existing();
    if (database == nullptr)
      return;
    database->inTransaction("BEGIN IMMEDIATE", [&] {
      const std::int64_t last = std::min(entry, database->lastEntry());
      database->run(raiseFloorSql, {last});
      database->run(pruneSql, {last});
    });
  });
}

}  // namespace ulo
