#include "generation.h"

#include "sqlite/handle.h"
#include "sqlite/journal.h"

namespace ulo::odb {
namespace {

constexpr const char* hasJournalSql =
    "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'ulo_journal'";
constexpr const char* lastEntrySql = "SELECT max(ifnull((SELECT max(entry) FROM ulo_changes), 0), "
                                     "ifnull((SELECT floor FROM ulo_journal), 0))";

}  // namespace

std::int64_t lastEntry(sqlite3* database) {
  return numberOf(database, hasJournalSql) == 0 ? 0 : numberOf(database, lastEntrySql);
}

std::int64_t highestUidOfJournal(sqlite3* database) {
  return numberOf(database, hasJournalSql) == 0
             ? 0
             : numberOf(database, "SELECT max(uid) FROM ulo_changes");
}

void renewGeneration(sqlite3* database, std::int64_t floor) {
  if (numberOf(database, hasJournalSql) == 0)
    return;
  renewJournal(database, floor);
}

}  // namespace ulo::odb
