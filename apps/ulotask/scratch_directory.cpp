#include "scratch_directory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace ulotask {

ScratchDirectory::ScratchDirectory() {
  std::error_code error;
  std::string name = std::filesystem::temp_directory_path(error).string() + "/ulotask-XXXXXX";
  if (error)
    error_ = error.message();
  else if (mkdtemp(name.data()) == nullptr)
    error_ = std::strerror(errno);
  else
    path_ = std::move(name);
}

ScratchDirectory::~ScratchDirectory() {
  try {
    std::error_code error;
    if (!path_.empty())
      std::filesystem::remove_all(path_, error);
  } catch (const std::exception&) {
    // Out of memory: the directory remains.
  }
}

}  // namespace ulotask
