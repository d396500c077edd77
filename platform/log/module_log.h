// The log function. It has internal linkage, so each source that includes this header gets its own
// copy.
#pragma once

#include "aplog.h"

#include <cstdarg>
#include <cstdio>

enum LogLevel : int {
  logError = 3,  // failures, and the few milestones logged at the same level
  logDump = 7,   // bulky traces
  logTrace = 8,  // entry and exit; never written
};
inline constexpr int highestWrittenLevel = 7;

// Writes a printf-style message to the platform's log stream, or to standard output if no program
// has opened a sink. Adds neither a line end nor a time.
// NOLINTNEXTLINE(misc-definitions-in-headers): each source needs its own copy.
[[maybe_unused]] __attribute__((format(printf, 2, 3))) static void
moduleLog(int level, const char* format, ...) {
  if (level > highestWrittenLevel)
    return;
  FILE* const opened = libaplog_to_module_ptr;
  FILE* const stream = opened != nullptr ? opened : stdout;
  va_list arguments;
  va_start(arguments, format);
  // Lock and flush, so that messages of several threads do not mix.
  flockfile(stream);
  std::vfprintf(stream, format, arguments);
  std::fflush(stream);
  funlockfile(stream);
  va_end(arguments);
}

// Logs an error line; `text` follows "(file:line)".
#define ULO_LOG_ERROR(text, ...)                                                                   \
  moduleLog(logError, "(%s:%d)" text, __FILE__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
