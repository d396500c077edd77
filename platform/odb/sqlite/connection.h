#pragma once

#include "announcement.h"
#include "handle.h"
#include "reserve.h"
#include "statement.h"
#include "store_place.h"
#include "ulo/descriptor.h"

#include <sqlite3.h>

#include <memory>
#include <optional>
#include <string>

namespace ulo::odb {

// A connection to the database file.
class Connection {
public:
  // Opens the file at `place` and creates it if necessary. Until a row has been committed, the
  // connection holds the directory's lock, and other opens wait for it: they find either nothing or
  // a complete database. Empty tables left by a program that died while creating them are dropped
  // first. Throws Failure.
  //
  // Reading works on a full disk. The reserve of the directory is released while the connection
  // exists; if there is none, the database is opened exclusively for this process, without
  // auxiliary files. A file or directory that is not writable is opened read-only.
  //
  // A file of a newer layout is refused in each of these ways, and left unchanged.
  explicit Connection(const StorePlace& place);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  [[nodiscard]] sqlite3* handle() const { return handle_.get(); }

  // Begins or ends a transaction. Throws Failure. A begin prepares the statements needed to end the
  // transaction or the savepoint, so that lack of memory cannot keep it open.
  enum class Control { beginRead, beginWrite, commit, rollback, save, release, rollbackToSave };
  void control(Control what);
  // Begins a write transaction that keeps the data for undoing a single statement in memory.
  void beginBulkWrite();
  // Rolls back to the savepoint, or the whole transaction, which also ends if the savepoint cannot
  // be rolled back. Does nothing without a transaction.
  void undo(bool toSavepoint) noexcept;
  // Frees disk space when the disk is full. `removes`: the operation deletes rows and may use the
  // reserve. Returns true if another attempt is worthwhile.
  bool makeRoom(bool removes) noexcept;
  // Releases the reserve before a deletion within a transaction, which could not be retried.
  void makeRoomAhead() noexcept {
    if (reserve_.isWanted())
      reserve_.release();
  }
  // Returns true if SQLite has a transaction open. SQLite may have ended ours.
  [[nodiscard]] bool inTransaction() const { return sqlite3_get_autocommit(handle_.get()) == 0; }

  // Until the next call with false, the reporter announces no changes (see UncommittedChanges).
  void setUncommitted(bool isUncommitted) noexcept;

  // Returns true if no row has been committed yet.
  [[nodiscard]] bool isFilling() const { return lock_.get() >= 0; }
  // Must be called after every commit. Releases the lock when the database has been filled; if that
  // cannot be determined, the next commit tries again.
  void committed() noexcept;
  // Notifies programs that watch the file of a commit.
  void announce() const;

  // Writes the changes of the open transaction to disk and reserves room for its commit, so that a
  // full disk is detected here and not by the commit. Throws Failure, after which the transaction
  // can only be rolled back.
  void writeOut();

  // Changes whenever any program creates a table or index.
  std::int64_t schemaVersion();
  // Changes whenever any connection commits. Cheap.
  [[nodiscard]] unsigned dataVersion() const;

private:
  // Shared with other processes; exclusive to this process, without shared memory; read-only,
  // without locks.
  enum class Opening { shared, exclusive, readOnly };
  void open(Opening how);
  void configure(Opening how);
  void unlock();
  SqlStatement& prepared(Control what);
  [[nodiscard]] bool isFilled() const;
  void dropTables();
  void reserveCommit();

  std::string path_;
  Reserve reserve_;
  Descriptor lock_;  // outlives the handle: closed after it
  Handle handle_;
  std::unique_ptr<SqlStatement> controls_[7];
  std::unique_ptr<SqlStatement> schemaVersion_;
  std::optional<UncommittedChanges> uncommitted_;
};

}  // namespace ulo::odb
