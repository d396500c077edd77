#include "statement.h"

#include "sqlite_failure.h"

namespace ulo::odb {

SqlStatement::SqlStatement(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* handle = nullptr;
  if (sqlite3_prepare_v3(database, sql.c_str(), static_cast<int>(sql.size() + 1),
                         SQLITE_PREPARE_PERSISTENT, &handle, nullptr) != SQLITE_OK)
    throw sqliteFailure(database, sql);
  handle_.reset(handle);
}

void SqlStatement::stepFailed() {
  const Failure failure =
      sqliteFailure(sqlite3_db_handle(handle_.get()), sqlite3_sql(handle_.get()));
  reset();
  throw failure;
}

std::string SqlStatement::text(int column) const {
  if (sqlite3_column_type(handle_.get(), column) == SQLITE_NULL)
    return {};
  const auto* bytes = sqlite3_column_text(handle_.get(), column);
  if (bytes == nullptr)
    throw Failure(DB_NO_MEMORY, "no memory for a text of the database");
  return reinterpret_cast<const char*>(bytes);
}

}  // namespace ulo::odb
