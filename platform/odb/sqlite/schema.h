// Reads the tables of a database from SQLite's schema.
#pragma once

#include "base/catalog.h"

#include <sqlite3.h>

#include <string>
#include <vector>

namespace ulo::odb {

// SQL condition that selects the tables available to texts from SQLite's schema: neither SQLite's
// own tables nor those of the journal of changes.
inline constexpr char tablesOfPrograms[] = "type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE "
                                           "'\\' AND name NOT LIKE 'ulo\\_%' ESCAPE "
                                           "'\\'";

// Throws Failure.
Catalog readCatalog(sqlite3* database);

// Returns the SQL of all tables, indexes and triggers. It is the same for two databases only if
// they have the same tables. Throws Failure.
std::vector<std::string> schemaStatements(sqlite3* database);

}  // namespace ulo::odb
