#include "component_nesting.h"

namespace ulo {

NestingStep ComponentNesting::take(const RawLine& line) {
  NestingStep step;
  step.name = nameOf(line.bytes);
  // A name may be folded.
  std::string_view whole = line.bytes;
  if (line.folded && step.name.find_first_of("\r\n") != std::string_view::npos) {
    whole = unfolded(line, buffer_);
    step.name = nameOf(whole);
  }
  const bool isBegin = sameName(step.name, "BEGIN");
  if (!isBegin && !sameName(step.name, "END"))
    return step;
  const std::optional<ContentLine> content = parseContentLine(unfolded(line, buffer_));
  if (!content)
    return step;
  step.name = content->name;
  step.value = withoutBlanks(content->value);
  if (isBegin) {
    step.kind = NestingStep::begins;
    return step;
  }
  step.kind = NestingStep::strayEnd;
  for (std::size_t i = open_.size(); i > 0; --i) {
    if (!sameName(open_[i - 1].name, step.value))
      continue;
    step.kind = NestingStep::ends;
    step.closes = open_.size() - i + 1;
    break;
  }
  return step;
}

}  // namespace ulo
