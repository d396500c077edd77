// The journal of changes in the database file.
#pragma once

#include "journal_schema.h"

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ulo::odb {

// The table of the tasks, which the journal follows.
inline constexpr FollowedTable followedTable{"task_table_task", "UID",
                                             "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}"};

// Returns true if the journal follows the rows of the table with this name.
bool isFollowed(std::string_view table);

// Creates the journal of the followed table, which must exist, and replaces any remains of an
// earlier one. The first entry is number `floor` + 1. Requires a transaction, or the journal may be
// created only in part. Throws Failure.
void createJournal(sqlite3* database, std::int64_t floor);

// Creates the journal of a table that was just created. Entries start at 1, or after the remains of
// an earlier table's journal. Throws Failure.
void beginJournal(sqlite3* database);

// Creates the journal if the followed table has none or only part of one. Stores of an older
// version have it in a separate file in `directory`, which is deleted. Entry numbers continue after
// the old ones; readers of the old journal are told that they have missed changes. Throws Failure.
void adoptJournal(sqlite3* database, const std::string& directory);

// Begins a new generation of the journal after the store has been replaced. Its first entry is at
// least number `floor` + 1. Requires a transaction. Throws Failure.
void renewJournal(sqlite3* database, std::int64_t floor);

}  // namespace ulo::odb
