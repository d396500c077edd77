#include "store_file.h"

#include "base/failure.h"
#include "file_lock.h"
#include "file_names.h"
#include "files/memory_size.h"
#include "sqlite/handle.h"
#include "sqlite/sqlite_failure.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo::odb {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds directoryPatience{10};

// The byte range that SQLite locks in a database file: an open connection holds a read lock in it.
constexpr off_t lockRangeStart = 0x40000000;
constexpr off_t lockRangeLength = 512;

Failure storeFailure(const std::string& what) {
  const DB_Result code = isFull(errno) ? DB_FULL : DB_IO;
  return {code, what + ": " + std::strerror(errno)};
}

void syncDirectory(const std::string& directory) {
  const Descriptor descriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.isOpen())
    static_cast<void>(fsync(descriptor.get()));
}

std::string directoryOf(const std::string& path) {
  const std::string parent = fs::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}

void rename(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0)
    throw storeFailure(to);
}

// Renames a file unless the new name exists.
void renameToNew(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    return;
  if (errno == EEXIST)
    throw Failure(DB_CONSTRAINT, to + ": " + std::strerror(errno));
  // Not every file system supports this.
  if (errno != EINVAL && errno != ENOSYS)
    throw storeFailure(to);
  if (exists(to))
    throw Failure(DB_CONSTRAINT, to + ": " + std::strerror(EEXIST));
  rename(from, to);
}

// Returns a name next to the store that contains the current time.
std::string keptName(const StorePlace& place) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), ".%Y%m%d-%H%M%S", &local);
  const std::string base = place.path() + text.data();
  std::string name = base;
  for (int i = 2; exists(name) || exists(name + "-wal"); ++i)
    name = base + "." + std::to_string(i);
  return name;
}

}  // namespace

StoreLock::StoreLock(const StorePlace& place)
    : directory_(open(place.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (!directory_.isOpen())
    throw storeFailure(place.directory);
  // Every program holds this lock while it opens the store.
  if (!lockWithin(directory_.get(), directoryPatience))
    throw Failure(DB_BUSY, "another program is opening the store in " + place.directory);
  file_.reset(open(place.path().c_str(), O_RDWR | O_CLOEXEC));
  if (!file_.isOpen()) {
    if (errno == ENOENT)
      return;
    throw storeFailure(place.path());
  }
  struct flock range {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  range.l_start = lockRangeStart;
  range.l_len = lockRangeLength;
  if (fcntl(file_.get(), F_OFD_SETLK, &range) == 0)
    return;
  const int reason = errno;
  // If this process itself has the store open, closing the file would release SQLite's locks.
  file_.release();
  errno = reason;
  if (reason == EAGAIN || reason == EACCES)
    throw Failure(DB_BUSY, "another program has the store in " + place.directory + " open");
  throw storeFailure("locking " + place.path());
}

FreshFile::FreshFile(const std::string& prefix) : path_(prefix + "XXXXXX") {
  const Descriptor made(mkostemp(path_.data(), O_CLOEXEC));
  if (!made.isOpen())
    throw storeFailure(directoryOf(prefix));
}

FreshFile::~FreshFile() {
  if (path_.empty())
    return;
  for (const char* suffix : {"", "-journal", "-wal", "-shm"})
    unlink((path_ + suffix).c_str());
}

void FreshFile::moveTo(const std::string& target, bool overwrite) {
  {
    const Descriptor file(open(path_.c_str(), O_RDWR | O_CLOEXEC));
    if (!file.isOpen() || fsync(file.get()) != 0)
      throw storeFailure(path_);
  }
  if (overwrite)
    rename(path_, target);
  else
    renameToNew(path_, target);
  path_.clear();
  syncDirectory(directoryOf(target));
}

std::string freshPrefix(const StorePlace& place) {
  const std::string name = place.name + ".new-";
  for (const std::string& found : fileNames(place.directory))
    if (found.starts_with(name))
      unlink((place.directory + "/" + found).c_str());
  return place.directory + "/" + name;
}

std::string putInPlace(const StorePlace& place, FreshFile& fresh) {
  const std::string path = place.path();
  const std::string log = place.log();
  std::string kept;
  if (exists(path) || hasContent(log)) {
    kept = keptName(place);
    // Without a log a single rename replaces the store, so there is always a complete one. With a
    // log there is none for a moment; a program that opens it then reports that (requireNotLost).
    const bool linked = !hasContent(log) && exists(path) && link(path.c_str(), kept.c_str()) == 0;
    if (!linked && exists(path))
      rename(path, kept);
    if (hasContent(log))
      rename(log, kept + "-wal");
    else
      unlink(log.c_str());
    unlink((path + "-shm").c_str());
    syncDirectory(place.directory);
  }
  fresh.moveTo(path, true);
  return kept;
}

void foldLog(const StorePlace& place) {
  if (!hasContent(place.path()) || !hasContent(place.log()))
    return;
  try {
    const Handle handle = openFile(place.path());
    sqlite3_busy_timeout(handle.get(), 0);
    execute(handle.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
  } catch (const Failure&) {
    // The log is then kept with the file.
  }
}

std::string contentOf(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0)
    throw storeFailure(path);
  std::string content(memorySize(static_cast<std::uint64_t>(status.st_size)), '\0');
  std::size_t got = 0;
  while (got < content.size()) {
    const ssize_t count = read(file.get(), content.data() + got, content.size() - got);
    if (count < 0 && errno != EINTR)
      throw storeFailure(path);
    if (count == 0)
      break;
    got += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  content.resize(got);
  return content;
}

void writeContent(const std::string& path, const std::string& content) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!file.isOpen())
    throw storeFailure(path);
  for (std::size_t done = 0; done < content.size();) {
    const ssize_t count = write(file.get(), content.data() + done, content.size() - done);
    if (count < 0 && errno != EINTR)
      throw storeFailure(path);
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
}

}  // namespace ulo::odb
