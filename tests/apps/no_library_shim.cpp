// Preloaded into a process: the library named by $ULO_TEST_NO_LIBRARY is not installed.

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name, int flags) {
  const char* missing = std::getenv("ULO_TEST_NO_LIBRARY");
  if (name != nullptr && missing != nullptr && std::strcmp(name, missing) == 0)
    return nullptr;
  using Open = void* (*)(const char*, int);
  return reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"))(name, flags);
}
