#include "handle.h"

#include "base/failure.h"
#include "sqlite_failure.h"
#include "statement.h"

namespace ulo::odb {

Handle openFile(const std::string& path, int flags) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &opened,
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI, nullptr);
  Handle handle(opened);
  if (opened == nullptr)
    throw Failure(DB_NO_MEMORY, "no memory to open " + path);
  if (result != SQLITE_OK)
    throw sqliteFailure(opened, path);
  sqlite3_busy_timeout(opened, busyTimeoutMs);
  return handle;
}

void execute(sqlite3* database, const std::string& sql) {
  SqlStatement(database, sql).run();
}

std::int64_t numberOf(sqlite3* database, const std::string& sql) {
  SqlStatement statement(database, sql);
  return statement.step() ? statement.integer(0) : 0;
}

}  // namespace ulo::odb
