// The entries of the change journal as the program prints them.
#pragma once

#include "change_journal.h"
#include "output.h"

#include <cstdint>

namespace ulotask {

// "added", "updated" or "removed".
const char* wordOf(ulo::ChangeType type);

// A Failure unless the journal did what it was asked for.
void requireJournal(bool done);

// Prints the entries behind `entry`, one to a line, and lets `entry` be the last one.
void printNewEntries(Output& output, ulo::ChangeJournal& journal, std::int64_t& entry, bool json);

}  // namespace ulotask
