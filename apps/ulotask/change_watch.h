// Waits until files of a directory change.
#pragma once

#include "ulo/directory_watch.h"

#include <csignal>
#include <string>

namespace ulotask {

// While the object exists, SIGINT and SIGTERM end wait() instead of the process.
class ChangeWatch {
public:
  // Watches the files of the directory whose names begin with `prefix`. Throws a Failure if signals
  // cannot be received.
  ChangeWatch(const std::string& directory, std::string prefix);
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;
  ~ChangeWatch();

  // Returns true when one of the files has changed, once more a moment later, when readers see the
  // change, and after longestWait seconds at the latest. Returns false when the program should end:
  // on a signal, or if the reader of standard output has exited.
  bool wait() { return wait(-1); }
  // Also returns true as soon as the descriptor `other` is readable.
  bool wait(int other);

  // Seconds. Some file systems, such as network file systems, do not report changes.
  static constexpr int longestWait = 2;

private:
  ulo::DirectoryWatch files_;  // if the system refuses it, changes are seen after longestWait
  sigset_t before_{};
  int signals_ = -1;
  bool changed_ = false;  // the last call returned because a file had changed
};

}  // namespace ulotask
