#pragma once

#include <string>

namespace ulotask {

// A directory for temporary files, readable by its owner only, and deleted with the object. (The
// destructor of QTemporaryDir ends the program if memory is short.)
class ScratchDirectory {
public:
  ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory();

  // Empty if the directory could not be created; error() says why.
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& error() const { return error_; }

private:
  std::string path_;
  std::string error_;
};

}  // namespace ulotask
