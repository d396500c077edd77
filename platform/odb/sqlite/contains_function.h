#pragma once

#include <sqlite3.h>

namespace ulo::odb {

// Adds the SQL function `containsFunction` to a connection. Its arguments are a column of 16-bit
// units and a text that was bound for such a column; it returns whether the column contains the
// text, 0 if one of them is null. Throws Failure.
void addContainsFunction(sqlite3* database);

}  // namespace ulo::odb
