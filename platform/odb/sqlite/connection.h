#pragma once

#include "descriptor.h"
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
  Connection(const std::string& directory, const std::string& name);

  [[nodiscard]] sqlite3* handle() const { return handle_.get(); }

  // What ends and begins a transaction. All throw Failure.
  enum class Control { beginRead, beginWrite, commit, rollback, save, release, rollbackToSave };
  void control(Control what);
  // Whether SQLite has a transaction open; it may have ended ours by itself.
  [[nodiscard]] bool inTransaction() const { return sqlite3_get_autocommit(handle_.get()) == 0; }

  // Whether no row has been committed yet.
  [[nodiscard]] bool isFilling() const { return lock_.get() >= 0; }
  // To be told of every commit: ends the lock when the database has been filled.
  void committed();
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

  void configure();
  [[nodiscard]] bool isFilled() const;
  void dropTables();
  void reserveCommit();

  std::string path_;
  Descriptor lock_;  // outlives the handle: closed after it
  std::unique_ptr<sqlite3, Close> handle_;
  std::unique_ptr<SqlStatement> controls_[7];
  std::unique_ptr<SqlStatement> schemaVersion_;
};

}  // namespace ulo::odb
