// A database file that no connection has open: finding, locking and replacing it.
#pragma once

#include "descriptor.h"
#include "script/failure.h"
#include "sqlite/statement.h"

#include <functional>
#include <memory>
#include <string>

namespace ulo::odb {

// Receives what is to be said to the user, one sentence or finding at a time.
using Report = std::function<void(const std::string&)>;

struct CloseHandle {
  void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

// Opens a database file that exists. Throws Failure.
Handle openFile(const std::string& path, int flags = SQLITE_OPEN_READWRITE);

void execute(sqlite3* database, const std::string& sql);
std::int64_t numberOf(sqlite3* database, const std::string& sql);

// The file of a database in the data directory.
struct StorePlace {
  std::string directory;
  std::string name;
  [[nodiscard]] std::string path() const { return directory + "/" + name; }
  [[nodiscard]] std::string log() const { return path() + "-wal"; }
};

// Database number `database`; throws Failure if there is none or no data directory.
StorePlace placeOf(int database);

// Whether there is a file of this name that is not empty.
bool hasContent(const std::string& path);

// Throws a Failure if the file of a store is shorter than any database, or if it is missing or
// empty although other files show that there was a store: a write-ahead log with content, the
// journal of an older version, a store that was set aside, or the reserve. The failure names them.
// Opening would begin an empty store instead.
void requireNotLost(const StorePlace& place);

// Keeps all programs out of a store while the object lives: none has it open, and none can open
// it. The file itself may be missing. Throws a Failure with DB_BUSY if a program has it open.
class StoreLock {
public:
  explicit StoreLock(const StorePlace& place);

private:
  Descriptor directory_;
  Descriptor file_;
};

// A new, empty file in the directory of a store, readable by the owner only. Deleted with the
// object unless it was put in place.
class FreshFile {
public:
  // The name is `prefix` followed by letters and digits.
  explicit FreshFile(const std::string& prefix);
  FreshFile(const FreshFile&) = delete;
  FreshFile& operator=(const FreshFile&) = delete;
  ~FreshFile();

  [[nodiscard]] const std::string& path() const { return path_; }
  // Flushes the file and renames it to `target`, which is replaced only if `overwrite`; fails with
  // DB_CONSTRAINT if it exists otherwise. Survives a power cut.
  void moveTo(const std::string& target, bool overwrite);

private:
  std::string path_;
};

// The prefix for the fresh files of a store. Files that an interrupted run has left are deleted;
// requires the lock.
std::string freshPrefix(const StorePlace& place);

// Sets the store's file and its write-ahead log aside under a name with the current time, and puts
// `fresh` in their place. Returns that name, or an empty one if there was no file. Requires the
// lock.
std::string putInPlace(const StorePlace& place, FreshFile& fresh);

// Moves the content of the write-ahead log into the file, if no program is using it and the file is
// sound enough. Must be called without the lock.
void foldLog(const StorePlace& place);

// Reads or copies whole files. Throw Failure.
std::string contentOf(const std::string& path);
void writeContent(const std::string& path, const std::string& content);

}  // namespace ulo::odb
