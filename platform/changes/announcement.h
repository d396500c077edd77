// Wakes the programs that follow the journal of changes.
#pragma once

#include "export.h"

#include <string>

namespace ulo {

// Tells programs that watch `file` (DirectoryWatch) that a change was committed to it. A commit
// becomes visible to readers only after its last write, of which the system tells them nothing.
// Does nothing if the file cannot be touched: programs also look from time to time.
ULO_EXPORT void announceCommit(const std::string& file) noexcept;

}  // namespace ulo
