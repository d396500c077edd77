// Preloaded into a process: its monotonic clock, which is also its time since boot, advances by
// $ULO_TEST_CLOCK_STEP milliseconds on every reading, and only then.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>

namespace {

std::atomic<long> reads = 0;

// `name` is the function that is replaced, `Time` its time with seconds and nanoseconds.
template <typename Time> int readClock(const char* name, clockid_t clock, Time* time) {
  const char* step = std::getenv("ULO_TEST_CLOCK_STEP");
  if ((clock != CLOCK_MONOTONIC && clock != CLOCK_BOOTTIME) || step == nullptr) {
    using Read = int (*)(clockid_t, Time*);
    static const Read next = reinterpret_cast<Read>(dlsym(RTLD_NEXT, name));
    return next(clock, time);
  }
  const long milliseconds = std::atol(step) * ++reads;
  time->tv_sec = 1000 + milliseconds / 1000;
  time->tv_nsec = milliseconds % 1000 * 1000000;
  return 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
  return readClock("clock_gettime", clock, time);
}

#if __TIMESIZE == 32
// Called by code that is compiled with 64-bit times.
struct Timespec64 {
  std::int64_t tv_sec;
  std::int32_t tv_nsec;
  std::int32_t padding;
};
extern "C" __attribute__((visibility("default"))) int __clock_gettime64(clockid_t clock,
                                                                        Timespec64* time) noexcept {
  return readClock("__clock_gettime64", clock, time);
}
#endif
