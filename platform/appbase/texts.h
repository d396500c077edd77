// Texts that people read, by their ids.
#pragma once

#include "export.h"

#include <QString>

namespace ulo {

// The text of an id in the language of the application; `english`, in UTF-8, where that has none.
[[nodiscard]] ULO_EXPORT QString text(const char* id, const char* english);

}  // namespace ulo
