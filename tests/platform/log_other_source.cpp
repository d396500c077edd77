#include "module_log.h"

// The log function as this source has it.
void (*logFunctionOfOtherSource())(int, const char*, ...) {
  return moduleLog;
}
