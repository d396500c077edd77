#include "bus_library.h"

#include "private_library.h"

namespace ulo {

const BusFunctions* busFunctions() try {
  return openPrivateLibrary<BusFunctions>(busLibraryName, busFunctionsName);
} catch (const std::bad_alloc&) {
  return nullptr;
}

}  // namespace ulo
