// Wakes the programs that follow the journal of changes.
#pragma once

#include "ulo/export.h"

#include <string>

namespace ulo {

// Notifies programs that watch `file` (DirectoryWatch) that a change was committed to it. A commit
// becomes visible to readers only after its last write, which the system does not report to them.
// Does nothing if the file cannot be touched; programs also poll from time to time.
ULO_EXPORT void announceCommit(const std::string& file) noexcept;

}  // namespace ulo
