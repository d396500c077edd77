// The journal of changes in a store's file that is replaced as a whole.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace ulo::odb {

// Returns the number of the journal's last entry, or 0 if there is no journal. Throws Failure.
std::int64_t lastEntry(sqlite3* database);

// Returns the highest UID in the journal, or 0 if there is none. Throws Failure.
std::int64_t highestUidOfJournal(sqlite3* database);

// Begins a new generation of the journal whose first entry has a number greater than `floor`.
// Readers of an earlier generation are told that they have missed changes. Does nothing if there is
// no journal. Requires a transaction. Throws Failure.
void renewGeneration(sqlite3* database, std::int64_t floor);

}  // namespace ulo::odb
