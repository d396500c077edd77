// Preloaded into a process: its monotonic clock, which is also its time since boot, advances by
// $ULO_TEST_CLOCK_STEP milliseconds on every reading, and only then.

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
  using Read = int (*)(clockid_t, timespec*);
  static const Read next = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "clock_gettime"));
  const char* step = std::getenv("ULO_TEST_CLOCK_STEP");
  if ((clock != CLOCK_MONOTONIC && clock != CLOCK_BOOTTIME) || step == nullptr)
    return next(clock, time);
  static std::atomic<long> reads = 0;
  const long milliseconds = std::atol(step) * ++reads;
  time->tv_sec = 1000 + milliseconds / 1000;
  time->tv_nsec = milliseconds % 1000 * 1000000;
  return 0;
}
