// Locks and replaces a database file that no connection has open.
#pragma once

#include "base/line_sink.h"
#include "sqlite/store_place.h"
#include "ulo/descriptor.h"

#include <string>

namespace ulo::odb {

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
