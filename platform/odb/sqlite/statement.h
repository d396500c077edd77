// SQLite's handles with one owner each.
#pragma once

#include "script/failure.h"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ulo::odb {

// The failure that SQLite reports on this connection, as ours. `what` was being done.
Failure sqliteFailure(sqlite3* database, const std::string& what);
// The same for a result that SQLite returned without keeping it as the connection's last error.
Failure sqliteFailure(sqlite3* database, int result, const std::string& what);

// Whether an error of the system means that there is no room: on the disk, in the user's quota of
// it, or within the largest size of a file.
bool isFull(int systemError);
// The same for people.
std::string fullReason(const std::string& file, int systemError);

// A prepared statement. Its parameters count from 1, its columns from 0.
class SqlStatement {
public:
  // Throws Failure.
  SqlStatement(sqlite3* database, const std::string& sql);

  [[nodiscard]] sqlite3_stmt* handle() const { return handle_.get(); }
  // True: on a row. Throws Failure.
  bool step() {
    stepped_ = true;
    const int result = sqlite3_step(handle_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
      stepFailed();
    return result == SQLITE_ROW;
  }
  // Steps to the end. Throws Failure.
  void run() {
    while (step()) {
    }
  }
  // Back to before the first row.
  void reset() {
    if (stepped_)
      sqlite3_reset(handle_.get());
    stepped_ = false;
  }

  [[nodiscard]] std::int64_t integer(int column) const {
    return sqlite3_column_int64(handle_.get(), column);
  }
  // Empty for a null. Throws Failure when there is no memory for it.
  [[nodiscard]] std::string text(int column) const;

private:
  [[noreturn]] void stepFailed();

  struct Finalize {
    void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
  bool stepped_ = false;  // since it was reset
};

// The statement of `key`, prepared the first time from `makeSql()`. If that fails, `statements` is
// left without the key: every statement that it holds can be used. Throws Failure.
template <typename Statements, typename MakeSql>
SqlStatement& preparedIn(Statements& statements, const typename Statements::key_type& key,
                         sqlite3* database, MakeSql makeSql) {
  auto found = statements.find(key);
  if (found == statements.end())
    found = statements.emplace(key, std::make_unique<SqlStatement>(database, makeSql())).first;
  return *found->second;
}

// Resets a statement that was stepped, however its use ends.
class ResetAtEnd {
public:
  explicit ResetAtEnd(SqlStatement& statement) : statement_(statement) {}
  ResetAtEnd(const ResetAtEnd&) = delete;
  ResetAtEnd& operator=(const ResetAtEnd&) = delete;
  ~ResetAtEnd() { statement_.reset(); }

private:
  SqlStatement& statement_;
};

// "name" as SQL quotes it: any word may be a name, `end` too.
std::string quoteName(const std::string& name);

}  // namespace ulo::odb
