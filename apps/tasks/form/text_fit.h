// Texts that are kept to a limit while they are typed.
#pragma once

#include <QString>

namespace tasks {

// A part of a text, from one place up to another.
struct Span {
  qsizetype from = 0;
  qsizetype to = 0;
};

// What has to go from a text so that `limit` characters of 16 bits hold it; empty for one that
// fits. `before` is the text before something was put in that ends at `cursor`: it is the end of
// this that goes, and what is kept of it ends with a whole letter.
[[nodiscard]] Span surplusOf(const QString& before, const QString& text, qsizetype cursor,
                             qsizetype limit);

}  // namespace tasks
