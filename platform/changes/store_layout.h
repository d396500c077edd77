// The version of the layout of a store's file: its tables and what their values mean. The file
// holds it as "PRAGMA user_version".
#pragma once

#include "ulo/export.h"

#include <cstdint>

struct sqlite3;

namespace ulo {

// The layout that this program reads and writes. A store with a higher version belongs to a newer
// program, and must be neither read nor changed.
inline constexpr std::int64_t knownLayout = 0;

// Versions count up by one. A higher number than this means that the file is damaged.
inline constexpr std::int64_t highestLayout = 1000;

// Returns the layout version of the file of a connection that has not read anything yet. Changes
// nothing: no file is created, and neither is a write-ahead log copied into the file. If the file
// cannot be read, returns 0; reading its tables then fails, too. If the version is higher than
// `knownLayout`, the connection must be closed without any other operation.
[[nodiscard]] ULO_EXPORT std::int64_t layoutOf(sqlite3* connection);

}  // namespace ulo
