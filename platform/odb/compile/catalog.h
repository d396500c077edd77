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
  int uid = 0;  // the column that the database numbers, which is the table's key
  std::vector<Index> indexes;

  // Returns the index of the column, or -1 if there is none with that name.
  [[nodiscard]] int find(std::string_view column) const;
};

// The rows that a cursor traverses: a table in the order of its UIDs, or an index in its own order.
struct Source {
  std::shared_ptr<const Table> table;
  std::vector<KeyColumn> key;
};

// Returns a name without the qualifier "main.", which means this database.
std::string_view localName(std::string_view name);

// A snapshot of the tables of a database.
class Catalog {
public:
  // SQL condition that selects the tables available to texts from SQLite's schema: neither SQLite's
  // own tables nor those of the journal of changes.
  static constexpr char tablesOfPrograms[] = "type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE "
                                             "'\\' AND name NOT LIKE 'ulo\\_%' ESCAPE "
                                             "'\\'";

  // Throws Failure.
  explicit Catalog(sqlite3* database);

  // Returns null if there is no table with that name.
  [[nodiscard]] std::shared_ptr<const Table> table(std::string_view name) const;
  // Returns the source for a table or an index. Its `table` is null if neither exists.
  [[nodiscard]] Source source(std::string_view name) const;

private:
  std::vector<std::shared_ptr<const Table>> tables_;
};

// Return the SQL of a create statement. Throw Failure.
std::string createTableSql(const Statement& statement);
std::string createIndexSql(const Statement& statement);

}  // namespace ulo::odb
