#include "todo_recurrence.h"

#include "recurrence_rule.h"

#include <algorithm>
#include <set>
#include <vector>

namespace ulo {
namespace {

// The dates of all properties with a name, such as EXDATE, up to one more than recurrenceDateLimit.
// Of a period, its start.
std::vector<DateValue> datesOf(const ComponentLines& lines, std::string_view name,
                               const DateReader& reader) {
  std::vector<DateValue> result;
  for (std::size_t line = lines.find(name); line != ComponentLines::none;
       line = lines.find(name, line + 1)) {
    const std::optional<ContentLine> content = lines.property(line);
    if (!content)
      continue;
    const std::optional<std::string> id = parameter(content->parameters, "TZID");
    for (std::string_view rest = content->value;
         !rest.empty() && result.size() <= recurrenceDateLimit;) {
      const std::size_t comma = std::min(rest.find(','), rest.size());
      const std::string_view value = rest.substr(0, comma);
      rest.remove_prefix(std::min(comma + 1, rest.size()));
      const std::optional<WallTime> time =
          parseWallTime(withoutBlanks(value.substr(0, value.find('/'))));
      if (!time)
        continue;
      DateValue date;
      date.wall = time->seconds;
      date.form = time->isDate  ? DateForm::day
                  : time->isUtc ? DateForm::utc
                  : id          ? DateForm::zoned
                                : DateForm::floating;
      if (date.form == DateForm::zoned) {
        date.zoneId = *id;
        date.zone = reader.zones.find(reader.calendar, *id);
      }
      result.push_back(std::move(date));
    }
  }
  return result;
}

DateValue withWall(const DateValue& date, std::int64_t wall) {
  DateValue result = date;
  result.wall = wall;
  return result;
}

// The dates that EXDATE takes out.
class Exceptions {
public:
  explicit Exceptions(const std::vector<DateValue>& dates) {
    for (const DateValue& date : dates) {
      if (date.form == DateForm::day)
        days_.insert(date.wall);
      else
        instants_.insert(date.instant());
    }
  }
  [[nodiscard]] bool contain(const DateValue& date) const {
    return days_.count(wallOf(dayOf(date.wall))) != 0 || instants_.count(date.instant()) != 0;
  }

private:
  std::set<std::int64_t> days_;
  std::set<std::int64_t> instants_;
};

bool isAfterUntil(const DateValue& date, const std::string& until) {
  const std::optional<WallTime> last = parseWallTime(until);
  if (!last)
    return false;
  if (last->isDate)
    return wallOf(dayOf(date.wall)) > last->seconds;
  return (last->isUtc ? date.instant() : date.wall) > last->seconds;
}

struct RuleStep {
  enum Kind { found, ended, notComputed };
  Kind kind = notComputed;
  DateValue date;
  int count = 0;  // dates of the rule after the present one, up to and including this one
};

// Returns the first date of a rule after the anchor that is not an exception.
RuleStep nextOf(const RecurrenceRule& rule, const DateValue& anchor, const Exceptions& exceptions) {
  RuleStep step;
  RuleDates dates(rule, anchor.wall);
  while (const std::optional<std::int64_t> wall = dates.next()) {
    const std::int64_t date = anchor.form == DateForm::day ? wallOf(dayOf(*wall)) : *wall;
    if (date <= (step.count == 0 ? anchor.wall : step.date.wall))
      continue;
    step.date = withWall(anchor, date);
    ++step.count;
    if ((rule.count != 0 && step.count >= rule.count) || isAfterUntil(step.date, rule.until)) {
      step.kind = RuleStep::ended;
      return step;
    }
    if (!exceptions.contain(step.date)) {
      step.kind = RuleStep::found;
      return step;
    }
  }
  return step;
}

// Whether the rule has the same dates after a date if that becomes the anchor.
bool isIndependentOf(const RecurrenceRule& rule, const DateValue& anchor, const DateValue& date) {
  constexpr int compared = 50;
  RuleDates present(rule, anchor.wall);
  RuleDates moved(rule, date.wall);
  const auto nextAfter = [&](RuleDates& dates) {
    std::optional<std::int64_t> wall = dates.next();
    while (wall && *wall <= date.wall)
      wall = dates.next();
    return wall;
  };
  for (int i = 0; i < compared; ++i)
    if (nextAfter(present) != nextAfter(moved))
      return false;
  return true;
}

// Writes the number of dates that are left into a rule.
void setCount(ComponentLines& lines, std::size_t line, int count) {
  const std::optional<ContentLine> content = lines.property(line);
  std::string value;
  for (std::string_view rest = content->value; !rest.empty();) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    const std::string_view part = rest.substr(0, end);
    const std::size_t equal = part.find('=');
    const bool isCount =
        equal != std::string_view::npos && sameName(withoutBlanks(part.substr(0, equal)), "COUNT");
    value += isCount ? std::string(part.substr(0, equal + 1)) + std::to_string(count)
                     : std::string(part);
    if (end < rest.size())
      value += ';';
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  lines.replace(line,
                std::string(content->name).append(content->parameters).append(":").append(value));
}

void moveAlarms(ComponentLines& lines, std::int64_t seconds, const DateReader& reader) {
  for (const ComponentLines::Range& range : lines.nested("VALARM")) {
    const std::size_t trigger = lines.find("TRIGGER", range);
    if (trigger == ComponentLines::none || parseDuration(lines.value(trigger)))
      continue;
    if (const std::optional<DateValue> date = reader.read(lines, trigger))
      replaceDate(lines, trigger, date->at(date->instant() + seconds), reader);
  }
}

}  // namespace

bool hasRecurrence(const ComponentLines& lines) {
  return lines.find("RRULE") != ComponentLines::none || lines.find("RDATE") != ComponentLines::none;
}

NextDateResult moveToNext(ComponentLines& lines, const DateReader& reader) {
  if (!hasRecurrence(lines))
    return NextDateResult::noRule;
  const TodoDates dates = readDates(lines, reader);
  const std::size_t ruleLine = lines.find("RRULE");
  // RFC 2445 knew rules of exceptions. Several rules are undefined.
  if ((!dates.start && !dates.due) || lines.find("EXRULE") != ComponentLines::none ||
      (ruleLine != ComponentLines::none &&
       lines.find("RRULE", ruleLine + 1) != ComponentLines::none))
    return NextDateResult::notComputed;
  const DateValue anchor = dates.start ? *dates.start : *dates.due;
  const std::vector<DateValue> excluded = datesOf(lines, "EXDATE", reader);
  const std::vector<DateValue> extras = datesOf(lines, "RDATE", reader);
  if (excluded.size() + extras.size() > recurrenceDateLimit)
    return NextDateResult::notComputed;
  const Exceptions exceptions(excluded);

  std::optional<DateValue> next;
  std::optional<RecurrenceRule> rule;
  RuleStep step;
  if (ruleLine != ComponentLines::none) {
    rule = parseRule(lines.value(ruleLine));
    if (!rule)
      return NextDateResult::notComputed;
    step = nextOf(*rule, anchor, exceptions);
    if (step.kind == RuleStep::notComputed)
      return NextDateResult::notComputed;
    if (step.kind == RuleStep::found)
      next = step.date;
  }
  bool isExtra = false;
  for (const DateValue& date : extras) {
    const DateValue extra = date.form == DateForm::day && anchor.form == DateForm::day
                                ? withWall(anchor, date.wall)
                                : anchor.at(date.instant());
    if (extra.instant() <= anchor.instant() || exceptions.contain(extra) ||
        (next && extra.instant() >= next->instant()))
      continue;
    next = extra;
    isExtra = true;
  }
  if (!next)
    return NextDateResult::lastDate;
  // A rule whose dates follow from the anchor would have others from an additional date on.
  if (isExtra && rule && step.kind == RuleStep::found &&
      (rule->count != 0 || next->form != anchor.form || !isIndependentOf(*rule, anchor, *next)))
    return NextDateResult::notComputed;
  if (!hasFourDigitYear(next->wall))
    return NextDateResult::notComputed;

  if (dates.start) {
    replaceDate(lines, lines.find("DTSTART"), *next, reader);
    if (dates.due && dates.dueLine != ComponentLines::none)
      replaceDate(lines, dates.dueLine, movedLike(*dates.due, anchor, *next), reader);
  } else {
    replaceDate(lines, dates.dueLine, *next, reader);
  }
  if (rule && rule->count != 0)
    setCount(lines, ruleLine, rule->count - step.count);
  moveAlarms(lines, next->instant() - anchor.instant(), reader);
  return NextDateResult::moved;
}

}  // namespace ulo
