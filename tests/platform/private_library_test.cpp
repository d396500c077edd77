// Tests for private libraries that cannot be opened. The linker redirects the call of the loader.

#include "private_library.h"

#include "log_capture.h"
#include "ulo/export.h"

#include <gtest/gtest.h>

#include <new>

namespace {

int errorOfLoader = 0;

struct NoFunctions {};

const NoFunctions* openMissing() {
  return ulo::openPrivateLibrary<NoFunctions>("libulomissing.so", "table");
}

}  // namespace

extern "C" {
void* __real_dlopen(const char* name, int flags);
ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  void* const library = __real_dlopen(name, flags);
  errno = errorOfLoader;
  return library;
}
}

namespace {

TEST(PrivateLibrary, MissingOneIsLogged) {
  errorOfLoader = ENOENT;
  LogCapture log;
  EXPECT_EQ(openMissing(), nullptr);
  EXPECT_NE(log.text().find("libulomissing.so can't be used: "), std::string::npos);
}

// The library may be installed, so its absence must not be assumed.
TEST(PrivateLibrary, ThrowsIfMemoryIsExhausted) {
  errorOfLoader = ENOMEM;
  EXPECT_THROW(openMissing(), std::bad_alloc);
}

}  // namespace
