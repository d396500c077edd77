#pragma once

#include <chrono>
#include <string>

namespace ulo {

// A moment that nobody can set: the time since the system was started, with the time it slept.
struct LockTime {
  std::string boot;  // which start of the system; empty when it doesn't tell
  std::chrono::milliseconds sinceBoot{};
};

[[nodiscard]] LockTime lockTime();

}  // namespace ulo
