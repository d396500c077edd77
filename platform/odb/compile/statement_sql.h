// The SQL of statements.
#pragma once

#include "script/ast.h"

#include <string>

namespace ulo::odb {

// Both throw Failure if the table would have no key, or more than one.
std::string createTableSql(const Statement& statement);
std::string createIndexSql(const Statement& statement);
// The values are the parameters, in the order of the statement's columns.
std::string insertSql(const Statement& statement);

}  // namespace ulo::odb
