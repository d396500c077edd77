#pragma once

#include "script/ast.h"

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

struct Column {
  std::string name;
  Type type = Type::integer;  // integer, boolean, unicode or varchar
};

struct KeyColumn {
  int column = 0;  // of the table
  bool descending = false;
};

struct Index {
  std::string name;
  std::vector<KeyColumn> key;
};

struct Table {
  std::string name;
  std::vector<Column> columns;
  int uid = 0;  // the column that the database numbers; the table's key
  std::vector<Index> indexes;

  // Place of the column, -1 when there is none of that name.
  [[nodiscard]] int find(std::string_view column) const;
};

// What a cursor walks over: a table in the order of its UIDs, or an index in its own order.
struct Source {
  std::shared_ptr<const Table> table;
  std::vector<KeyColumn> key;
};

// A name without the qualifier "main.", which means this database.
std::string_view localName(std::string_view name);

// The tables of a database as they stood when the catalog was made.
class Catalog {
public:
  // What selects from SQLite's schema the tables that texts can name: neither SQLite's own nor
  // those of the journal of changes.
  static constexpr char tablesOfPrograms[] = "type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE "
                                             "'\\' AND name NOT LIKE 'ulo\\_%' ESCAPE "
                                             "'\\'";

  // Throws Failure.
  explicit Catalog(sqlite3* database);

  // Null when there is no table of that name.
  [[nodiscard]] std::shared_ptr<const Table> table(std::string_view name) const;
  // Of a table or an index; `table` is null when there is neither.
  [[nodiscard]] Source source(std::string_view name) const;

private:
  std::vector<std::shared_ptr<const Table>> tables_;
};

// The SQL of a create statement. Throws Failure.
std::string createTableSql(const Statement& statement);
std::string createIndexSql(const Statement& statement);

}  // namespace ulo::odb
