#include "statement_sql.h"

#include "base/catalog.h"
#include "base/sql_name.h"

#include <algorithm>
#include <cstdint>

namespace ulo::odb {
namespace {

// Returns a column of the statement by name. Throws Failure.
const TableColumn& columnOf(const Statement& statement, const ColumnDeclaration& wanted) {
  for (const TableColumn& column : statement.columns)
    if (column.name == wanted.name)
      return column;
  throw Failure(DB_UNKNOWN_NAME, wanted.at, "the table has no column '" + wanted.name + "'");
}

}  // namespace

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

std::string insertSql(const Statement& statement) {
  std::string names;
  std::string places;
  for (const TableColumn& column : statement.columns) {
    names += (names.empty() ? "" : ", ") + quoteName(column.name);
    places += places.empty() ? "?" : ", ?";
  }
  return "INSERT INTO " + quoteName(statement.table) + " (" + names + ") VALUES (" + places + ")";
}

}  // namespace ulo::odb
