#pragma once

#include "module_log.h"

// Where a log line says that it comes from. Steps that operations share take the place of the
// operation, as a default argument, since that is what the reader of the log wants to know.
struct LogPlace {
  const char* file;
  int line;

  static constexpr LogPlace current(const char* file = __builtin_FILE(),
                                    int line = __builtin_LINE()) {
    return {file, line};
  }
};

#define ULO_LOG_ERROR_AT(place, text, ...)                                                         \
  moduleLog(logError, "(%s:%d)" text, (place).file, (place).line __VA_OPT__(, ) __VA_ARGS__)
