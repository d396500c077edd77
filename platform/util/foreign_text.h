// Text from outside on its way to people and files.
#pragma once

#include "export.h"

#include <QString>

namespace ulo {

// The beginning of a text, of at most `units` characters of 16 bits, that ends with a whole letter:
// its accents and both halves of a surrogate pair stay with it. Only where a single letter is
// longer than that it is cut between its parts.
[[nodiscard]] ULO_EXPORT QString wholeLetters(const QString& text, qsizetype units);

// A text as a part of one line: no control characters, nothing that turns the direction of what
// stands beside it, and a "…" for what is behind `limit` characters of 16 bits.
[[nodiscard]] ULO_EXPORT QString oneLine(const QString& text, qsizetype limit);

}  // namespace ulo
