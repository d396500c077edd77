#include "store_files.h"

#include "exit_codes.h"
#include "file_names.h"
#include "ulo/data_directory.h"
#include "ulo/descriptor.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulotask {
namespace {

namespace fs = std::filesystem;

// The limit of the kernel.
constexpr int mostLinks = 40;

struct Identity {
  dev_t device;
  ino_t inode;
  bool operator==(const Identity& other) const {
    return device == other.device && inode == other.inode;
  }
};

std::optional<Identity> identityOf(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0)
    return std::nullopt;
  return Identity{status.st_dev, status.st_ino};
}

fs::path directoryOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

bool isInDirectory(const fs::path& target, const fs::path& directory) {
  const std::optional<Identity> wanted = identityOf(directory);
  return wanted && identityOf(directoryOf(target)) == wanted;
}

// Whether a file of the directory is a hard link to the target.
bool isLinkedFrom(const fs::path& target, const fs::path& directory) {
  const std::optional<Identity> wanted = identityOf(target);
  if (!wanted)
    return false;
  const std::vector<std::string> names = ulo::fileNames(directory.string());
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    return identityOf(directory / name) == wanted;
  });
}

}  // namespace

std::string storeDirectoryName() {
  const char* own = std::getenv("ULO_DATA_DIR");
  return own != nullptr && *own != '\0' ? own : ulo::userDirectory("XDG_DATA_HOME", ".local/share");
}

std::string targetOf(const std::string& name) {
  fs::path path = name;
  std::error_code error;
  for (int links = 0; links < mostLinks && fs::is_symlink(path, error); ++links) {
    const fs::path next = fs::read_symlink(path, error);
    if (error)
      break;
    path = directoryOf(path) / next;
  }
  return path.string();
}

void refuseStoreFile(const std::string& name) {
  const std::string directory = ulo::dataDirectory();
  if (directory.empty())
    return;
  const fs::path target = targetOf(name);
  if (isInDirectory(target, directory) || isLinkedFrom(target, directory))
    throw Failure(Exit::notWritten,
                  name + " can't be written: it belongs to the store in \"" + directory + "\"");
}

void syncDirectoryOf(const std::string& name) {
  const ulo::Descriptor directory(
      open(directoryOf(name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen())
    static_cast<void>(fsync(directory.get()));
}

}  // namespace ulotask
