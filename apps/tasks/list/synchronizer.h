// The synchronization program.
#pragma once

namespace tasks {

// The launch table names the program under AM_ActionData::synchronizer. The user can change it at
// any time.
class Synchronizer {
public:
  // Whether the launch table names a program.
  [[nodiscard]] static bool isSetUp();
  // Starts the program and returns at once. Its changes appear like those of any other program.
  // Returns false, and logs why, if there is none or it cannot be started.
  [[nodiscard]] static bool start();
};

}  // namespace tasks
