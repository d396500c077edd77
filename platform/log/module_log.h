// The log function. It has internal linkage: each source that includes this header has a copy
// of its own.
#pragma once

#include "aplog.h"

#include <cstdarg>
#include <cstdio>

// NOLINTBEGIN(misc-definitions-in-headers): a copy for each source is what is wanted.
namespace {

enum LogLevel : int {
  logError = 3,  // failures, and the few milestones that were always logged with them
  logDump = 7,   // bulky traces
  logTrace = 8,  // entry and exit; never written
};
constexpr int highestWrittenLevel = 7;

// Writes a printf-style message to the platform's log stream, or to standard output when no
// program opened a sink. Nothing is added: no line end, no time.
[[maybe_unused]] __attribute__((format(printf, 2, 3))) void moduleLog(int level, const char* format,
                                                                      ...) {
  if (level > highestWrittenLevel)
    return;
  FILE* const opened = libaplog_to_module_ptr;
  FILE* const stream = opened != nullptr ? opened : stdout;
  va_list arguments;
  va_start(arguments, format);
  // Locked and flushed, a message reaches the stream whole and by itself.
  flockfile(stream);
  std::vfprintf(stream, format, arguments);
  std::fflush(stream);
  funlockfile(stream);
  va_end(arguments);
}

}  // namespace
// NOLINTEND(misc-definitions-in-headers)

// An error line: `text` is the part after "(file:line)".
#define ULO_LOG_ERROR(text, ...)                                                                   \
  moduleLog(logError, "(%s:%d)" text, __FILE__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
