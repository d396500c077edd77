#include "catalog.h"

#include <algorithm>
#include <iterator>

namespace ulo::odb {
namespace {

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

}  // namespace

const char* declarationOf(Type type) {
  return std::find_if(std::begin(declarations), std::end(declarations),
                      [&](const Declaration& d) { return d.type == type; })
      ->sql;
}

Type typeOfDeclaration(std::string_view declaration) {
  const auto* found = std::find_if(std::begin(declarations), std::end(declarations),
                                   [&](const Declaration& d) { return declaration == d.sql; });
  return found == std::end(declarations) ? Type::integer : found->type;
}

int Table::find(std::string_view column) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const Column& c) { return c.name == column; });
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

std::string_view localName(std::string_view name) {
  constexpr std::string_view qualifier = "main.";
  return name.substr(0, qualifier.size()) == qualifier ? name.substr(qualifier.size()) : name;
}

Catalog::Catalog(std::vector<Table> tables) {
  for (Table& table : tables)
    tables_.push_back(std::make_shared<const Table>(std::move(table)));
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

}  // namespace ulo::odb
