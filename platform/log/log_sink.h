#pragma once

#include "export.h"

namespace ulo {

// Size at which a log file is set aside as "NAME.1", replacing the one before it.
constexpr long logFileLimit = 1024L * 1024;

// Sends the log of this process to where ULO_LOG says: "stderr", "syslog", "none", or a file's
// name; by default to PROGRAM.log under $XDG_STATE_HOME/ulo (or ~/.local/state/ulo). Each message
// becomes a line with the time and the program's name; control characters in it are shown as
// "\xNN". Programs call it first. False when the file can't be opened: nothing is logged then.
ULO_EXPORT bool openLogSink(const char* program);

}  // namespace ulo
