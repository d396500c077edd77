#pragma once

#include "export.h"

namespace ulo {

// Size at which a log file is set aside as "NAME.1", replacing the one before it.
constexpr long logFileLimit = 1024L * 1024;

// Sends the log of this process to where ULO_LOG says: "stderr", "syslog", "none", or a file's
// name; by default to PROGRAM.log under $XDG_STATE_HOME/ulo (or ~/.local/state/ulo). Each message
// becomes a line: the time, the program with its process id, the text with its control characters
// as "\xNN". Several processes may write to one file; it is made with mode 0600. Programs call
// this first. False when the file can't be opened: nothing is logged then.
ULO_EXPORT bool openLogSink(const char* program);

}  // namespace ulo
