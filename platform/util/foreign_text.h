// Makes untrusted text safe for display and for files.
#pragma once

#include "ulo/export.h"

#include <QString>

namespace ulo {

// Returns the longest beginning of a text that has at most `units` 16-bit characters and does not
// split a letter from its accents or a surrogate pair. If the first letter alone is longer, it is
// cut between its parts.
[[nodiscard]] ULO_EXPORT QString wholeLetters(const QString& text, qsizetype units);

// Returns a text for use within a line: without control characters and directional formatting
// characters, and with "…" in place of what exceeds `limit` 16-bit characters.
[[nodiscard]] ULO_EXPORT QString oneLine(const QString& text, qsizetype limit);

}  // namespace ulo
