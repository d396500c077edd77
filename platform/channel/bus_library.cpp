#include "bus_library.h"

#include "private_library.h"

namespace ulo {

const BusFunctions* busFunctions() {
  return openPrivateLibrary<BusFunctions>(busLibraryName, busFunctionsName);
}

}  // namespace ulo
