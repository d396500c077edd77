#include "window/lock_gate.h"

#include "SETUP_SECURITY_Util.h"
#include "ZTASK_ENG_Model.h"

#include <cstdio>
#include <dlfcn.h>

namespace tasks {

bool passesLock() {
  constexpr int mode = 1;
  void* library = dlopen("libulosecuritysetup.so", RTLD_LAZY);
  const auto check = library == nullptr
                         ? nullptr
                         : reinterpret_cast<SETUP_SECURITY_Util_appLockCheck_modelUI_t>(
                               dlsym(library, "SETUP_SECURITY_Util_appLockCheck_modelUI"));
  if (check == nullptr) {
    static_cast<void>(
        std::fprintf(stderr, "ulo-tasks: the application lock is missing: %s\n", dlerror()));
    return false;
  }
  return check(ZTASK_ENG_Model::identifier, mode) != 0;
}

}  // namespace tasks
