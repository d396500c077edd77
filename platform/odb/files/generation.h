// The journal of changes in the file of a store that is replaced as a whole.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace ulo::odb {

// The number of the journal's last entry, 0 if there is no journal. Throws Failure.
std::int64_t lastEntry(sqlite3* database);

// The highest UID in the journal, 0 if there is none. Throws Failure.
std::int64_t highestUidOfJournal(sqlite3* database);

// Begins a new generation of the journal, whose first entry has a higher number than `floor`: those
// who have read a former one are told that they have missed something. Does nothing if there is no
// journal. Requires a transaction. Throws Failure.
void renewGeneration(sqlite3* database, std::int64_t floor);

}  // namespace ulo::odb
