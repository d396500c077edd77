#include "journal_schema.h"

#include "ulo/change_journal.h"

#include <utility>

namespace ulo {
namespace {

constexpr const char* newGeneration = "lower(hex(randomblob(16)))";
// Numbers continue after pruning: the floor is the last number deleted.
constexpr const char* nextEntry =
    "max((SELECT ifnull(max(entry), 0) FROM ulo_changes), (SELECT floor FROM ulo_journal)) + 1";

std::string trigger(const FollowedTable& table, const char* event, const char* row,
                    ChangeType type) {
  return std::string("CREATE TRIGGER ulo_after_") + event + " AFTER " + event + " ON \"" +
         table.name + "\" BEGIN INSERT INTO ulo_changes (entry, time, uid, type) VALUES (" +
         nextEntry + ", unixepoch(), " + row + ".\"" + table.uidColumn + "\", " +
         std::to_string(static_cast<int>(type)) + "); END";
}

}  // namespace

std::vector<std::string> createJournalSql(const FollowedTable& table, std::int64_t floor) {
  return {
      "CREATE TABLE ulo_journal (generation TEXT NOT NULL, floor INTEGER NOT NULL, "
      "source TEXT NOT NULL)",
      std::string("INSERT INTO ulo_journal VALUES (") + newGeneration + ", " +
          std::to_string(floor) + ", '" + table.source + "')",
      "CREATE TABLE ulo_changes (entry INTEGER PRIMARY KEY, time INTEGER NOT NULL, "
      "uid INTEGER NOT NULL, type INTEGER NOT NULL)",
      trigger(table, "INSERT", "NEW", ChangeType::added),
      trigger(table, "UPDATE", "NEW", ChangeType::updated),
      trigger(table, "DELETE", "OLD", ChangeType::removed),
  };
}

std::vector<std::string> renewJournalSql(std::int64_t floor) {
  return {
      std::string("UPDATE ulo_journal SET generation = ") + newGeneration + ", floor = max(" +
          std::to_string(floor) + ", " + nextEntry + " - 1)",
      "DELETE FROM ulo_changes",
  };
}

}  // namespace ulo
