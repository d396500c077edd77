#pragma once

#include "type.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

struct Column {
  std::string name;
  Type type = Type::integer;  // integer, boolean, unicode or varchar
};

// A column's type as the file declares it. SQLite derives the type affinity from these words: from
// "UNICODE" alone it would turn the text "007" into a number. Other declarations are integers.
const char* declarationOf(Type type);
Type typeOfDeclaration(std::string_view declaration);

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

// The tables that texts may use, as they were when the catalog was read.
class Catalog {
public:
  explicit Catalog(std::vector<Table> tables);

  // Returns null if there is no table with that name.
  [[nodiscard]] std::shared_ptr<const Table> table(std::string_view name) const;
  // Returns the source for a table or an index. Its `table` is null if neither exists.
  [[nodiscard]] Source source(std::string_view name) const;

private:
  std::vector<std::shared_ptr<const Table>> tables_;
};

}  // namespace ulo::odb
