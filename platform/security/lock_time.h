#pragma once

#include <chrono>
#include <string>

namespace ulo {

// A time that cannot be changed by the user: the time since system start, including sleep.
struct LockTime {
  std::string boot;  // identifies the system start; empty if unknown
  std::chrono::milliseconds sinceBoot{};
};

[[nodiscard]] LockTime lockTime();

}  // namespace ulo
