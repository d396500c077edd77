// Texts of the user interface, by ID.
#pragma once

#include "ulo/export.h"

#include <QString>

namespace ulo {

// Returns the text with this ID in the application's language, or `english`, in UTF-8, if the
// language lacks it.
[[nodiscard]] ULO_EXPORT QString text(const char* id, const char* english);

}  // namespace ulo
