#include "catalog_sql.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace ulo::odb {
namespace {

// Reads SQL in the form that createTableSql and createIndexSql write.
class SqlReader {
public:
  explicit SqlReader(std::string_view sql) : rest_(sql) {}

  [[nodiscard]] std::string_view rest() const { return rest_; }
  bool take(std::string_view part) {
    if (rest_.substr(0, part.size()) != part)
      return false;
    rest_.remove_prefix(part.size());
    return true;
  }
  // Reads a name as quoteName writes it.
  bool takeName(std::string& name) {
    name.clear();
    if (!take("\""))
      return false;
    for (;;) {
      const std::size_t quote = rest_.find('"');
      if (quote == std::string_view::npos)
        return false;
      name += rest_.substr(0, quote);
      rest_.remove_prefix(quote + 1);
      if (!take("\""))
        return true;
      name += '"';
    }
  }
  // Reads the declaration of a column.
  bool takeDeclaration(Type& type) {
    std::string_view declaration = rest_.substr(0, rest_.find_first_of(",)"));
    declaration = declaration.substr(0, declaration.find(" PRIMARY KEY "));
    type = typeOfDeclaration(declaration);
    return take(declaration) && declaration == declarationOf(type);
  }

private:
  std::string_view rest_;
};

// Returns true if SQL begins with the name of a table that texts may not use. SQLite compares names
// without regard to case.
bool isReserved(std::string_view sql) {
  const auto beginsWith = [sql](std::string_view name) {
    return sql.size() >= name.size() &&
           std::equal(name.begin(), name.end(), sql.begin(), [](char letter, char other) {
             return letter == (other >= 'A' && other <= 'Z' ? other - 'A' + 'a' : other);
           });
  };
  return beginsWith("sqlite_") || beginsWith("ulo_");
}

// Follows CREATE TABLE.
bool readTable(SqlReader sql, Table& table) {
  if (!sql.takeName(table.name) || isReserved(table.name) || !sql.take(" ("))
    return false;
  table.uid = -1;
  do {
    Column column;
    if (!sql.takeName(column.name) || !sql.take(" ") || !sql.takeDeclaration(column.type))
      return false;
    if (sql.take(" PRIMARY KEY AUTOINCREMENT CHECK (")) {
      std::string checked;
      if (!sql.takeName(checked) || checked != column.name ||
          !sql.take(" <= " + std::to_string(INT32_MAX) + ")") || table.uid >= 0)
        return false;
      table.uid = static_cast<int>(table.columns.size());
    }
    table.columns.push_back(std::move(column));
  } while (sql.take(", "));
  return sql.take(")") && sql.rest().empty() && table.uid >= 0;
}

// Follows CREATE INDEX.
bool readIndex(SqlReader sql, std::vector<Table>& tables) {
  Index index;
  std::string name;
  if (!sql.takeName(index.name) || !sql.take(" ON ") || !sql.takeName(name) || !sql.take(" ("))
    return false;
  const auto table = std::find_if(tables.begin(), tables.end(),
                                  [&](const Table& each) { return each.name == name; });
  if (table == tables.end())
    return false;
  do {
    if (!sql.takeName(name) || table->find(name) < 0)
      return false;
    index.key.push_back({table->find(name), sql.take(" DESC")});
  } while (sql.take(", "));
  table->indexes.push_back(std::move(index));
  return sql.take(")") && sql.rest().empty();
}

}  // namespace

std::optional<Catalog> catalogFromSql(const std::vector<std::string>& statements) {
  std::vector<Table> tables;
  for (const std::string& statement : statements) {
    SqlReader sql(statement);
    if (sql.take("CREATE TRIGGER "))
      continue;
    if (sql.take("CREATE TABLE ")) {
      if (!isReserved(sql.rest()) && !readTable(sql, tables.emplace_back()))
        return std::nullopt;
    } else if (!sql.take("CREATE INDEX ") || !readIndex(sql, tables)) {
      return std::nullopt;
    }
  }
  return Catalog(std::move(tables));
}

}  // namespace ulo::odb
