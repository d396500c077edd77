#include "todo_dates.h"

#include <utility>

namespace ulo {
namespace {

QString shown(std::string_view value) {
  constexpr std::size_t mostBytes = 60;
  bool isLatin1 = false;
  return decodedText(value.substr(0, mostBytes), isLatin1);
}

// Years outside 1 to 9999 have no text.
bool canBeWritten(std::int64_t wall) {
  return hasFourDigitYear(wall);
}

}  // namespace

std::int64_t DateValue::instant() const {
  if (form == DateForm::utc)
    return wall;
  return zone ? zone->instantOf(wall) : localInstant(wall);
}

DateValue utcDate(std::int64_t instant) {
  DateValue result;
  result.wall = instant;
  return result;
}

std::optional<DateValue> localDay(std::int64_t instant) {
  DateValue result;
  result.form = DateForm::day;
  const std::int64_t wall = localWall(instant);
  result.wall = wallOf(dayOf(wall));
  return result.wall == wall || result.instant() == instant ? std::optional(result) : std::nullopt;
}

std::int64_t DateValue::wallAt(std::int64_t instant) const {
  return form == DateForm::utc ? instant : zone ? zone->wallAt(instant) : localWall(instant);
}

DateValue DateValue::at(std::int64_t instant) const {
  DateValue result = *this;
  if (form == DateForm::zoned && !zone)
    return utcDate(instant);
  result.wall = wallAt(instant);
  if (form == DateForm::day)
    result.wall = wallOf(dayOf(result.wall));
  return canBeWritten(result.wall) && result.instant() == instant ? result : utcDate(instant);
}

DateValue DateValue::plus(const Duration& duration) const {
  DateValue result = *this;
  result.wall += duration.days * secondsPerDay;
  if (duration.seconds == 0 || !canBeWritten(result.wall))
    return result;
  const std::int64_t instant = result.instant() + duration.seconds;
  if (form == DateForm::day)
    result.form = DateForm::floating;
  return result.at(instant);
}

std::string DateValue::line(std::string_view name, std::string_view parameters) const {
  std::string result(name);
  if (form == DateForm::day)
    result += ";VALUE=DATE";
  else if (form == DateForm::zoned)
    result += ";TZID=" + parameterText(zoneId);
  result += withoutParameters(parameters, {"VALUE", "TZID"});
  result += ':';
  result += form == DateForm::day ? dateText(wall) : dateTimeText(wall);
  if (form == DateForm::utc)
    result += 'Z';
  return result;
}

DateValue movedLike(const DateValue& date, const DateValue& from, const DateValue& to) {
  const auto isDay = [](const DateValue& one) { return one.form == DateForm::day; };
  const bool countsDays = isDay(date) || isDay(from) || isDay(to);
  const auto position = [&](const DateValue& other) {
    if (countsDays)
      return wallOf(dayOf(isDay(other) ? other.wall : localWall(other.instant())));
    const bool isSameClock = other.form == date.form && other.zoneId == date.zoneId;
    return isSameClock ? other.wall : date.wallAt(other.instant());
  };
  DateValue result = date;
  result.wall += position(to) - position(from);
  return result;
}

void DateReader::problem(const ComponentLines& lines, std::size_t line, const QString& text) const {
  if (!report)
    return;
  const std::optional<ContentLine> content = lines.property(line);
  const QString name = content ? shown(content->name).toUpper() : QString();
  report(lines.numberOf(line), name + ": " + text);
}

std::optional<DateValue> DateReader::read(const ComponentLines& lines, std::size_t line) const {
  const std::optional<ContentLine> content = lines.property(line);
  if (!content)
    return std::nullopt;
  const std::optional<WallTime> time = parseWallTime(withoutBlanks(content->value));
  if (!time) {
    problem(lines, line,
            QString("\"%1\" is not a valid date; it is ignored").arg(shown(content->value)));
    return std::nullopt;
  }
  DateValue result;
  result.wall = time->seconds;
  result.form = time->isDate ? DateForm::day : time->isUtc ? DateForm::utc : DateForm::floating;
  if (result.form != DateForm::floating || content->parameters.empty())
    return result;
  if (std::optional<std::string> id = parameter(content->parameters, "TZID")) {
    result.form = DateForm::zoned;
    result.zone = zones.find(calendar, *id);
    result.zoneId = std::move(*id);
    if (!result.zone)
      problem(lines, line,
              QString("the time zone \"%1\" is not known; local time is used")
                  .arg(shown(result.zoneId)));
  }
  return result;
}

bool DateReader::isInRange(const ComponentLines& lines, std::size_t line,
                           std::int64_t instant) const {
  const bool isIn = isRecordDate(instant);
  if (!isIn)
    problem(lines, line, "a date outside January 2, 1970 to January 17, 2038 is ignored");
  return isIn;
}

void replaceDate(ComponentLines& lines, std::size_t line, const DateValue& date,
                 const DateReader& reader) {
  const std::optional<ContentLine> content = lines.property(line);
  const std::optional<DateValue> present = reader.read(lines, line);
  std::string text = date.line(content->name, content->parameters);
  if (present && present->form == date.form && present->zoneId == date.zoneId) {
    const std::string value = text.substr(text.rfind(':'));
    text = std::string(content->name).append(content->parameters).append(value);
  }
  lines.replace(line, text);
}

bool isRecordDate(std::int64_t instant) {
  static const std::int64_t first = wallOf(QDate(1970, 1, 2));
  static const std::int64_t last = wallOf(QDate(2038, 1, 18));
  // No zone differs from UTC by more than a day.
  if (instant < first - secondsPerDay || instant >= last + secondsPerDay)
    return false;
  if (instant >= first + secondsPerDay && instant < last - secondsPerDay)
    return true;
  const std::int64_t wall = localWall(instant);
  return wall >= first && wall < last;
}

bool isSameDate(const std::optional<DateValue>& present,
                const std::optional<std::int64_t>& instant) {
  if (!present)
    return !instant;
  return instant ? present->instant() == *instant : !isRecordDate(present->instant());
}

TodoDates readDates(const ComponentLines& lines, const DateReader& reader) {
  TodoDates dates;
  const std::size_t startLine = lines.find("DTSTART");
  if (startLine != ComponentLines::none)
    dates.start = reader.read(lines, startLine);
  dates.dueLine = lines.find("DUE");
  if (dates.dueLine != ComponentLines::none) {
    dates.due = reader.read(lines, dates.dueLine);
    return dates;
  }
  dates.durationLine = lines.find("DURATION");
  if (dates.durationLine == ComponentLines::none || !dates.start)
    return dates;
  const std::optional<ContentLine> content = lines.property(dates.durationLine);
  const std::optional<Duration> duration =
      content ? parseDuration(withoutBlanks(content->value)) : std::nullopt;
  if (duration && canBeWritten(dates.start->plus(*duration).wall))
    dates.due = dates.start->plus(*duration);
  else
    reader.problem(lines, dates.durationLine, "not a valid duration; the to-do has no due date");
  return dates;
}

std::optional<TodoAlarm> readAlarm(const ComponentLines& lines, const TodoDates& dates,
                                   const DateReader& reader) {
  for (const ComponentLines::Range& range : lines.nested("VALARM")) {
    TodoAlarm alarm;
    alarm.range = range;
    alarm.trigger = lines.find("TRIGGER", range);
    const std::size_t action = lines.find("ACTION", range);
    if (action != ComponentLines::none) {
      // Some programs write an alarm that does nothing in place of none.
      const std::optional<ContentLine> content = lines.property(action);
      if (content && sameName(withoutBlanks(content->value), "NONE"))
        continue;
    }
    const std::optional<ContentLine> content =
        alarm.trigger == ComponentLines::none ? std::nullopt : lines.property(alarm.trigger);
    if (!content) {
      reader.problem(lines, range.begin, "an alarm without TRIGGER is ignored");
      continue;
    }
    const std::string_view value = withoutBlanks(content->value);
    std::optional<DateValue> date;
    if (const std::optional<Duration> duration = parseDuration(value)) {
      const std::string related = parameter(content->parameters, "RELATED").value_or("");
      const bool isEnd = sameName(related, "END") || !dates.start;
      const std::optional<DateValue>& anchor = isEnd ? dates.due : dates.start;
      if (!anchor) {
        reader.problem(lines, alarm.trigger,
                       "the to-do has no date to which the alarm is relative");
        continue;
      }
      date = anchor->plus(*duration);
    } else {
      date = reader.read(lines, alarm.trigger);
    }
    if (!date || !canBeWritten(date->wall))
      continue;
    alarm.instant = date->instant();
    if (reader.isInRange(lines, alarm.trigger, alarm.instant))
      return alarm;
  }
  return std::nullopt;
}

}  // namespace ulo
