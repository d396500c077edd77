// Wakes the programs that follow the journal of changes.
#pragma once

#include "ulo/export.h"

#include <string>

namespace ulo {

// Notifies programs that watch `file` (DirectoryWatch) that a change was committed to it. A commit
// becomes visible to readers only after its last write, which the system does not report to them.
// Does nothing if the file cannot be touched; programs also poll from time to time.
ULO_EXPORT void announceCommit(const std::string& file) noexcept;

// While one exists, the changes of its thread belong to an open transaction, whose commit will be
// announced. Until then, the reporter announces none of them: no other program could read them.
class ULO_EXPORT UncommittedChanges {
public:
  UncommittedChanges() noexcept;
  UncommittedChanges(const UncommittedChanges&) = delete;
  UncommittedChanges& operator=(const UncommittedChanges&) = delete;
  ~UncommittedChanges();
  // Returns true if one exists in this thread.
  [[nodiscard]] static bool exist() noexcept;
};

}  // namespace ulo
