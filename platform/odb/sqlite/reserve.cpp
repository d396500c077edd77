#include "reserve.h"

#include "ulo/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace ulo::odb {
namespace {

// Enough for SQLite's shared memory and the log of some deletions.
constexpr off_t reserveSize = 256L * 1024;
constexpr off_t smallestReserve = 32L * 1024;
// Free space required to create the reserve: the last free space of a disk belongs to the user.
constexpr off_t plenty = 4 * reserveSize;

// Returns the free space available to this user.
off_t roomOf(const std::string& directory) {
  struct statvfs system {};
  if (statvfs(directory.c_str(), &system) != 0)
    return 0;
  return static_cast<off_t>(system.f_bavail) * static_cast<off_t>(system.f_frsize);
}

bool make(const std::string& path, off_t size) {
  const Descriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file.isOpen())
    return false;
  if (posix_fallocate(file.get(), 0, size) == 0)
    return true;
  unlink(path.c_str());
  return false;
}

}  // namespace

void Reserve::keep() const noexcept {
  struct stat status {};
  if (lstat(path_.c_str(), &status) != 0 && roomOf(directory_) >= plenty)
    make(path_, reserveSize);
}

bool Reserve::release() noexcept {
  struct stat status {};
  if (lstat(path_.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || unlink(path_.c_str()) != 0)
    return false;
  isReleased_ = true;
  return status.st_size > 0;
}

void Reserve::restore() noexcept {
  if (!isReleased_)
    return;
  isReleased_ = false;
  for (off_t size = reserveSize; size >= smallestReserve && !make(path_, size); size /= 2) {
  }
}

bool Reserve::isWanted() const noexcept {
  return roomOf(directory_) < reserveSize;
}

}  // namespace ulo::odb
