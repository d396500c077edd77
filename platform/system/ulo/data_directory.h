#pragma once

#include "ulo/export.h"

#include <string>

namespace ulo {

// Returns the directory of the database files and the change journal: $ULO_DATA_DIR if set,
// otherwise userDirectory("XDG_DATA_HOME", ".local/share"). Creates it and missing parents with
// mode 0700. Returns an empty string and sets errno if it cannot be created.
ULO_EXPORT std::string dataDirectory();

// Returns the engine's directory under a base directory: $variable/ulo, or $HOME/homeDefault/ulo if
// $variable is unset. A relative $variable is ignored (XDG base directories). Returns an empty
// string if HOME is needed but not set.
ULO_EXPORT std::string userDirectory(const char* variable, const char* homeDefault);

// Creates a directory and its missing parents with mode 0700. Returns false and sets errno on
// failure.
ULO_EXPORT bool makeUserDirectory(const std::string& path);

}  // namespace ulo
