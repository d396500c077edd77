// Owners of SQLite's handles for the hand-written side, which add no cost to the C interface.
#pragma once

#include <QString>

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

inline void check(bool good, sqlite3* database) {
  if (!good)
    throw std::runtime_error(database == nullptr ? "SQLite: no memory" : sqlite3_errmsg(database));
}

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

// Opens a database, and creates it if it is missing.
inline Database openDatabase(const std::string& path) {
  sqlite3* opened = nullptr;
  const int result =
      sqlite3_open_v2(path.c_str(), &opened,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(opened);
  check(result == SQLITE_OK, opened);
  return database;
}

inline void execute(const Database& database, const std::string& sql) {
  check(sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
        database.get());
}

// A statement that is prepared at its first use and then kept. The database must outlive it.
class KeptStatement {
public:
  KeptStatement(const Database& database, std::string sql)
      : database_(database), sql_(std::move(sql)) {}

  [[nodiscard]] sqlite3_stmt* get() {
    if (!handle_)
      prepare();
    return handle_.get();
  }

private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };

  void prepare() {
    sqlite3_stmt* prepared = nullptr;
    check(sqlite3_prepare_v3(database_.get(), sql_.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                             &prepared, nullptr) == SQLITE_OK,
          database_.get());
    handle_.reset(prepared);
  }

  const Database& database_;
  std::string sql_;
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

// One run of a statement, which is reset at the end. Parameters are numbered from 1, columns from
// 0. Bound texts must outlive the run.
class Run {
public:
  explicit Run(KeptStatement& statement) : handle_(statement.get()) {}
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { sqlite3_reset(handle_); }

  Run& bind(int parameter, std::int64_t value) {
    sqlite3_bind_int64(handle_, parameter, value);
    return *this;
  }
  Run& bind(int parameter, const QString& text) {
    if (text.isNull())
      sqlite3_bind_null(handle_, parameter);
    else
      sqlite3_bind_text16(handle_, parameter, text.utf16(),
                          static_cast<int>(text.size() * qsizetype{sizeof(QChar)}), SQLITE_STATIC);
    return *this;
  }
  Run& bind(int parameter, const char* text) {
    sqlite3_bind_text(handle_, parameter, text, -1, SQLITE_STATIC);
    return *this;
  }

  // Returns whether there is a row.
  bool step() {
    const int result = sqlite3_step(handle_);
    check(result == SQLITE_ROW || result == SQLITE_DONE, sqlite3_db_handle(handle_));
    return result == SQLITE_ROW;
  }

  [[nodiscard]] int integer(int column) const { return sqlite3_column_int(handle_, column); }
  [[nodiscard]] bool isNull(int column) const {
    return sqlite3_column_type(handle_, column) == SQLITE_NULL;
  }
  [[nodiscard]] QString text(int column) const {
    const auto* units = static_cast<const QChar*>(sqlite3_column_text16(handle_, column));
    return units == nullptr
               ? QString()
               : QString(units, sqlite3_column_bytes16(handle_, column) / qsizetype{sizeof(QChar)});
  }

private:
  sqlite3_stmt* handle_;
};

}  // namespace bench
