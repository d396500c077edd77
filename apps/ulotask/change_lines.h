// Entries of the change journal, as they are printed.
#pragma once

#include "output.h"
#include "ulo/change_journal.h"

#include <cstdint>

namespace ulotask {

// "added", "updated" or "removed".
const char* wordOf(ulo::ChangeType type);

// Throws a Failure if `done` is false, that is, if an operation of the journal failed.
void requireJournal(bool done);

// Prints the entries after `entry`, one per line, and sets `entry` to the last one.
void printNewEntries(Output& output, ulo::ChangeJournal& journal, std::int64_t& entry, bool json);

}  // namespace ulotask
