// Runs every test program in the same time zone and locale, however it is started. (ctest cannot
// set them: a list of environment variables is lost in the discovery of the test cases.)

#include <cstdlib>

namespace {

__attribute__((constructor)) void setTestEnvironment() {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("LC_ALL", "C.UTF-8", 1);
}

}  // namespace

// Leaks of Qt: QScroller never frees the recognizer that it creates for each grab.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:QScroller::grabGesture\n";
}
