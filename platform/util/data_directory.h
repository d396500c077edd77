#pragma once

#include "export.h"

#include <string>

namespace ulo {

// The directory of the database files and the change journal: $ULO_DATA_DIR, else what
// userDirectory gives for XDG_DATA_HOME and ".local/share". Created with mode 0700 when missing,
// as is all above it. Empty when it cannot be created; errno says why.
ULO_EXPORT std::string dataDirectory();

// Our directory of one kind: $variable/ulo, else $HOME/homeDefault/ulo. A relative $variable is
// ignored (XDG base directories). Empty when HOME is needed and not set.
ULO_EXPORT std::string userDirectory(const char* variable, const char* homeDefault);

// Creates a directory with all that is missing above it, mode 0700. False, with errno, on failure.
ULO_EXPORT bool makeUserDirectory(const std::string& path);

}  // namespace ulo
