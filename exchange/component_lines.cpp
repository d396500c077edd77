#include "component_lines.h"

#include "component_nesting.h"

#include <utility>

namespace ulo {
namespace {

// Whether property() returns something: the line has a name, and a colon after the parameters.
bool isProperty(const RawLine& raw, std::string& buffer) {
  const std::string_view line = unfolded(raw, buffer);
  const std::size_t end = nameOf(line).size();
  return end != 0 && end < line.size() && (line[end] == ':' || parseContentLine(line));
}

}  // namespace

ComponentLines::ComponentLines(std::string_view component, std::size_t firstNumber) {
  LineSplitter splitter(component, firstNumber);
  ComponentNesting nesting;
  RawLine raw;
  std::string buffer;
  while (splitter.next(raw)) {
    const NestingStep step = nesting.take(raw);
    Line line;
    line.bytes = raw.bytes;
    line.number = raw.number;
    line.folded = raw.folded;
    const bool isPart = step.name.data() >= component.data() &&
                        step.name.data() < component.data() + component.size();
    if (isProperty(raw, buffer))
      line.name = isPart ? step.name : keep(std::string(step.name));
    if (step.kind == NestingStep::begins)
      nesting.open(step.value, raw.number);
    if (step.kind == NestingStep::ends) {
      nesting.close(step.closes);
      line.depth = static_cast<unsigned>(nesting.depth());
      line.ends = true;
    } else {
      line.depth = nesting.depth() < 2 ? 0 : static_cast<unsigned>(nesting.depth()) - 1;
    }
    lines_.push_back(line);
  }
}

std::string_view ComponentLines::keep(std::string text) {
  return texts_.emplace_back(std::move(text));
}

std::size_t ComponentLines::find(std::string_view name, std::size_t from) const {
  for (std::size_t i = from; i < lines_.size(); ++i) {
    const Line& line = lines_[i];
    if (line.depth == 0 && line.name.size() == name.size() && sameName(line.name, name))
      return i;
  }
  return none;
}

std::size_t ComponentLines::find(std::string_view name, const Range& nested) const {
  const unsigned depth = lines_[nested.begin].depth;
  for (std::size_t i = nested.begin + 1; i < nested.end; ++i)
    if (lines_[i].depth == depth && sameName(lines_[i].name, name))
      return i;
  return none;
}

std::vector<ComponentLines::Range> ComponentLines::nested(std::string_view name) const {
  std::vector<Range> result;
  for (std::size_t i = 1; i < lines_.size(); ++i) {
    if (lines_[i].depth != 1 || !sameName(lines_[i].name, "BEGIN"))
      continue;
    Range range = {i, i + 1};
    while (range.end < lines_.size() && lines_[range.end].depth > 0 &&
           !(lines_[range.end].depth == 1 && sameName(lines_[range.end].name, "BEGIN")))
      ++range.end;
    const std::optional<ContentLine> content = property(i);
    if (content && sameName(withoutBlanks(content->value), name))
      result.push_back(range);
    i = range.end - 1;
  }
  return result;
}

std::optional<ContentLine> ComponentLines::property(std::size_t line) const {
  const Line& found = lines_[line];
  RawLine raw;
  raw.bytes = found.bytes;
  raw.folded = found.folded;
  if (!found.folded) {
    std::string unused;
    return parseContentLine(unfolded(raw, unused));
  }
  std::string buffer;
  unfolded(raw, buffer);
  return parseContentLine(texts_.emplace_back(std::move(buffer)));
}

std::string_view ComponentLines::value(std::size_t line) const {
  const std::optional<ContentLine> content = property(line);
  return content ? withoutBlanks(content->value) : std::string_view();
}

void ComponentLines::replace(std::size_t line, std::string_view content) {
  Line& found = lines_[line];
  found.bytes = keep(foldedLine(content, lineEndOf(found.bytes)));
  found.name = nameOf(found.bytes);
  found.folded = found.bytes.size() - lineEndOf(found.bytes).size() != content.size();
  changed_ = true;
}

void ComponentLines::remove(const Range& range) {
  const auto at = [&](std::size_t line) {
    return lines_.begin() + static_cast<std::ptrdiff_t>(line);
  };
  lines_.erase(at(range.begin), at(range.end));
  changed_ = true;
}

void ComponentLines::removeAll(std::string_view name) {
  changed_ = std::erase_if(lines_,
                           [&](const Line& line) {
                             return line.depth == 0 && sameName(line.name, name);
                           }) != 0 ||
             changed_;
}

void ComponentLines::insert(std::size_t line, std::string_view content, bool isNested) {
  Line added;
  added.depth = isNested ? 1 : 0;
  added.bytes = lineEndOf(lines_.front().bytes);
  added.number = lines_.front().number;
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(line), added);
  replace(line, content);
}

std::size_t ComponentLines::endOfProperties() const {
  std::size_t i = 1;
  while (i + 1 < lines_.size() && lines_[i].depth == 0)
    ++i;
  return i;
}

std::size_t ComponentLines::endOfComponents() const {
  std::size_t end = lines_.size() - 1;
  const Line& last = lines_[end - 1];
  if (end == 1 || last.depth == 0 || (last.depth == 1 && last.ends))
    return end;
  while (lines_[end].depth != 1 || !sameName(lines_[end].name, "BEGIN"))
    --end;
  return end;
}

QByteArray ComponentLines::text() const {
  QByteArray result;
  std::size_t size = 0;
  for (const Line& line : lines_)
    size += line.bytes.size();
  result.reserve(static_cast<qsizetype>(size));
  for (const Line& line : lines_)
    result.append(line.bytes.data(), static_cast<qsizetype>(line.bytes.size()));
  return result;
}

}  // namespace ulo
