// Plain connections to database files, and single statements on them.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ulo::odb {

// How long a statement waits for another process to finish writing.
inline constexpr int busyTimeoutMs = 10000;

struct CloseHandle {
  void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

// Opens an existing database file. Throws Failure.
Handle openFile(const std::string& path, int flags = SQLITE_OPEN_READWRITE);

// Both throw Failure. numberOf returns the first column of the first row, or 0 if there is no row.
void execute(sqlite3* database, const std::string& sql);
std::int64_t numberOf(sqlite3* database, const std::string& sql);

}  // namespace ulo::odb
