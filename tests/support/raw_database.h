// The database file, accessed without the database library.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

class RawDatabase {
public:
  // Opens the file of the store in a data directory.
  explicit RawDatabase(const std::filesystem::path& directory) {
    if (sqlite3_open((directory / "tasks.db").c_str(), &handle_) != SQLITE_OK)
      throw std::runtime_error("the database can't be opened");
    sqlite3_busy_timeout(handle_, 5000);
  }
  RawDatabase(const RawDatabase&) = delete;
  RawDatabase& operator=(const RawDatabase&) = delete;
  ~RawDatabase() { sqlite3_close(handle_); }

  // Runs one statement. Returns its rows as texts in UTF-8, with "|" between the fields.
  std::vector<std::string> run(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_));
    std::vector<std::string> rows;
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
      std::string row;
      for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        row += (column == 0 ? "" : "|") + std::string(text == nullptr ? "null" : text);
      }
      rows.push_back(row);
    }
    const std::string error = sqlite3_errmsg(handle_);
    sqlite3_finalize(statement);
    if (result != SQLITE_DONE)
      throw std::runtime_error(sql + ": " + error);
    return rows;
  }

private:
  sqlite3* handle_ = nullptr;
};
