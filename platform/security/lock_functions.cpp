#include "lock_functions.h"

#include "private_library.h"

namespace ulo {

const LockFunctions* lockFunctions() try {
  static const LockFunctions* const functions = [] {
    const auto* opened = openPrivateLibrary<LockFunctions>(lockLibraryName, lockFunctionsName);
    return opened != nullptr && opened->begin() ? opened : nullptr;
  }();
  return functions;
} catch (const std::bad_alloc&) {
  return nullptr;  // the next call tries again
}

}  // namespace ulo
