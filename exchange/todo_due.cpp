#include "todo_due.h"

#include "todo_recurrence.h"

namespace ulo {
namespace {

bool isDay(const std::optional<DateValue>& date) {
  return date && date->form == DateForm::day;
}

DateValue floatingDate(std::int64_t instant) {
  DateValue result;
  result.form = DateForm::floating;
  return result.at(instant);
}

// The form of a due date. It must be a date-time if DTSTART is one.
DateValue newDue(const TodoDates& dates, std::int64_t instant, bool repeats) {
  const bool startsAtTime = dates.start && !isDay(dates.start);
  if (!startsAtTime)
    if (const std::optional<DateValue> day = localDay(instant))
      return *day;
  if (dates.due && !isDay(dates.due))
    return dates.due->at(instant);
  if (startsAtTime)
    return dates.start->at(instant);
  // A rule whose days begin to have a time keeps them only in local time.
  return dates.start && repeats ? floatingDate(instant) : utcDate(instant);
}

// Equal days are not valid, but some programs write them.
bool canPrecede(const DateValue& start, const DateValue& due, bool mayBeSameDay = false) {
  if (isDay(start) != isDay(due) || !hasFourDigitYear(start.wall))
    return false;
  if (!isDay(start))
    return start.instant() < due.instant();
  return mayBeSameDay ? start.wall <= due.wall : start.wall < due.wall;
}

// Returns DTSTART for a new due date, or nothing if it must be removed.
std::optional<DateValue> newStart(const TodoDates& dates, const DateValue& due, bool repeats) {
  DateValue start = *dates.start;
  if (isDay(start) && !isDay(due)) {
    if (!repeats)
      return std::nullopt;
    start = due.at(start.instant());
  }
  if (canPrecede(start, due))
    return start;
  if (dates.due) {
    const bool wasSameDay =
        isDay(dates.start) && isDay(dates.due) && dates.start->wall == dates.due->wall;
    start = movedLike(start, *dates.due, due);
    if (canPrecede(start, due, wasSameDay))
      return start;
  }
  return repeats ? std::optional(due) : std::nullopt;
}

void writeDue(ComponentLines& lines, const TodoDates& dates, const DateValue& due,
              const DateReader& reader) {
  if (dates.dueLine != ComponentLines::none)
    replaceDate(lines, dates.dueLine, due, reader);
  else if (dates.durationLine != ComponentLines::none)
    lines.replace(dates.durationLine, due.line("DUE", ""));
  else
    lines.insert(lines.endOfProperties(), due.line("DUE", ""));
}

void removeStart(ComponentLines& lines) {
  lines.removeAll("DTSTART");
  for (const ComponentLines::Range& alarm : lines.nested("VALARM")) {
    const std::size_t trigger = lines.find("TRIGGER", alarm);
    if (trigger == ComponentLines::none || !parseDuration(lines.value(trigger)))
      continue;
    const std::optional<ContentLine> content = lines.property(trigger);
    if (sameName(parameter(content->parameters, "RELATED").value_or(""), "END"))
      continue;
    std::string replaced(content->name);
    replaced.append(";RELATED=END")
        .append(withoutParameters(content->parameters, {"RELATED"}))
        .append(":")
        .append(content->value);
    lines.replace(trigger, replaced);
  }
}

}  // namespace

void replaceDue(ComponentLines& lines, const std::optional<std::int64_t>& due,
                const DateReader& reader) {
  TodoDates dates = readDates(lines, reader);
  if (isSameDate(dates.due, due))
    return;
  if (!due) {
    lines.removeAll("DUE");
    lines.removeAll("DURATION");
    return;
  }
  const bool repeats = hasRecurrence(lines);
  const std::optional<DateValue> start =
      dates.start ? newStart(dates, newDue(dates, *due, repeats), repeats) : std::nullopt;
  const bool losesStart = dates.start && !start;
  if (losesStart)
    dates.start.reset();
  const DateValue value = newDue(dates, *due, repeats);
  if (start && (start->form != dates.start->form || start->wall != dates.start->wall))
    replaceDate(lines, lines.find("DTSTART"), *start, reader);
  writeDue(lines, dates, value, reader);
  if (losesStart)
    removeStart(lines);
}

}  // namespace ulo
