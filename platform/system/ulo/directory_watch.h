// Watches a directory for changed files.
#pragma once

#include "ulo/descriptor.h"
#include "ulo/export.h"

#include <string>

namespace ulo {

// Watches the files of a directory whose names begin with `prefix`. Detects writing, truncating,
// touching, creating and moving into the directory, by any program. Does not detect reading or
// writes through a mapping. Some file systems, such as network file systems, do not report changes
// made by other machines, so callers that depend on changes must also poll.
class ULO_EXPORT DirectoryWatch {
public:
  DirectoryWatch(const std::string& directory, std::string prefix);

  // Becomes readable when there may be a change; -1 if the system provides no watch.
  [[nodiscard]] int descriptor() const { return files_.get(); }
  // Consumes pending events. Returns true if one of the files has changed since the last call.
  bool sawChange();

private:
  std::string prefix_;
  Descriptor files_;
};

}  // namespace ulo
