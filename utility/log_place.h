#pragma once

#include "module_log.h"

// The source location in a log line. A step that several operations share logs the location of the
// operation, which it receives as a default argument.
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
