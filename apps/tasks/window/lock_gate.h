#pragma once

namespace tasks {

// Whether the user may see the tasks: asks the platform's lock, which may ask for a code. Without
// the lock nobody is let in; standard error says so.
[[nodiscard]] bool passesLock();

}  // namespace tasks
