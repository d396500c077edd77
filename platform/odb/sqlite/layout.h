#pragma once

#include <sqlite3.h>

#include <string>

namespace ulo::odb {

// Throws Failure if the file of a connection that has not read anything yet has a layout that this
// program does not know (store_layout.h): DB_IO if a newer program has written it, and DB_CORRUPT
// if the number cannot be a version. Changes nothing. `name` names the file in the message.
void requireKnownLayout(sqlite3* database, const std::string& name);

}  // namespace ulo::odb
