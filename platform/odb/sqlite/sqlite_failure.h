// Failures of SQLite and of the file system.
#pragma once

#include "base/failure.h"

#include <sqlite3.h>

#include <string>

namespace ulo::odb {

// Returns SQLite's last error on this connection as a Failure. `what` describes the operation.
Failure sqliteFailure(sqlite3* database, const std::string& what);
// Returns the Failure for a result code that SQLite did not store as the connection's last error.
Failure sqliteFailure(sqlite3* database, int result, const std::string& what);

// Returns true if a system error means that there is no space: on the disk, in the user's quota, or
// within the maximum file size.
bool isFull(int systemError);
// Describes such an error to the user.
std::string fullReason(const std::string& file, int systemError);

}  // namespace ulo::odb
