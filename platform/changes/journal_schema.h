// The tables of the journal of changes, which is in the same file as the table it follows.
#pragma once

#include "ulo/export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ulo {

// Prefix of the names of the journal's tables and triggers.
inline constexpr char journalPrefix[] = "ulo_";

// The table whose rows the journal follows.
struct FollowedTable {
  const char* name;
  const char* uidColumn;
  const char* source;  // the source of its entries
};

// Returns the SQL statements that create the journal of `table` and its triggers. From then on
// every row that is inserted, updated or deleted adds one entry, written in the transaction of that
// change by whichever program makes it. The first entry is number `floor` + 1. The journal gets a
// new, unique generation.
[[nodiscard]] ULO_EXPORT std::vector<std::string> createJournalSql(const FollowedTable& table,
                                                                   std::int64_t floor);

// Returns the SQL statements that begin a new generation: all entries are deleted, and the next one
// is number `floor` + 1, or higher if the journal had already passed it.
[[nodiscard]] ULO_EXPORT std::vector<std::string> renewJournalSql(std::int64_t floor);

}  // namespace ulo
