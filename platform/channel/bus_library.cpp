#include "bus_library.h"

#include "module_log.h"

#include <dlfcn.h>

namespace ulo {

const BusFunctions* busFunctions() {
  // Qt keeps pointers into it: it must stay in memory.
  void* library = dlopen(busLibraryName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  const auto* functions =
      library == nullptr ? nullptr : static_cast<BusFunctions*>(dlsym(library, busFunctionsName));
  if (functions == nullptr) {
    const char* reason = dlerror();
    ULO_LOG_ERROR("%s can't be used: %s", busLibraryName,
                  reason != nullptr ? reason : "it can't be opened");
  }
  if (library != nullptr)
    dlclose(library);
  return functions;
}

}  // namespace ulo
