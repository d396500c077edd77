#include "store_place.h"

#include "base/failure.h"
#include "file_names.h"
#include "reserve.h"
#include "ulo/data_directory.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace ulo::odb {
namespace {

constexpr int storeNumber = 1;
constexpr const char* storeName = "tasks.db";
// The journal of version 0.1.
constexpr const char* oldJournal = "/changes.db";

// Returns the name of the most recently replaced store, or an empty name.
std::string setAside(const StorePlace& place) {
  const std::string prefix = place.name + ".";
  std::string newest;
  for (const std::string& name : fileNames(place.directory)) {
    const bool dated = name.size() > prefix.size() && name.starts_with(prefix) &&
                       std::isdigit(static_cast<unsigned char>(name[prefix.size()])) != 0;
    if (dated && name.find("-wal") == std::string::npos)
      newest = std::max(newest, name);
  }
  return newest;
}

}  // namespace

StorePlace placeOf(int database) {
  if (database != storeNumber)
    throw Failure(DB_BAD_ARGUMENT, "there is no database " + std::to_string(database));
  std::string directory = dataDirectory();
  if (directory.empty())
    throw Failure(DB_IO, std::string("there is no data directory: ") + std::strerror(errno));
  return {std::move(directory), storeName};
}

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

bool hasContent(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

void requireNotLost(const StorePlace& place) {
  const std::string path = place.path();
  if (hasContent(path)) {
    // SQLite treats the shortest of these as an empty database.
    constexpr off_t smallestDatabase = 512;
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && status.st_size < smallestDatabase)
      throw Failure(DB_CORRUPT, path + " is cut off");
    return;
  }
  std::string remains;
  if (hasContent(place.log()))
    remains = place.name + "-wal with changes to it";
  else if (hasContent(place.directory + oldJournal))
    remains = "a journal of its changes";
  else if (const std::string kept = setAside(place); !kept.empty())
    remains = kept + ", which was set aside,";
  else if (exists(place.directory + '/' + Reserve::fileName))
    remains = std::string(Reserve::fileName) + " of a store (delete it to begin an empty store)";
  if (!remains.empty())
    throw Failure(DB_CORRUPT, path + " is " + (exists(path) ? "empty" : "missing") + ", but " +
                                  remains + " is there");
}

}  // namespace ulo::odb
