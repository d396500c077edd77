#include "module_log.h"

// Returns the log function of this source.
void (*logFunctionOfOtherSource())(int, const char*, ...) {
  return moduleLog;
}
