#include "lock_functions.h"

#include "private_library.h"

namespace ulo {

const LockFunctions* lockFunctions() {
  static const LockFunctions* const functions = [] {
    const auto* opened = openPrivateLibrary<LockFunctions>(lockLibraryName, lockFunctionsName);
    return opened != nullptr && opened->begin() ? opened : nullptr;
  }();
  return functions;
}

}  // namespace ulo
