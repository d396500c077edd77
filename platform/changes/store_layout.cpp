#include "store_layout.h"

#include <sqlite3.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace ulo {
namespace {

// SQLite's file format.
constexpr char magic[] = "SQLite format 3";
constexpr std::size_t versionAt = 60;
constexpr std::size_t versionSize = 4;

bool hasContent(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

// Reads the version from the file's header, without a lock and without the write-ahead log.
std::int64_t versionInHeader(sqlite3* connection) {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  unsigned char head[versionAt + versionSize] = {};
  if (file == nullptr || file->pMethods == nullptr ||
      file->pMethods->xRead(file, head, sizeof head, 0) != SQLITE_OK ||
      std::memcmp(head, magic, sizeof magic) != 0)
    return 0;
  std::int64_t version = 0;
  for (std::size_t i = 0; i < versionSize; ++i)
    version = version << 8U | head[versionAt + i];
  return version;
}

std::optional<std::int64_t> versionInSnapshot(sqlite3* connection) {
  sqlite3_stmt* made = nullptr;
  sqlite3_prepare_v2(connection, "PRAGMA user_version", -1, &made, nullptr);
  const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(made,
                                                                             sqlite3_finalize);
  if (made == nullptr || sqlite3_step(made) != SQLITE_ROW)
    return std::nullopt;
  return static_cast<std::uint32_t>(sqlite3_column_int64(made, 0));
}

void setCopyOnClose(sqlite3* connection, bool copies) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, copies ? 0 : 1, nullptr);
}

// Reads the version from a write-ahead log that no program uses. A separate connection keeps the
// index of the log in memory, where an ordinary one would create a file.
std::optional<std::int64_t> versionInUnusedLog(const char* path) {
  sqlite3* opened = nullptr;
  const int result =
      sqlite3_open_v2(path, &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(opened, sqlite3_close);
  if (result != SQLITE_OK)
    return std::nullopt;
  setCopyOnClose(opened, false);
  sqlite3_exec(opened, "PRAGMA locking_mode = EXCLUSIVE", nullptr, nullptr, nullptr);
  return versionInSnapshot(opened);
}

}  // namespace

std::int64_t layoutOf(sqlite3* connection) {
  const std::int64_t version = versionInHeader(connection);
  const char* const name = sqlite3_db_filename(connection, "main");
  if (version > knownLayout || name == nullptr || !hasContent(std::string(name) + "-wal"))
    return version;
  // The log may hold a newer header.
  if (!hasContent(std::string(name) + "-shm"))
    if (const auto logged = versionInUnusedLog(name))
      return *logged;
  int keepsLog = 0;
  sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, -1, &keepsLog);
  setCopyOnClose(connection, false);
  const std::int64_t current = versionInSnapshot(connection).value_or(version);
  if (current <= knownLayout)
    setCopyOnClose(connection, keepsLog == 0);
  return current;
}

}  // namespace ulo
