// The journal of changes in the database's file.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ulo::odb {

// Whether the journal follows the rows of the table of this name.
bool isFollowed(std::string_view table);

// Creates the journal of the followed table, which must exist. The first entry is number
// `floor` + 1. Requires: a transaction, or the journal may be created in part. Throws Failure.
void createJournal(sqlite3* database, std::int64_t floor);

// Brings a store of an older version, whose journal was a file of its own in `directory`, up to
// date: creates the journal if the followed table has none, and deletes that file. Entry numbers
// continue after those of the file; readers that followed it are told that they have missed
// something. Throws Failure.
void adoptJournal(sqlite3* database, const std::string& directory);

// Begins a new generation of the journal, after the store was replaced by another one: its first
// entry is at least number `floor` + 1. Requires: a transaction. Throws Failure.
void renewJournal(sqlite3* database, std::int64_t floor);

}  // namespace ulo::odb
