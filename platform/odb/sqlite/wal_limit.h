#pragma once

#include <sqlite3.h>

namespace ulo::odb {

// How long a statement waits for another process that writes.
inline constexpr int busyTimeoutMs = 10000;

// Keeps the write-ahead log of this connection's database short.
//
// From 4 MiB on its pages are copied into the database as far as readers allow, and the next write
// begins the log anew when no reader uses it. Readers that overlap never let it come to that, so
// from 8 MiB on a commit waits up to half a second for the readers of the moment, once for each
// 4 MiB that the log grows: readers that take less time than that can't make it longer than 12 MiB
// and the largest transaction. A reader that is held longer, as by a stopped process, lets the log
// grow until it goes; the log shrinks by itself with the writes that follow. Empty again, the log
// keeps at most 1 MiB of the disk.
void limitWal(sqlite3* database);

}  // namespace ulo::odb
