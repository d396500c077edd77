// The journal of changes in the database's file.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ulo::odb {

// Whether the journal follows the rows of the table of this name.
bool isFollowed(std::string_view table);

// Creates the journal of the followed table, which must exist, in place of what may be left of an
// earlier one. The first entry is number `floor` + 1. Requires: a transaction, or the journal may
// be created in part. Throws Failure.
void createJournal(sqlite3* database, std::int64_t floor);

// Creates the journal of a table that was just created: from entry 1 on, or after what is left of
// the journal of an earlier table. Throws Failure.
void beginJournal(sqlite3* database);

// Gives a store a journal if the followed table has none or only a part of one. A store of an older
// version has it in a separate file in `directory`, which is deleted. Entry numbers continue after
// the old ones; readers of the old journal are told that they have missed something. Throws
// Failure.
void adoptJournal(sqlite3* database, const std::string& directory);

// Begins a new generation of the journal, after the store was replaced by another one: its first
// entry is at least number `floor` + 1. Requires: a transaction. Throws Failure.
void renewJournal(sqlite3* database, std::int64_t floor);

}  // namespace ulo::odb
