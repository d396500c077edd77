#pragma once

#include <sqlite3.h>

namespace ulo::odb {

// Keeps the write-ahead log of this connection's database short.
//
// From 4 MiB on, its pages are copied into the database as far as readers allow, and the next write
// restarts the log if no reader uses it. With overlapping readers that never happens, so from 8 MiB
// on a commit waits up to half a second for the current readers, once for every 4 MiB that the log
// grows. Readers that take less time than that cannot make the log longer than 12 MiB plus the
// largest transaction. A reader that is held longer, for example by a stopped process, lets the log
// grow until it ends; subsequent writes then shrink the log again. An empty log occupies at most 1
// MiB of disk space.
void limitWal(sqlite3* database);

}  // namespace ulo::odb
