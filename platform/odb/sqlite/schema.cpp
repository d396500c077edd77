#include "schema.h"

#include "binding.h"
#include "statement.h"

#include <memory>
#include <utility>
#include <vector>

namespace ulo::odb {
namespace {

Table readTable(sqlite3* database, const std::string& name) {
  Table table;
  table.name = name;
  SqlStatement columns(database, "SELECT name, type, pk FROM pragma_table_info(?) ORDER BY cid");
  bind(columns, 1, {Type::varchar, 0, name}, Type::varchar);
  while (columns.step()) {
    if (columns.integer(2) != 0)
      table.uid = static_cast<int>(table.columns.size());
    table.columns.push_back({columns.text(0), typeOfDeclaration(columns.text(1))});
  }
  SqlStatement indexes(database,
                       "SELECT name FROM pragma_index_list(?) WHERE origin = 'c' ORDER BY name");
  bind(indexes, 1, {Type::varchar, 0, name}, Type::varchar);
  while (indexes.step()) {
    Index index;
    index.name = indexes.text(0);
    SqlStatement key(database,
                     "SELECT cid, \"desc\" FROM pragma_index_xinfo(?) WHERE key ORDER BY seqno");
    bind(key, 1, {Type::varchar, 0, index.name}, Type::varchar);
    while (key.step()) {
      const auto cid = static_cast<int>(key.integer(0));
      index.key.push_back({cid < 0 ? table.uid : cid, key.integer(1) != 0});
    }
    table.indexes.push_back(std::move(index));
  }
  return table;
}

}  // namespace

Catalog readCatalog(sqlite3* database) {
  std::vector<std::shared_ptr<const Table>> tables;
  SqlStatement names(database, "SELECT name FROM sqlite_schema WHERE " +
                                   std::string(tablesOfPrograms) + " ORDER BY name");
  while (names.step())
    tables.push_back(std::make_shared<const Table>(readTable(database, names.text(0))));
  return Catalog(std::move(tables));
}

std::string schemaText(sqlite3* database) {
  SqlStatement statement(database, "SELECT group_concat(sql, char(10)) FROM (SELECT sql FROM "
                                   "sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid)");
  return statement.step() ? statement.text(0) : std::string();
}

}  // namespace ulo::odb
