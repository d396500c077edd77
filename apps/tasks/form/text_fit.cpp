#include "form/text_fit.h"

#include "foreign_text.h"

#include <algorithm>

namespace tasks {

Span surplusOf(const QString& before, const QString& text, qsizetype cursor, qsizetype limit) {
  const qsizetype surplus = text.size() - limit;
  if (surplus <= 0)
    return {};
  const auto* const differs =
      std::mismatch(before.cbegin(), before.cend(), text.cbegin(), text.cend()).second;
  const qsizetype begin = std::min<qsizetype>(differs - text.cbegin(), cursor);
  const qsizetype end = cursor - surplus;
  if (end < begin)  // the insertion is shorter than the surplus
    return {ulo::wholeLetters(text, limit).size(), text.size()};
  return {std::max(begin, ulo::wholeLetters(text.first(cursor), end).size()), cursor};
}

}  // namespace tasks
