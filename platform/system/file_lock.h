#pragma once

#include <chrono>
#include <thread>

#include <sys/file.h>

namespace ulo {

// Locks a file exclusively, against other processes and other open descriptions of the same file,
// until the descriptor is closed. Returns false if another holder keeps the lock for longer than
// `patience`, or if the file cannot be locked.
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
