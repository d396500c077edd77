// The tables of the journal of changes, which lies in the file of the table that it follows.
#pragma once

#include "export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ulo {

// Names of the journal's tables and triggers begin with this.
inline constexpr char journalPrefix[] = "ulo_";

// The table whose rows the journal follows.
struct FollowedTable {
  const char* name;
  const char* uidColumn;
  const char* source;  // the source of its entries
};

// The SQL statements that create the journal of `table` and its triggers. From then on each row
// that is inserted, updated or deleted is one entry, written in the transaction of that change by
// whichever program makes it. The first entry is number `floor` + 1. The journal gets a generation
// that no other journal has.
[[nodiscard]] ULO_EXPORT std::vector<std::string> createJournalSql(const FollowedTable& table,
                                                                   std::int64_t floor);

// The SQL statements that begin a new generation: all entries are forgotten, and the next one is
// number `floor` + 1, or higher if the journal was already beyond it.
[[nodiscard]] ULO_EXPORT std::vector<std::string> renewJournalSql(std::int64_t floor);

}  // namespace ulo
