#pragma once

#include "catalog.h"

#include <optional>
#include <string>
#include <vector>

namespace ulo::odb {

// Returns the catalog of a database whose tables and indexes were created by the statements of this
// database's language, from the SQL in SQLite's schema. This takes far less time than asking SQLite
// for the columns. Returns nothing if any statement has another form; it may then be anything that
// SQLite accepts.
std::optional<Catalog> catalogFromSql(const std::vector<std::string>& statements);

}  // namespace ulo::odb
