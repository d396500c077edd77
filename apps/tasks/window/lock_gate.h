#pragma once

namespace tasks {

// Asks the application lock, which may ask the user for a code. Returns whether the user may see
// the tasks. Without the lock library access is denied, with a message on standard error.
[[nodiscard]] bool passesLock();

}  // namespace tasks
