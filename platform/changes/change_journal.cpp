#include "change_journal.h"

#include "data_directory.h"
#include "module_log.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>

#include <sys/stat.h>
#include <unistd.h>

namespace ulo {
namespace {

// How long to wait for another process.
constexpr std::chrono::milliseconds busyTimeout{10000};

constexpr std::chrono::milliseconds busyPoll{5};

constexpr const char* isSetUpSql = "SELECT 1 FROM sqlite_schema WHERE name = 'changes'";
// Numbers go on after pruning: AUTOINCREMENT keeps the last one in sqlite_sequence.
constexpr const char* setUp[] = {
    "PRAGMA journal_mode = WAL",
    "CREATE TABLE IF NOT EXISTS changes (entry INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT "
    "NULL,"
    " source TEXT NOT NULL, uid INTEGER NOT NULL, type INTEGER NOT NULL CHECK (type IN (1, 2, 3)))",
};
constexpr const char* insertSql =
    "INSERT INTO changes (time, source, uid, type) VALUES (?, ?, ?, ?)";
constexpr const char* lastSql = "SELECT seq FROM sqlite_sequence WHERE name = 'changes'";
constexpr const char* firstSql = "SELECT min(entry) FROM changes";
constexpr const char* entriesSql =
    "SELECT entry, time, source, uid, type FROM changes WHERE entry > ? ORDER BY entry";
constexpr const char* fatesSql =
    "SELECT uid, type FROM changes WHERE entry > ? AND source = ? ORDER BY entry";
constexpr const char* pruneSql = "DELETE FROM changes WHERE entry <= ?";

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};

// Resets a statement, however its run ends.
using Reset = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_reset)>;

}  // namespace

// A connection to an existing file, which may still be empty. What fails throws.
class ChangeJournal::Database {
public:
  using Value = std::variant<std::int64_t, std::string_view>;

  explicit Database(const std::string& path) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    check(result);
    sqlite3_busy_timeout(handle, static_cast<int>(busyTimeout.count()));
    // With a write-ahead log a change survives the process without a disk flush of its own.
    run("PRAGMA synchronous = NORMAL");
    isSetUp_ = number(isSetUpSql) != 0;
  }

  [[nodiscard]] bool isSetUp() const { return isSetUp_; }
  // Several programs may do so at once; the switch to a write-ahead log does not wait by itself.
  void makeSetUp() {
    const auto deadline = std::chrono::steady_clock::now() + busyTimeout;
    for (const char* sql : setUp)
      while (sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        if (sqlite3_errcode(handle_.get()) != SQLITE_BUSY ||
            std::chrono::steady_clock::now() > deadline)
          check(sqlite3_errcode(handle_.get()));
        std::this_thread::sleep_for(busyPoll);
      }
    isSetUp_ = true;
  }

  // Runs a statement, calling `row` for each of its rows. It is kept for the next time.
  template <typename Row> void run(const char* sql, std::initializer_list<Value> values, Row row) {
    const Reset prepared(statement(sql), sqlite3_reset);
    int parameter = 0;
    for (const Value& value : values)
      check(bind(prepared.get(), ++parameter, value));
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(prepared.get())) == SQLITE_ROW)
      row(prepared.get());
    check(result == SQLITE_DONE ? SQLITE_OK : result);
  }
  void run(const char* sql, std::initializer_list<Value> values = {}) {
    run(sql, values, [](sqlite3_stmt*) {});
  }
  // The number that a statement gives, 0 for none.
  std::int64_t number(const char* sql) {
    std::int64_t result = 0;
    run(sql, {}, [&](sqlite3_stmt* row) { result = sqlite3_column_int64(row, 0); });
    return result;
  }

  // Runs `work` in a transaction: all of it or nothing, and on one state of the file.
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

  // Flushes what has been read to the disk, where the file can be written.
  void settle() {
    sqlite3_wal_checkpoint_v2(handle_.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
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
  // A text has to live until the statement has run.
  static int bind(sqlite3_stmt* statement, int parameter, const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value))
      return sqlite3_bind_int64(statement, parameter, *number);
    const auto& text = std::get<std::string_view>(value);
    return sqlite3_bind_text(statement, parameter, text.data(), static_cast<int>(text.size()),
                             SQLITE_STATIC);
  }

  std::unique_ptr<sqlite3, CloseDatabase> handle_;
  std::map<const char*, std::unique_ptr<sqlite3_stmt, Finalize>> statements_;
  bool isSetUp_ = false;
};

ChangeJournal::ChangeJournal(std::string directory) noexcept : directory_(std::move(directory)) {}

ChangeJournal::~ChangeJournal() = default;

// The file's name.
std::string ChangeJournal::path() const {
  const std::string directory = directory_.empty() ? dataDirectory() : directory_;
  if (directory.empty())
    throw std::runtime_error(std::string("there is no data directory: ") + std::strerror(errno));
  return directory + "/" + fileName;
}

// Null while nobody has made the journal.
ChangeJournal::Database* ChangeJournal::existing() {
  if (!database_) {
    if (const std::string file = path(); access(file.c_str(), F_OK) == 0)
      database_ = std::make_unique<Database>(file);
  }
  if (database_ && !database_->isSetUp())
    database_.reset();
  return database_.get();
}

ChangeJournal::Database& ChangeJournal::created() {
  if (existing() == nullptr) {
    const std::string file = path();
    // Made here and not by SQLite, so that it is the owner's alone. And without opening it:
    // closing it would end the locks that another thread may have on it by then.
    mknod(file.c_str(), S_IFREG | 0600, 0);
    auto database = std::make_unique<Database>(file);
    database->makeSetUp();
    database_ = std::move(database);
  }
  return *database_;
}

template <typename Work> bool ChangeJournal::attempt(const char* what, bool log, Work work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    if (log)
      ULO_LOG_ERROR("The change journal can't be %s: %s", what, error.what());
    return false;
  }
}

// Calls `work` with the database, or null where there is none.
template <typename Work> bool ChangeJournal::read(Work work) {
  return attempt("read", true, [&] { work(existing()); });
}

bool ChangeJournal::append(const std::vector<Change>& changes) {
  if (changes.empty())
    return true;
  const bool done = attempt("written", !appendFails_, [&] {
    Database& database = created();
    const std::int64_t now = std::time(nullptr);
    const auto insert = [&](const Change& change) {
      database.run(insertSql,
                   {now, change.source, std::int64_t{change.uid}, static_cast<int>(change.type)});
    };
    if (changes.size() == 1)
      insert(changes.front());
    else
      database.inTransaction("BEGIN IMMEDIATE",
                             [&] { std::for_each(changes.begin(), changes.end(), insert); });
  });
  appendFails_ = !done;
  return done;
}

bool ChangeJournal::entriesSince(std::int64_t entry, std::vector<Change>& changes) {
  return read([&](Database* database) {
    if (database == nullptr)
      return;
    std::vector<Change> found;
    database->run(entriesSql, {entry}, [&](sqlite3_stmt* row) {
      Change change;
      change.entry = sqlite3_column_int64(row, 0);
      change.time = sqlite3_column_int64(row, 1);
      change.source.assign(reinterpret_cast<const char*>(sqlite3_column_text(row, 2)),
                           static_cast<std::size_t>(sqlite3_column_bytes(row, 2)));
      change.uid = static_cast<std::uint32_t>(sqlite3_column_int64(row, 3));
      change.type = static_cast<ChangeType>(sqlite3_column_int(row, 4));
      found.push_back(std::move(change));
    });
    changes.insert(changes.end(), std::make_move_iterator(found.begin()),
                   std::make_move_iterator(found.end()));
  });
}

bool ChangeJournal::lastEntry(std::int64_t& entry) {
  entry = 0;
  return read([&](Database* database) {
    if (database == nullptr)
      return;
    entry = database->number(lastSql);
    database->settle();
  });
}

bool ChangeJournal::changesSince(const std::string& source, std::int64_t entry, NetChanges& net) {
  struct Fate {
    std::uint32_t uid;
    ChangeType first;
    ChangeType last;
  };
  std::vector<Fate> fates;
  std::map<std::uint32_t, std::size_t> fateOf;
  std::int64_t last = 0;
  std::int64_t pruned = 0;

  net = {};
  const bool done = read([&](Database* database) {
    if (database == nullptr)
      return;
    database->inTransaction("BEGIN", [&] {
      last = database->number(lastSql);
      const std::int64_t first = database->number(firstSql);
      pruned = first == 0 ? last : first - 1;
      database->run(fatesSql, {entry, source}, [&](sqlite3_stmt* row) {
        const auto uid = static_cast<std::uint32_t>(sqlite3_column_int64(row, 0));
        const auto type = static_cast<ChangeType>(sqlite3_column_int(row, 1));
        const auto [found, isNew] = fateOf.emplace(uid, fates.size());
        if (isNew)
          fates.push_back({uid, type, type});
        else
          fates[found->second].last = type;
      });
    });
    database->settle();
  });
  if (!done)
    return false;

  net.lastEntry = last;
  net.incomplete = std::max<std::int64_t>(entry, 0) < pruned || entry > last;
  // Whether a UID was there before and whether it is there now says it all.
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
  return attempt("pruned", true, [&] {
    if (Database* const database = existing())
      database->run(pruneSql, {entry});
  });
}

}  // namespace ulo
