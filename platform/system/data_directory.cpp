#include "ulo/data_directory.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>

namespace ulo {
namespace {

// An empty variable counts as unset (XDG base directory specification).
const char* setting(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

// Creates the missing parts of the path with mode 0700. Returns false and sets errno on failure.
bool makeDirectories(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error))
    return true;
  const std::filesystem::path parent = path.parent_path();
  if (!parent.empty() && parent != path && !makeDirectories(parent))
    return false;
  if (mkdir(path.c_str(), 0700) == 0)
    return true;
  // Another program may have just created it.
  const int reason = errno;
  if (reason == EEXIST && std::filesystem::is_directory(path, error))
    return true;
  errno = reason == EEXIST ? ENOTDIR : reason;
  return false;
}

}  // namespace

std::string userDirectory(const char* variable, const char* homeDefault) {
  if (const char* base = setting(variable); base != nullptr && *base == '/')
    return std::string(base) + "/ulo";
  const char* home = setting("HOME");
  return home == nullptr ? std::string() : std::string(home) + "/" + homeDefault + "/ulo";
}

bool makeUserDirectory(const std::string& path) {
  return makeDirectories(path);
}

std::string dataDirectory() {
  const char* own = setting("ULO_DATA_DIR");
  const std::string path = own != nullptr ? own : userDirectory("XDG_DATA_HOME", ".local/share");
  return makeDirectories(path) ? path : std::string();
}

}  // namespace ulo
