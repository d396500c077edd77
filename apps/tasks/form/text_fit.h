// Limits the length of a text while it is edited.
#pragma once

#include <QString>

namespace tasks {

// The part of a text from `from` up to `to`.
struct Span {
  qsizetype from = 0;
  qsizetype to = 0;
};

// Returns the part to remove so that the text has at most `limit` characters of 16 bits; an empty
// part if it fits. `before` is the text before the last insertion, which ends at `cursor`. The end
// of the insertion is removed, at the border of a letter.
[[nodiscard]] Span surplusOf(const QString& before, const QString& text, qsizetype cursor,
                             qsizetype limit);

}  // namespace tasks
