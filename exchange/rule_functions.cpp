#include "rule_functions.h"

#include "private_library.h"

namespace ulo {

const RuleFunctions* ruleFunctions() {
  static const auto* const functions =
      openPrivateLibrary<RuleFunctions>(ruleLibraryName, ruleFunctionsName);
  return functions;
}

}  // namespace ulo
