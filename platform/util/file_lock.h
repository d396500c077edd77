#pragma once

#include <chrono>
#include <thread>

#include <sys/file.h>

namespace ulo {

// Keeps other processes, and other openings of the same file, out until the descriptor is closed.
// False when another one keeps it for longer than `patience`, or the file can't be locked.
inline bool lockWithin(int descriptor, std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds step{5};
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (std::chrono::steady_clock::now() >= end)
      return false;
    std::this_thread::sleep_for(step);
  }
  return true;
}

}  // namespace ulo
