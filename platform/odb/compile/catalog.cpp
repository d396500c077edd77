#include "catalog.h"

#include "sqlite/binding.h"
#include "sqlite/statement.h"

#include <algorithm>
#include <cstdint>

namespace ulo::odb {
namespace {

// Column declarations in the file. The added words determine SQLite's type affinity: "UNICODE"
// alone would turn the text "007" into a number.
struct Declaration {
  Type type;
  const char* sql;
};
constexpr Declaration declarations[] = {
    {Type::integer, "INTEGER"},
    {Type::boolean, "BOOL INTEGER"},
    {Type::unicode, "UNICODE TEXT"},
    {Type::varchar, "VARCHAR TEXT"},
};

const char* declarationOf(Type type) {
  return std::find_if(std::begin(declarations), std::end(declarations),
                      [&](const Declaration& d) { return d.type == type; })
      ->sql;
}

Type typeOf(const std::string& declaration) {
  const auto* found = std::find_if(std::begin(declarations), std::end(declarations),
                                   [&](const Declaration& d) { return declaration == d.sql; });
  return found == std::end(declarations) ? Type::integer : found->type;
}

// Returns a column of the statement by name. Throws Failure.
const TableColumn& columnOf(const Statement& statement, const ColumnDeclaration& wanted) {
  for (const TableColumn& column : statement.columns)
    if (column.name == wanted.name)
      return column;
  throw Failure(DB_UNKNOWN_NAME, wanted.at, "the table has no column '" + wanted.name + "'");
}

Table readTable(sqlite3* database, const std::string& name) {
  Table table;
  table.name = name;
  SqlStatement columns(database, "SELECT name, type, pk FROM pragma_table_info(?) ORDER BY cid");
  bind(columns, 1, {Type::varchar, 0, name}, Type::varchar);
  while (columns.step()) {
    if (columns.integer(2) != 0)
      table.uid = static_cast<int>(table.columns.size());
    table.columns.push_back({columns.text(0), typeOf(columns.text(1))});
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

int Table::find(std::string_view column) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const Column& c) { return c.name == column; });
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

std::string_view localName(std::string_view name) {
  constexpr std::string_view qualifier = "main.";
  return name.substr(0, qualifier.size()) == qualifier ? name.substr(qualifier.size()) : name;
}

Catalog::Catalog(sqlite3* database) {
  SqlStatement names(database, "SELECT name FROM sqlite_schema WHERE " +
                                   std::string(Catalog::tablesOfPrograms) + " ORDER BY name");
  while (names.step())
    tables_.push_back(std::make_shared<const Table>(readTable(database, names.text(0))));
}

std::shared_ptr<const Table> Catalog::table(std::string_view name) const {
  name = localName(name);
  const auto found = std::find_if(tables_.begin(), tables_.end(),
                                  [&](const auto& table) { return table->name == name; });
  return found == tables_.end() ? nullptr : *found;
}

Source Catalog::source(std::string_view name) const {
  if (auto found = table(name))
    return {found, {{found->uid, false}}};
  name = localName(name);
  for (const auto& table : tables_)
    for (const Index& index : table->indexes)
      if (index.name == name)
        return {table, index.key};
  return {};
}

std::string createTableSql(const Statement& statement) {
  const auto automatic = std::find_if(statement.columns.begin(), statement.columns.end(),
                                      [](const TableColumn& column) { return column.automatic; });
  if (automatic == statement.columns.end() || automatic->type != Type::integer)
    throw Failure(DB_SYNTAX, statement.tableAt,
                  "a table needs a column of type 'integer auto', its key");
  for (const ColumnDeclaration& column : statement.unique)
    if (columnOf(statement, column).name != automatic->name)
      throw Failure(DB_SYNTAX, column.at,
                    "the unique key is the column '" + automatic->name + "' and no other");
  std::string sql = "CREATE TABLE " + quoteName(statement.table) + " (";
  for (const TableColumn& column : statement.columns) {
    if (column.automatic && &column != &*automatic)
      throw Failure(DB_SYNTAX, column.at, "a table has one 'auto' column");
    if (&column != &statement.columns.front())
      sql += ", ";
    sql += quoteName(column.name) + " " + declarationOf(column.type);
    // Numbers are never reused, and fit into the int of the C interface.
    if (column.automatic)
      sql += " PRIMARY KEY AUTOINCREMENT CHECK (" + quoteName(column.name) +
             " <= " + std::to_string(INT32_MAX) + ")";
  }
  return sql + ")";
}

std::string createIndexSql(const Statement& statement) {
  std::string sql =
      "CREATE INDEX " + quoteName(statement.index) + " ON " + quoteName(statement.table) + " (";
  for (const IndexColumn& column : statement.indexColumns) {
    if (&column != &statement.indexColumns.front())
      sql += ", ";
    sql += quoteName(column.name) + (column.descending ? " DESC" : "");
  }
  return sql + ")";
}

}  // namespace ulo::odb
