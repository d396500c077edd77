#include "gate.h"

#include "SETUP_SECURITY_Util.h"

#include <cstdio>
#include <dlfcn.h>

namespace ulo {

bool passesLock(const char* applicationUuid, const char* program) {
  constexpr int mode = 1;
  void* library = dlopen("libulosecuritysetup.so", RTLD_LAZY);
  const auto check = library == nullptr
                         ? nullptr
                         : reinterpret_cast<SETUP_SECURITY_Util_appLockCheck_modelUI_t>(
                               dlsym(library, "SETUP_SECURITY_Util_appLockCheck_modelUI"));
  if (check == nullptr) {
    static_cast<void>(
        std::fprintf(stderr, "%s: the application lock is missing: %s\n", program, dlerror()));
    return false;
  }
  return check(applicationUuid, mode) != 0;
}

}  // namespace ulo
