#include "rule_functions.h"

#include "module_log.h"

#include <dlfcn.h>

namespace ulo {
namespace {

const RuleFunctions* openLibrary() {
  void* const library = dlopen(ruleLibraryName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  const auto* functions =
      library == nullptr ? nullptr
                         : static_cast<const RuleFunctions*>(dlsym(library, ruleFunctionsName));
  if (functions == nullptr) {
    const char* reason = dlerror();
    ULO_LOG_ERROR("%s can't be used: %s", ruleLibraryName,
                  reason != nullptr ? reason : "it can't be opened");
  }
  if (library != nullptr)
    dlclose(library);
  return functions;
}

}  // namespace

const RuleFunctions* ruleFunctions() {
  static const RuleFunctions* const functions = openLibrary();
  return functions;
}

}  // namespace ulo
