// Replaces unpaired surrogates, which have no UTF-8. Depending on its version, QString::toUtf8
// writes a question mark for them or leaves them out.
#pragma once

#include <QString>

#include <utility>

namespace ulo {

// Returns the text with each unpaired surrogate replaced by `replacement`.
[[nodiscard]] inline QString wellFormed(QString text, QChar replacement) {
  if (text.isValidUtf16())
    return text;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar unit = std::as_const(text)[i];
    if (unit.isHighSurrogate() && i + 1 < text.size() &&
        std::as_const(text)[i + 1].isLowSurrogate())
      ++i;
    else if (unit.isSurrogate())
      text[i] = replacement;
  }
  return text;
}

}  // namespace ulo
