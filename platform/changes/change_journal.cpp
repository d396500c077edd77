#include "change_journal.h"

#include "module_log.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <map>
#include <thread>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace ulo {
namespace {

constexpr const char* journalFile = "changes.db";
// How long to wait for another process.
constexpr int busyTimeoutMs = 10000;
constexpr std::chrono::milliseconds busyPoll{5};

// Numbers go on after pruning, and so does the mark of what was pruned: both live in
// sqlite_sequence and one row of `pruned`. With synchronous NORMAL a change survives the
// process's death without a disk flush of its own; only a power cut can lose the last ones.
constexpr const char* setUp =
    "PRAGMA synchronous = NORMAL;"
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS changes (entry INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER,"
    " source TEXT, uid INTEGER, type INTEGER);"
    "CREATE TABLE IF NOT EXISTS pruned (id INTEGER PRIMARY KEY CHECK (id = 1), entry INTEGER);"
    "INSERT OR IGNORE INTO pruned VALUES (1, 0);"
    "COMMIT";

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};

}  // namespace

class ChangeJournal::Database {
public:
  explicit Database(sqlite3* handle) : handle_(handle) {}

  // A prepared statement, kept for the next time; null when it can't be prepared.
  sqlite3_stmt* statement(const char* sql) {
    auto& slot = statements_[sql];
    if (!slot) {
      sqlite3_stmt* prepared = nullptr;
      if (sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared,
                             nullptr) != SQLITE_OK)
        failure_ = sqlite3_errmsg(handle_.get());
      slot.reset(prepared);
    }
    return slot.get();
  }

  // Runs a statement with numbers, calling `row` for each of its rows. False on failure.
  template <typename Row>
  bool run(const char* sql, std::initializer_list<std::int64_t> numbers, Row row) {
    sqlite3_stmt* prepared = statement(sql);
    if (prepared == nullptr)
      return false;
    int parameter = 0;
    for (const std::int64_t number : numbers)
      sqlite3_bind_int64(prepared, ++parameter, number);
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW)
      row(prepared);
    if (result != SQLITE_DONE)
      failure_ = sqlite3_errmsg(handle_.get());
    sqlite3_reset(prepared);
    return result == SQLITE_DONE;
  }
  bool run(const char* sql, std::initializer_list<std::int64_t> numbers = {}) {
    return run(sql, numbers, [](sqlite3_stmt*) {});
  }

  // Runs `work` in a transaction: all of it or nothing.
  template <typename Work> bool inTransaction(const char* begin, Work work) {
    if (!run(begin))
      return false;
    if (work() && run("COMMIT"))
      return true;
    // Not by run: why it failed is to be kept.
    if (sqlite3_get_autocommit(handle_.get()) == 0)
      sqlite3_exec(handle_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    return false;
  }
  // Why the last statement that failed did.
  [[nodiscard]] const std::string& failure() const { return failure_; }

private:
  std::unique_ptr<sqlite3, CloseDatabase> handle_;
  std::map<std::string, std::unique_ptr<sqlite3_stmt, Finalize>> statements_;
  std::string failure_;
};

namespace {

bool logged(const char* what, const std::string& why) {
  ULO_LOG_ERROR("The change journal can't be %s: %s", what, why.c_str());
  return false;
}

// Several programs may make a new journal at once; switching it to a write-ahead log does not
// wait by itself.
int retryWhileBusy(sqlite3* database, const char* sql) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(busyTimeoutMs);
  for (;;) {
    const int result = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
    if ((result & 0xFF) != SQLITE_BUSY || std::chrono::steady_clock::now() > deadline)
      return result;
    if (sqlite3_get_autocommit(database) == 0)
      sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    std::this_thread::sleep_for(busyPoll);
  }
}

}  // namespace

ChangeJournal::ChangeJournal(std::string directory) : directory_(std::move(directory)) {}

ChangeJournal::~ChangeJournal() = default;

ChangeJournal::Database* ChangeJournal::open(bool create) {
  if (database_)
    return database_.get();
  const std::string path = directory_ + "/" + journalFile;
  if (create) {
    // Made here and not by SQLite, so that it is the owner's alone. And without opening it:
    // closing it would end the locks that another thread may have on it by then.
    mknod(path.c_str(), S_IFREG | 0600, 0);
  }
  sqlite3* handle = nullptr;
  const int opened =
      sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  auto database = std::make_unique<Database>(handle);
  if (opened != SQLITE_OK) {
    logged("opened", sqlite3_errmsg(handle));
    return nullptr;
  }
  sqlite3_busy_timeout(handle, busyTimeoutMs);
  if (retryWhileBusy(handle, "PRAGMA journal_mode = WAL") != SQLITE_OK ||
      retryWhileBusy(handle, setUp) != SQLITE_OK) {
    logged("opened", sqlite3_errmsg(handle));
    return nullptr;
  }
  database_ = std::move(database);
  return database_.get();
}

bool ChangeJournal::append(const std::vector<Change>& changes) {
  if (changes.empty())
    return true;
  Database* database = open(true);
  if (database == nullptr)
    return false;
  const std::int64_t now = std::time(nullptr);
  const auto insert = [&](const Change& change) {
    constexpr const char* sql = "INSERT INTO changes (uid, type, time, source) VALUES (?, ?, ?, ?)";
    sqlite3_stmt* statement = database->statement(sql);
    if (statement == nullptr)
      return false;
    sqlite3_bind_text(statement, 4, change.source.data(), static_cast<int>(change.source.size()),
                      SQLITE_STATIC);
    const bool done = database->run(sql, {change.uid, static_cast<int>(change.type), now});
    sqlite3_clear_bindings(statement);
    return done;
  };
  const bool done = changes.size() == 1
                        ? insert(changes.front())
                        : database->inTransaction("BEGIN IMMEDIATE", [&] {
                            return std::all_of(changes.begin(), changes.end(), insert);
                          });
  return done || logged("written", database->failure());
}

namespace {

bool exists(const std::string& directory) {
  return access((directory + "/" + journalFile).c_str(), F_OK) == 0;
}

}  // namespace

bool ChangeJournal::entriesSince(std::int64_t entry, std::vector<Change>& changes) {
  if (!exists(directory_))
    return true;
  Database* database = open(false);
  if (database == nullptr)
    return false;
  std::vector<Change> found;
  const bool done = database->run(
      "SELECT entry, time, source, uid, type FROM changes WHERE entry > ? ORDER BY entry", {entry},
      [&](sqlite3_stmt* row) {
        Change change;
        change.entry = sqlite3_column_int64(row, 0);
        change.time = sqlite3_column_int64(row, 1);
        change.source.assign(reinterpret_cast<const char*>(sqlite3_column_text(row, 2)),
                             static_cast<std::size_t>(sqlite3_column_bytes(row, 2)));
        change.uid = static_cast<std::uint32_t>(sqlite3_column_int64(row, 3));
        change.type = static_cast<ChangeType>(sqlite3_column_int(row, 4));
        found.push_back(std::move(change));
      });
  if (!done)
    return logged("read", database->failure());
  changes.insert(changes.end(), std::make_move_iterator(found.begin()),
                 std::make_move_iterator(found.end()));
  return true;
}

bool ChangeJournal::lastEntry(std::int64_t& entry) {
  entry = 0;
  if (!exists(directory_))
    return true;
  Database* database = open(false);
  if (database == nullptr)
    return false;
  return database->run("SELECT seq FROM sqlite_sequence WHERE name = 'changes'", {},
                       [&](sqlite3_stmt* row) { entry = sqlite3_column_int64(row, 0); }) ||
         logged("read", database->failure());
}

bool ChangeJournal::changesSince(const std::string& source, std::int64_t entry, NetChanges& net) {
  net = {};
  if (!exists(directory_))
    return true;
  Database* database = open(false);
  if (database == nullptr)
    return false;
  // One snapshot for the number, the mark and the entries.
  std::vector<Change> changes;
  const bool done = database->inTransaction("BEGIN", [&] {
    return database->run(
               "SELECT entry FROM pruned", {},
               [&](sqlite3_stmt* row) { net.incomplete = entry < sqlite3_column_int64(row, 0); }) &&
           lastEntry(net.lastEntry) && entriesSince(entry, changes);
  });
  if (!done)
    return logged("read", database->failure());

  // Whether a UID was there before and whether it is there now says it all.
  struct Fate {
    std::uint32_t uid;
    ChangeType first;
    ChangeType last;
  };
  std::vector<Fate> fates;
  std::map<std::uint32_t, std::size_t> fateOf;
  for (const Change& change : changes) {
    if (change.source != source)
      continue;
    const auto [found, isNew] = fateOf.emplace(change.uid, fates.size());
    if (isNew)
      fates.push_back({change.uid, change.type, change.type});
    else
      fates[found->second].last = change.type;
  }
  for (const Fate& fate : fates) {
    const bool wasThere = fate.first != ChangeType::added;
    const bool isThere = fate.last != ChangeType::removed;
    if (isThere)
      (wasThere ? net.updated : net.added).push_back(fate.uid);
    else if (wasThere)
      net.removed.push_back(fate.uid);
  }
  return true;
}

bool ChangeJournal::prune(std::int64_t entry) {
  if (!exists(directory_))
    return true;
  Database* database = open(false);
  if (database == nullptr)
    return false;
  const bool done = database->inTransaction("BEGIN IMMEDIATE", [&] {
    std::int64_t last = 0;
    return lastEntry(last) &&
           database->run("UPDATE pruned SET entry = max(entry, ?)", {std::min(entry, last)}) &&
           database->run("DELETE FROM changes WHERE entry <= ?", {entry});
  });
  return done || logged("pruned", database->failure());
}

}  // namespace ulo
