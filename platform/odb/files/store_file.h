// Finds, locks and replaces a database file that no connection has open.
#pragma once

#include "base/failure.h"
#include "descriptor.h"
#include "sqlite/statement.h"

#include <functional>
#include <memory>
#include <string>

namespace ulo::odb {

// Receives messages for the user, one sentence or finding at a time.
using Report = std::function<void(const std::string&)>;

struct CloseHandle {
  void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

// Opens an existing database file. Throws Failure.
Handle openFile(const std::string& path, int flags = SQLITE_OPEN_READWRITE);

void execute(sqlite3* database, const std::string& sql);
std::int64_t numberOf(sqlite3* database, const std::string& sql);

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

// Returns true if a file with this name exists and is not empty.
bool hasContent(const std::string& path);

// Throws Failure if a store's file is shorter than any database, or if it is missing or empty
// although other files show that there was a store: a write-ahead log with content, the journal of
// an older version, a replaced store that was kept, or the reserve. The failure names them. Opening
// would create an empty store instead.
void requireNotLost(const StorePlace& place);

// Locks a store while the object exists: no program has it open, and none can open it. The file
// itself may be missing. Throws Failure, with DB_BUSY if a program has it open.
class StoreLock {
public:
  explicit StoreLock(const StorePlace& place);

private:
  Descriptor directory_;
  Descriptor file_;
};

// A new, empty file, readable only by its owner. The destructor deletes it unless it was put in
// place.
class FreshFile {
public:
  // The name is `prefix` followed by letters and digits.
  explicit FreshFile(const std::string& prefix);
  FreshFile(const FreshFile&) = delete;
  FreshFile& operator=(const FreshFile&) = delete;
  ~FreshFile();

  [[nodiscard]] const std::string& path() const { return path_; }
  // Flushes the file to disk and renames it to `target`. If `target` exists, replaces it if
  // `overwrite` is set, and throws Failure(DB_CONSTRAINT) otherwise. Survives a power failure.
  void moveTo(const std::string& target, bool overwrite);

private:
  std::string path_;
};

// Returns the name prefix for a store's fresh files. Deletes such files left by an interrupted run.
// Requires the lock.
std::string freshPrefix(const StorePlace& place);

// Renames the store's file and its write-ahead log to a name with the current time, and puts
// `fresh` in their place. Returns that name, or an empty string if there was no file. Requires the
// lock.
std::string putInPlace(const StorePlace& place, FreshFile& fresh);

// Moves the content of the write-ahead log into the file if no program uses it and the file is
// sound enough. The lock must not be held.
void foldLog(const StorePlace& place);

// Read and write whole files. Throw Failure.
std::string contentOf(const std::string& path);
void writeContent(const std::string& path, const std::string& content);

}  // namespace ulo::odb
