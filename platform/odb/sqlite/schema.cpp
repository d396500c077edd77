#include "schema.h"

#include "statement.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace ulo::odb {
namespace {

// Preparing a statement takes longer than running it, so one reads the columns of all tables and
// one the indexes.
std::vector<Table> readTables(sqlite3* database) {
  std::vector<Table> tables;
  SqlStatement columns(database,
                       "SELECT t.name, c.name, c.type, c.pk FROM (SELECT name FROM sqlite_schema "
                       "WHERE " +
                           std::string(tablesOfPrograms) +
                           ") t, pragma_table_info(t.name) c ORDER BY t.name, c.cid");
  while (columns.step()) {
    const std::string name = columns.text(0);
    if (tables.empty() || tables.back().name != name)
      tables.emplace_back().name = name;
    Table& table = tables.back();
    if (columns.integer(3) != 0)
      table.uid = static_cast<int>(table.columns.size());
    table.columns.push_back({columns.text(1), typeOfDeclaration(columns.text(2))});
  }
  return tables;
}

void readIndexes(sqlite3* database, std::vector<Table>& tables) {
  SqlStatement keys(database,
                    "SELECT t.name, i.name, k.cid, k.\"desc\" FROM (SELECT name FROM sqlite_schema "
                    "WHERE " +
                        std::string(tablesOfPrograms) +
                        ") t, pragma_index_list(t.name) i, pragma_index_xinfo(i.name) k "
                        "WHERE i.origin = 'c' AND k.key ORDER BY t.name, i.name, k.seqno");
  auto table = tables.begin();
  while (keys.step()) {
    const std::string tableName = keys.text(0);
    table = std::find_if(table, tables.end(),
                         [&](const Table& each) { return each.name == tableName; });
    if (table == tables.end())
      return;
    const std::string name = keys.text(1);
    if (table->indexes.empty() || table->indexes.back().name != name)
      table->indexes.emplace_back().name = name;
    const auto cid = static_cast<int>(keys.integer(2));
    table->indexes.back().key.push_back({cid < 0 ? table->uid : cid, keys.integer(3) != 0});
  }
}

}  // namespace

Catalog readCatalog(sqlite3* database) {
  std::vector<Table> tables = readTables(database);
  readIndexes(database, tables);
  return Catalog(std::move(tables));
}

std::vector<std::string> schemaStatements(sqlite3* database) {
  std::vector<std::string> statements;
  SqlStatement schema(database,
                      "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid");
  while (schema.step())
    statements.push_back(schema.text(0));
  return statements;
}

}  // namespace ulo::odb
