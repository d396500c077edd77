#pragma once

#include "descriptor.h"
#include "reserve.h"
#include "statement.h"

#include <sqlite3.h>

#include <memory>
#include <string>

namespace ulo::odb {

// A connection to the database file.
class Connection {
public:
  // Opens `directory`/`name`, creating it. Until a row has been committed to it, the connection
  // holds the lock of the directory, for which other opens wait: they find either nothing or a
  // complete database. Tables that were left without rows, by a program that died while it created
  // them, are dropped first. Throws Failure.
  //
  // A disk without any room is no obstacle to reading. The reserve of the directory is released for
  // the time of the connection; without it the database is opened for this process alone, with no
  // files but its own. A file or directory that may not be written to is read as it is.
  Connection(const std::string& directory, const std::string& name);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  [[nodiscard]] sqlite3* handle() const { return handle_.get(); }

  // What ends and begins a transaction. All throw Failure. What a beginning needs for its end is
  // prepared first, so that no shortage of memory can keep a transaction open.
  enum class Control { beginRead, beginWrite, commit, rollback, save, release, rollbackToSave };
  void control(Control what);
  // Undoes everything since the savepoint, or the whole transaction, which also ends if the
  // savepoint can't be undone. Nothing happens without a transaction.
  void undo(bool toSavepoint) noexcept;
  // For what removes rows, when the disk is full or nearly so: makes what room there can be had.
  // Whether it is worth another attempt.
  bool makeRoom(bool removes) noexcept;
  // The same before a removal within a transaction, which no second attempt could save.
  void makeRoomAhead() noexcept {
    if (reserve_.isWanted())
      reserve_.release();
  }
  // Whether SQLite has a transaction open; it may have ended ours by itself.
  [[nodiscard]] bool inTransaction() const { return sqlite3_get_autocommit(handle_.get()) == 0; }

  // Whether no row has been committed yet.
  [[nodiscard]] bool isFilling() const { return lock_.get() >= 0; }
  // To be told of every commit: ends the lock when the database has been filled. When that can't
  // be found out, the next commit does.
  void committed() noexcept;
  // Tells programs that watch the file of a commit.
  void announce() const;

  // Writes what the open transaction has changed to the disk, and makes room for its commit: a full
  // disk shows here and not in the commit. Throws Failure; the transaction can only be rolled back
  // then.
  void writeOut();

  // Changes whenever a table or index is made, by anyone.
  std::int64_t schemaVersion();
  // Changes whenever anyone commits. Cheap.
  [[nodiscard]] unsigned dataVersion() const;

private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };

  // For all; for this process alone, without shared memory; for reading, without any lock.
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
  std::unique_ptr<sqlite3, Close> handle_;
  std::unique_ptr<SqlStatement> controls_[7];
  std::unique_ptr<SqlStatement> schemaVersion_;
};

}  // namespace ulo::odb
