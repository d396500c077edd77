// Finds the file of a database.
#pragma once

#include <string>

namespace ulo::odb {

// The location of a database file in the data directory.
struct StorePlace {
  std::string directory;
  std::string name;
  [[nodiscard]] std::string path() const { return directory + "/" + name; }
  [[nodiscard]] std::string log() const { return path() + "-wal"; }
};

// Returns the location of database number `database`. Throws Failure if that does not exist or
// there is no data directory.
StorePlace placeOf(int database);

// Returns true if there is a file, directory or symbolic link with this name.
bool exists(const std::string& path);

// Returns true if a file with this name exists and is not empty.
bool hasContent(const std::string& path);

// Throws Failure if a store's file is shorter than any database, or if it is missing or empty
// although other files show that there was a store: a write-ahead log with content, the journal of
// an older version, a replaced store that was kept, or the reserve. The failure names them. Opening
// would create an empty store instead.
void requireNotLost(const StorePlace& place);

}  // namespace ulo::odb
