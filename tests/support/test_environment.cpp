// Every test program runs in the same time zone and locale, however it is started. (ctest can't be
// told: a list of environment variables doesn't survive the discovery of the test cases.)

#include <cstdlib>

namespace {

__attribute__((constructor)) void setTestEnvironment() {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("LC_ALL", "C.UTF-8", 1);
}

}  // namespace

// What Qt itself never frees: QScroller makes a recognizer for each grab and forgets it.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:QScroller::grabGesture\n";
}
