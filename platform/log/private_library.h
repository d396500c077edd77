// Opens libraries of the project when they are first needed: loading them and their dependencies
// takes longer than most programs run.
#pragma once

#include "module_log.h"

#include <cerrno>
#include <dlfcn.h>
#include <new>

namespace ulo {

// Opens a library and returns the table of functions that it exports under the name `table`.
// Returns null, and logs the reason, if that fails. Throws std::bad_alloc if memory is exhausted.
// The library stays loaded. Inline, because the loader searches the run path of the library or
// program that contains the call.
template <typename Functions>
[[nodiscard]] inline const Functions* openPrivateLibrary(const char* name, const char* table) {
  errno = 0;
  void* const library = dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr && errno == ENOMEM)
    throw std::bad_alloc();
  const auto* functions =
      library == nullptr ? nullptr : static_cast<const Functions*>(dlsym(library, table));
  if (functions == nullptr) {
    const char* reason = dlerror();
    ULO_LOG_ERROR("%s can't be used: %s", name, reason != nullptr ? reason : "it can't be opened");
  }
  if (library != nullptr)
    dlclose(library);
  return functions;
}

}  // namespace ulo
