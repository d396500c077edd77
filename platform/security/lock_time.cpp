#include "lock_time.h"

#include <ctime>
#include <fstream>

ulo::LockTime ulo::lockTime() {
  LockTime now;
  std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), now.boot);
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  now.sinceBoot = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
  return now;
}
