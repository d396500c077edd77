#pragma once

namespace ulo {

// Asks the application lock, which may ask the user for a code. Returns true if the user may use
// the application with this UUID (in the form of QUuid::toString()). Without the lock library,
// access is denied, with a message on standard error that begins with the name of the program.
[[nodiscard]] bool passesLock(const char* applicationUuid, const char* program);

}  // namespace ulo
