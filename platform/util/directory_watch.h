// Sees that files of a directory change.
#pragma once

#include "descriptor.h"
#include "export.h"

#include <string>

namespace ulo {

// Watches the files of a directory whose names begin with `prefix`: writing, truncating, touching
// and creating them and moving them there, by any program. Reading is not seen, nor writing through
// a mapping. Some file systems, such as those of a network, tell nothing of what
// others do: whoever needs to know looks from time to time as well.
class ULO_EXPORT DirectoryWatch {
public:
  DirectoryWatch(const std::string& directory, std::string prefix);

  // Can be read when there may be something to see; -1 when the system refuses.
  [[nodiscard]] int descriptor() const { return files_.get(); }
  // Takes what the system tells; whether one of the files changed since the last call.
  bool sawChange();

private:
  std::string prefix_;
  Descriptor files_;
};

}  // namespace ulo
