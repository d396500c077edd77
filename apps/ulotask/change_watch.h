// Waits for changes of files in a directory.
#pragma once

#include "directory_watch.h"

#include <csignal>
#include <string>

namespace ulotask {

// From its making on, SIGINT and SIGTERM no longer end the process but end the waiting.
class ChangeWatch {
public:
  // Looks at the files of the directory whose names begin with `prefix`. A Failure when the system
  // refuses.
  ChangeWatch(const std::string& directory, std::string prefix);
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;
  ~ChangeWatch();

  // True when one of the files is being changed, a moment after that, when the change is to be
  // seen, and after longestWait seconds in any case. False when it is time to end: a signal asks
  // for it, or nobody is left to read standard output.
  bool wait() { return wait(-1); }
  // True also, and at once, when the descriptor `other` can be read.
  bool wait(int other);

  // Seconds. Some file systems, such as those of a network, tell nothing of changes.
  static constexpr int longestWait = 2;

private:
  ulo::DirectoryWatch files_;  // where the system refuses it, changes are seen later
  sigset_t before_{};
  int signals_ = -1;
  bool changed_ = false;  // the last answer was that a file is being changed
};

}  // namespace ulotask
