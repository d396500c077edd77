#include "wal_limit.h"

#include "handle.h"

#include <algorithm>

namespace ulo::odb {
namespace {

// In pages of 4 KiB.
constexpr int firstCheckpoint = 1000;
constexpr int checkpointStep = 100;
constexpr int firstReset = 2000;
constexpr int resetStep = 1000;
constexpr int resetPatienceMs = 500;
constexpr const char* sizeLimit = "PRAGMA journal_size_limit = 1048576";

// Depends only on the number of pages, because most processes commit once and exit.
int committed(void*, sqlite3* database, const char* name, int pages) {
  int written = 0;
  int highest = 0;
  sqlite3_db_status(database, SQLITE_DBSTATUS_CACHE_WRITE, &written, &highest, 1);
  const int before = std::max(0, pages - written);
  const auto crosses = [&](int first, int step) {
    return pages >= first && (before < first || pages / step != before / step);
  };
  if (crosses(firstReset, resetStep)) {
    sqlite3_busy_timeout(database, resetPatienceMs);
    sqlite3_wal_checkpoint_v2(database, name, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    sqlite3_busy_timeout(database, busyTimeoutMs);
  } else if (crosses(firstCheckpoint, checkpointStep)) {
    sqlite3_wal_checkpoint_v2(database, name, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  }
  // The commit has succeeded, whether or not the checkpoint has.
  return SQLITE_OK;
}

}  // namespace

void limitWal(sqlite3* database) {
  sqlite3_exec(database, sizeLimit, nullptr, nullptr, nullptr);
  sqlite3_wal_hook(database, committed, nullptr);
}

}  // namespace ulo::odb
