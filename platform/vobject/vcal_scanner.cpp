#include "vcal_scanner.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace ulo {

namespace {

// Parser stack depth of the library: it needs one level for each item of a calendar, each property
// of the item and each parameter, two for each calendar and three for each field of a value, and
// fails at 490.
constexpr std::size_t libraryDepth = 450;
constexpr std::size_t depthOfCalendar = 2;

// The components that the library knows.
constexpr std::array<std::string_view, 4> knownComponents = {"VCALENDAR", "VCARD", "VEVENT",
                                                             "VTODO"};

bool isKnown(std::string_view name) {
  return std::any_of(knownComponents.begin(), knownComponents.end(),
                     [name](std::string_view known) { return sameWord(known, name); });
}

}  // namespace

void RepairList::add(Repair repair, std::size_t line, std::string property) {
  ++count_;
  if (first_.size() < loggedLimit)
    first_.push_back({repair, line, std::move(property)});
}

TodoScanner::Event TodoScanner::next() {
  const Event event = scan();
  record(event);
  return event;
}

void TodoScanner::record(Event event) {
  switch (event) {
  case Event::calendar:
    calendar_ = true;
    break;
  case Event::beginTodo:
    break;
  case Event::property:
    if (property_.tooLong)
      report_.tooLarge.push_back({property_.header.name, property_.line});
    break;
  case Event::endTodo:
    ++report_.todos;
    break;
  case Event::end:
    report_.problem = !calendar_           ? TextProblem::notCalendar
                      : report_.todos == 0 ? TextProblem::noTodo
                                           : TextProblem::none;
    finished_ = true;
    break;
  case Event::broken:
    finished_ = true;
    break;
  }
}

TodoScanner::Event TodoScanner::scan() {
  while (reader_.next(property_, version2_)) {
    clean_ = clean_ && property_.clean;
    if (property_.blank)
      continue;
    const std::size_t depth = objects_ * depthOfCalendar + items_ + properties_;
    clean_ = clean_ && depth + property_.weight() <= libraryDepth;
    const bool begins = property_.isBegin();
    const std::string name = begins || property_.isEnd() ? property_.component() : std::string();
    const std::optional<Event> event = name.empty() ? take() : begins ? open(name) : close(name);
    if (event)
      return *event;
  }
  return open_.empty() ? Event::end : fail(TextProblem::truncated, open_.back().line);
}

std::optional<TodoScanner::Event> TodoScanner::open(const std::string& name) {
  const bool known = isKnown(name);
  if (open_.empty()) {
    if (name != "VCALENDAR" && name != "VCARD")
      return takeStray();
    open_.push_back({name, line()});
    ++objects_;
    items_ = properties_ = 0;
    version2_ = false;
    return name == "VCALENDAR" ? std::optional(Event::calendar) : std::nullopt;
  }
  if (name == "VCALENDAR")
    return fail(TextProblem::truncated, open_.back().line);
  if (open_.size() == itemPlace) {
    ++items_;
    properties_ = 0;
    if (!known)
      return std::nullopt;
    open_.push_back({name, line()});
    clean_ = clean_ && inCalendar() && name != "VCARD";
    return inTodo() ? std::optional(Event::beginTodo) : std::nullopt;
  }
  if (open_.size() == nestingLimit)
    return fail(TextProblem::malformed, line());
  ++properties_;
  clean_ = clean_ && !known;
  if (inTodo() && open_.size() == itemPlace + 1)
    leaveOut(Repair::nestedComponent);
  open_.push_back({name, line()});
  return std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::close(const std::string& name) {
  if (open_.empty())
    return takeStray();
  const auto found = std::find_if(open_.rbegin(), open_.rend(),
                                  [&](const Component& open) { return open.name == name; });
  const auto place = static_cast<std::size_t>(open_.rend() - found) - 1;
  if (found == open_.rend()) {
    ++(open_.size() > itemPlace ? properties_ : items_);
    if (isKnown(name))
      leaveOut(Repair::endWithoutBegin);
    return std::nullopt;
  }
  if (place < itemPlace && open_.size() > itemPlace)
    return fail(TextProblem::truncated, open_[itemPlace].line);
  if (place + 1 < open_.size())
    leaveOut(Repair::missingEnd);
  const bool todo = place == itemPlace && inTodo();
  open_.resize(place);
  properties_ = place > itemPlace ? properties_ + 1 : 0;
  return todo ? std::optional(Event::endTodo) : std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::take() {
  if (open_.empty())
    return takeStray();
  if (open_.size() == itemPlace) {
    ++items_;
    // The library would read it as a component with that name.
    clean_ = clean_ && !isKnown(property_.header.name);
    if (sameWord(property_.header.name, "VERSION"))
      version2_ = property_.value.find_first_not_of(" \t") == property_.value.find('2');
    return std::nullopt;
  }
  ++properties_;
  if (!inTodo() || open_.size() > itemPlace + 1)
    return std::nullopt;
  if (!property_.header.name.empty())
    return Event::property;
  leaveOut(Repair::notProperty);
  return std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::takeStray() {
  leaveOut(Repair::outsideCalendar);
  stray_ += property_.size;
  return stray_ > strayLimit ? std::optional(fail(TextProblem::notCalendar, 0)) : std::nullopt;
}

}  // namespace ulo
