#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ulo::odb {

// A prepared statement. Parameters count from 1, columns from 0.
class SqlStatement {
public:
  // Throws Failure.
  SqlStatement(sqlite3* database, const std::string& sql);

  [[nodiscard]] sqlite3_stmt* handle() const { return handle_.get(); }
  // Returns true if the statement is on a row. Throws Failure.
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
  // Moves back before the first row.
  void reset() {
    if (stepped_)
      sqlite3_reset(handle_.get());
    stepped_ = false;
  }

  [[nodiscard]] std::int64_t integer(int column) const {
    return sqlite3_column_int64(handle_.get(), column);
  }
  // Returns an empty string for a null. Throws Failure if memory is exhausted.
  [[nodiscard]] std::string text(int column) const;

private:
  [[noreturn]] void stepFailed();

  struct Finalize {
    void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
  bool stepped_ = false;  // since the last reset
};

// Returns the statement of `key`, preparing it from `makeSql()` on first use. If that fails, the
// key is not added to `statements`, so every statement in it can be used. Throws Failure.
template <typename Statements, typename MakeSql>
SqlStatement& preparedIn(Statements& statements, const typename Statements::key_type& key,
                         sqlite3* database, MakeSql makeSql) {
  auto found = statements.find(key);
  if (found == statements.end())
    found = statements.emplace(key, std::make_unique<SqlStatement>(database, makeSql())).first;
  return *found->second;
}

// Resets a statement at the end of a scope.
class ResetAtEnd {
public:
  explicit ResetAtEnd(SqlStatement& statement) : statement_(statement) {}
  ResetAtEnd(const ResetAtEnd&) = delete;
  ResetAtEnd& operator=(const ResetAtEnd&) = delete;
  ~ResetAtEnd() { statement_.reset(); }

private:
  SqlStatement& statement_;
};

}  // namespace ulo::odb
