// A new, empty store for comparison.
#pragma once

#include "scratch_directory.h"

#include <string>

namespace ulotask {

// A store as this program creates it, in a temporary directory that is deleted with the object. The
// constructor throws a Failure if it cannot be created. Requires: the store of this thread is
// closed.
class SampleStore {
public:
  SampleStore();

  // The name of its database file.
  [[nodiscard]] const std::string& file() const { return file_; }

private:
  ScratchDirectory directory_;
  std::string file_;
};

}  // namespace ulotask
