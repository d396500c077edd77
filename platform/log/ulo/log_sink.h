#pragma once

#include "ulo/export.h"

namespace ulo {

// Size in bytes at which a log file is renamed to "NAME.1", replacing the previous one.
constexpr long logFileLimit = 1024L * 1024;

// Directs the log of this process to the destination in $ULO_LOG: "stderr", "syslog", "none", or a
// file name. The default is PROGRAM.log in $XDG_STATE_HOME/ulo (or ~/.local/state/ulo). Each
// message becomes one line: the time, the program with its process ID, and the text with control
// characters as "\xNN". Several processes may write to the same file, which is created with mode
// 0600. Call this before any other function of the library; until then, messages go to standard
// output, without line ends. Returns false if the file cannot be opened; nothing is logged in that
// case, also not to standard output.
ULO_EXPORT bool openLogSink(const char* program);

}  // namespace ulo
