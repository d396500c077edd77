#include "connection.h"

#include "announcement.h"
#include "base/failure.h"
#include "base/sql_name.h"
#include "contains_function.h"
#include "journal.h"
#include "journal_schema.h"
#include "layout.h"
#include "sqlite_failure.h"
#include "wal_limit.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <optional>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo::odb {
namespace {

// How long an open waits for programs that fill a new database, one after another on a busy disk.
constexpr std::chrono::seconds fillPatience{30};
constexpr std::chrono::milliseconds fillPoll{2};

constexpr const char* controlSql[] = {
    "BEGIN",           "BEGIN IMMEDIATE", "COMMIT",           "ROLLBACK",
    "SAVEPOINT ulodb", "RELEASE ulodb",   "ROLLBACK TO ulodb"};

Failure systemFailure(const std::string& what) {
  const int error = errno;
  const std::string message = what + ": " + std::strerror(error);
  return {isFull(error) ? DB_FULL : DB_IO, message,
          isFull(error) ? fullReason(what, error) : message};
}

bool mayWrite(const std::string& path) {
  return access(path.c_str(), W_OK) == 0;
}

// Returns true if all committed data is in the database file itself.
bool logIsEmpty(const std::string& path) {
  struct stat log {};
  return stat((path + "-wal").c_str(), &log) != 0 ? errno == ENOENT : log.st_size == 0;
}

// Returns the path as a URI of an immutable file, for which SQLite uses neither locks nor a log.
std::string immutableUri(const std::string& path) {
  constexpr char hex[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '%' || c == '?' || c == '#')
      uri += {'%', hex[byte >> 4U], hex[byte & 15U]};
    else
      uri += c;
  }
  return uri + "?immutable=1";
}

// Locks the directory itself, which needs no lock file and leaves none if the process is killed.
int lockDirectory(const std::string& directory) {
  Descriptor descriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.get() < 0)
    throw systemFailure(directory);
  const auto deadline = std::chrono::steady_clock::now() + fillPatience;
  while (flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR)
      throw systemFailure("locking " + directory);
    if (std::chrono::steady_clock::now() > deadline)
      throw Failure(DB_BUSY, "another program has been filling the database in " + directory +
                                 " for too long");
    std::this_thread::sleep_for(fillPoll);
  }
  return descriptor.release();
}

}  // namespace

Connection::Connection(const StorePlace& place) : path_(place.path()), reserve_(place.directory) {
  lock_.reset(lockDirectory(place.directory));
  requireNotLost(place);
  const auto attempt = [&](Opening how) -> std::optional<Failure> {
    try {
      open(how);
      return {};
    } catch (const Failure& failure) {
      handle_.reset();
      return failure;
    }
  };
  std::optional<Failure> failure = attempt(Opening::shared);
  const auto isFullDisk = [&] { return failure && failure->code() == DB_FULL; };
  if (isFullDisk() && reserve_.release())
    failure = attempt(Opening::shared);
  if (isFullDisk() && !attempt(Opening::exclusive))
    failure.reset();
  const bool isLockedUp =
      failure && failure->code() == DB_IO && !(mayWrite(path_) && mayWrite(place.directory));
  if ((isFullDisk() || isLockedUp) && logIsEmpty(path_) && !attempt(Opening::readOnly))
    failure.reset();
  if (failure)
    throw *failure;
  // To the next opening, a reserve beside an empty file means that a store was lost.
  if (!isFilling())
    reserve_.keep();
}

void Connection::open(Opening how) {
  // Created here and not by SQLite, so that only its owner can access it; SQLite's other files get
  // the same mode. Not opened, because closing it would release this process's locks on it.
  if (mknod(path_.c_str(), S_IFREG | 0600, 0) != 0 && errno != EEXIST)
    throw systemFailure(path_);
  const bool readOnly = how == Opening::readOnly;
  sqlite3* opened = nullptr;
  const int result =
      sqlite3_open_v2(readOnly ? immutableUri(path_).c_str() : path_.c_str(), &opened,
                      SQLITE_OPEN_NOMUTEX | (readOnly ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI
                                                      : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE),
                      nullptr);
  handle_.reset(opened);
  if (opened == nullptr)
    throw Failure(DB_NO_MEMORY, "no memory to open " + path_);
  if (result != SQLITE_OK)
    throw sqliteFailure(opened, "opening " + path_);
  configure(how);
  if (isFilled()) {
    if (!readOnly)
      adoptJournal(opened, path_.substr(0, path_.rfind('/')));
    unlock();
  } else if (!readOnly) {
    dropTables();
  }
}

Connection::~Connection() {
  for (auto& statement : controls_)
    statement.reset();
  schemaVersion_.reset();
  handle_.reset();
  reserve_.restore();
  unlock();
}

// Closing is not enough: a forked child may share the descriptor.
void Connection::unlock() {
  if (lock_.get() >= 0)
    flock(lock_.get(), LOCK_UN);
  lock_.reset();
}

void Connection::configure(Opening how) {
  sqlite3* database = handle_.get();
  sqlite3_busy_timeout(database, busyTimeoutMs);
  // An unknown name is an error, not a string literal.
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  // This encoding preserves every 16-bit unit, even unpaired surrogates.
  SqlStatement(database, "PRAGMA encoding = 'UTF-16'").run();
  // Keeps the index of the log in this process's memory.
  if (how == Opening::exclusive)
    SqlStatement(database, "PRAGMA locking_mode = EXCLUSIVE").run();
  // Nothing has been read or written before this.
  requireKnownLayout(database, path_);
  if (how != Opening::readOnly) {
    SqlStatement journal(database, "PRAGMA journal_mode = WAL");
    if (!journal.step() || journal.text(0) != "wal")
      throw Failure(DB_IO, "the file system can't hold the database's write-ahead log");
    journal.run();
  }
  SqlStatement(database, "PRAGMA synchronous = FULL").run();
  limitWal(database);
  addContainsFunction(database);
  SqlStatement encoding(database, "PRAGMA encoding");
  if (!encoding.step() || encoding.text(0).rfind("UTF-16", 0) != 0)
    throw Failure(DB_CORRUPT, "the file is a database of something else");
}

// The first row of any table leaves an entry in SQLite's table of row numbers.
bool Connection::isFilled() const {
  sqlite3* database = handle_.get();
  {
    SqlStatement table(database, "SELECT 1 FROM sqlite_schema WHERE name = 'sqlite_sequence'");
    if (!table.step())
      return false;
  }
  SqlStatement rows(database, "SELECT 1 FROM sqlite_sequence LIMIT 1");
  return rows.step();
}

void Connection::dropTables() {
  sqlite3* database = handle_.get();
  std::vector<std::string> tables;
  {
    SqlStatement names(database, "SELECT name FROM sqlite_schema WHERE type = 'table' AND "
                                 "name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
    while (names.step())
      tables.push_back(names.text(0));
  }
  if (tables.empty())
    return;
  // If a table with rows has lost its numbering, the file is damaged and must not lose the rows,
  // too.
  for (const std::string& table : tables)
    if (table.rfind(journalPrefix, 0) != 0 &&
        SqlStatement(database, "SELECT 1 FROM " + quoteName(table) + " LIMIT 1").step())
      throw Failure(DB_CORRUPT, "the numbering of the rows of " + table + " is lost");
  SqlStatement(database, "BEGIN IMMEDIATE").run();
  for (const std::string& table : tables)
    SqlStatement(database, "DROP TABLE " + quoteName(table)).run();
  SqlStatement(database, "COMMIT").run();
}

SqlStatement& Connection::prepared(Control what) {
  const auto index = static_cast<std::size_t>(what);
  if (!controls_[index])
    controls_[index] = std::make_unique<SqlStatement>(handle_.get(), controlSql[index]);
  return *controls_[index];
}

void Connection::control(Control what) {
  if (what == Control::beginRead || what == Control::beginWrite) {
    prepared(Control::commit);
    prepared(Control::rollback);
  } else if (what == Control::save) {
    prepared(Control::release);
    prepared(Control::rollbackToSave);
  }
  SqlStatement& statement = prepared(what);
  const ResetAtEnd reset(statement);
  statement.run();
}

void Connection::beginBulkWrite() {
  const auto storeIn = [this](const char* place) {
    SqlStatement(handle_.get(), std::string("PRAGMA temp_store = ") + place).run();
  };
  storeIn("MEMORY");
  try {
    control(Control::beginWrite);
  } catch (const Failure&) {
    storeIn("DEFAULT");
    throw;
  }
  // SQLite reads the setting when a transaction begins.
  storeIn("DEFAULT");
}

void Connection::undo(bool toSavepoint) noexcept {
  if (toSavepoint && inTransaction()) {
    try {
      control(Control::rollbackToSave);
      control(Control::release);
      return;
    } catch (const std::exception&) {
      // Roll back the whole transaction instead.
    }
  }
  // Try twice, because a changed schema makes SQLite prepare the statement again.
  for (int attempt = 0; attempt < 2 && inTransaction(); ++attempt) {
    try {
      control(Control::rollback);
    } catch (const std::exception&) {
    }
  }
}

bool Connection::makeRoom(bool removes) noexcept {
  int pages = 0;
  const bool isCopied = sqlite3_wal_checkpoint_v2(handle_.get(), "main", SQLITE_CHECKPOINT_TRUNCATE,
                                                  &pages, nullptr) == SQLITE_OK;
  return (removes && reserve_.release()) || (isCopied && !removes);
}

void Connection::committed() noexcept {
  try {
    if (isFilling() && isFilled()) {
      unlock();
      reserve_.keep();
    }
  } catch (const std::exception&) {
  }
}

void Connection::setUncommitted(bool isUncommitted) noexcept {
  if (isUncommitted)
    uncommitted_.emplace();
  else
    uncommitted_.reset();
}

void Connection::announce() const {
  announceCommit(path_);
}

void Connection::writeOut() {
  // Pages still in use by a statement are written by the commit.
  const int result = sqlite3_db_cacheflush(handle_.get());
  if (result != SQLITE_OK && result != SQLITE_BUSY)
    throw sqliteFailure(handle_.get(), result, "writing out a transaction");
  reserveCommit();
}

// A commit appends at least one page to the write-ahead log, at the end of the file unless the log
// was restarted. SQLite ignores zeros at the end; while there are enough of them, no more are
// needed.
void Connection::reserveCommit() {
  constexpr std::size_t frameHeader = 24;
  constexpr std::size_t largestPage = 4096;
  char tail[2 * (frameHeader + largestPage)];
  sqlite3_file* log = nullptr;
  sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
  if (log == nullptr || log->pMethods == nullptr)
    return;
  sqlite3_int64 size = 0;
  int result = log->pMethods->xFileSize(log, &size);
  if (result == SQLITE_OK && size >= static_cast<sqlite3_int64>(sizeof tail)) {
    result = log->pMethods->xRead(log, tail, sizeof tail,
                                  size - static_cast<sqlite3_int64>(sizeof tail));
    if (result == SQLITE_OK &&
        std::all_of(std::begin(tail), std::end(tail), [](char byte) { return byte == 0; }))
      return;
  }
  if (result == SQLITE_OK) {
    std::fill(std::begin(tail), std::end(tail), '\0');
    result = log->pMethods->xWrite(log, tail, sizeof tail, size);
  }
  if (result != SQLITE_OK)
    throw sqliteFailure(handle_.get(), result, "making room for a commit");
}

std::int64_t Connection::schemaVersion() {
  if (!schemaVersion_)
    schemaVersion_ = std::make_unique<SqlStatement>(handle_.get(), "PRAGMA schema_version");
  const ResetAtEnd reset(*schemaVersion_);
  return schemaVersion_->step() ? schemaVersion_->integer(0) : 0;
}

unsigned Connection::dataVersion() const {
  unsigned version = 0;
  sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_DATA_VERSION, &version);
  return version;
}

}  // namespace ulo::odb
