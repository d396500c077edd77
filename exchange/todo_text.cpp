#include "todo_text.h"

#include "TASK_ENG_Ical.h"
#include "calendar_text.h"
#include "component_lines.h"
#include "content_line.h"
#include "todo_fields.h"
#include "zone_rules.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ulo {
namespace {

std::string upper(std::string_view name) {
  std::string result(name);
  for (char& c : result)
    if (c >= 'a' && c <= 'z')
      c = static_cast<char>(c - 'a' + 'A');
  return result;
}

std::vector<std::string_view> todosOf(const CalendarText& calendar) {
  std::vector<std::string_view> todos;
  for (const std::size_t todo : calendar.todos())
    for (const std::size_t piece : calendar.piecesOf(todo))
      todos.push_back(calendar.bytes(calendar.pieces()[piece]));
  return todos;
}

// An unfolded line of a property.
struct Property {
  std::string name;  // in upper case
  std::string line;
};

// The content of a component, unfolded.
struct Content {
  std::vector<Property> properties;
  std::vector<std::vector<std::string>> components;  // those directly in it, line by line

  [[nodiscard]] const Property* find(std::string_view name) const {
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&](const Property& each) { return each.name == name; });
    return found == properties.end() ? nullptr : &*found;
  }
  [[nodiscard]] bool hasLine(const std::string& line) const {
    return std::any_of(properties.begin(), properties.end(),
                       [&](const Property& each) { return each.line == line; });
  }
  [[nodiscard]] bool hasComponent(const std::vector<std::string>& component) const {
    return std::find(components.begin(), components.end(), component) != components.end();
  }
  template <typename Names> [[nodiscard]] bool hasOneOf(const Names& names) const {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return find(name) != nullptr; });
  }
};

Content contentOf(std::string_view component) {
  Content content;
  LineSplitter lines(component);
  RawLine raw;
  std::string buffer;
  std::size_t depth = 0;
  while (lines.next(raw)) {
    const std::string line(unfolded(raw, buffer));
    const std::string name = upper(nameOf(line));
    const bool begins = name == "BEGIN";
    const bool ends = name == "END";
    if (begins)
      ++depth;
    if (depth > 1) {
      if (begins && depth == 2)
        content.components.emplace_back();
      content.components.back().push_back(line);
    } else if (!begins && !ends && parseContentLine(line)) {
      content.properties.push_back({name, line});
    }
    if (ends && depth > 0)
      --depth;
  }
  return content;
}

// Properties that a to-do has once and that belong together: a text with one of them has the state
// of all.
constexpr std::array<std::string_view, 3> stateNames = {"STATUS", "COMPLETED", "PERCENT-COMPLETE"};
constexpr std::array<std::string_view, 3> dateNames = {"DTSTART", "DUE", "DURATION"};
// The identity and the version of a to-do.
constexpr std::array<std::string_view, 5> versionNames = {"UID", "RECURRENCE-ID", "DTSTAMP",
                                                          "LAST-MODIFIED", "SEQUENCE"};
// Properties of which a to-do may have several.
constexpr std::array<std::string_view, 11> listNames = {
    "ATTACH",     "ATTENDEE", "COMMENT", "CONFERENCE", "CONTACT",       "EXDATE",
    "RELATED-TO", "IMAGE",    "RDATE",   "RESOURCES",  "REQUEST-STATUS"};

template <typename Names> bool isOneOf(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Returns the values of a list, with their escapes.
std::vector<std::string> valuesOf(std::string_view list) {
  std::vector<std::string> values;
  while (true) {
    const std::size_t length = firstValueLength(list);
    values.emplace_back(list.substr(0, length));
    if (length >= list.size())
      return values;
    list.remove_prefix(length + 1);
  }
}

// Appends the values of a CATEGORIES line to the first such line of the component.
void addCategories(ComponentLines& lines, const Content& present, const std::string& line) {
  std::set<std::string> known;
  for (const Property& property : present.properties) {
    if (property.name == "CATEGORIES")
      for (const std::string& value : valuesOf(parseContentLine(property.line)->value))
        known.insert(value);
  }
  const std::size_t at = lines.find("CATEGORIES");
  const std::optional<ContentLine> content = lines.property(at);
  if (!content)
    return;
  std::string merged(content->name);
  merged.append(content->parameters).append(":").append(content->value);
  const std::size_t before = merged.size();
  for (const std::string& value : valuesOf(parseContentLine(line)->value))
    if (!value.empty() && known.insert(value).second)
      merged += "," + value;
  if (merged.size() > before)
    lines.replace(at, merged);
}

std::int64_t sequenceOf(const Content& content) {
  const Property* const property = content.find("SEQUENCE");
  return property == nullptr
             ? 0
             : std::strtoll(std::string(parseContentLine(property->line)->value).c_str(), nullptr,
                            10);
}

void raiseSequence(ComponentLines& lines, const Content& present, const Content& other) {
  const std::int64_t sequence = sequenceOf(other);
  if (sequence <= sequenceOf(present))
    return;
  const std::string line = "SEQUENCE:" + std::to_string(sequence);
  const std::size_t at = lines.find("SEQUENCE");
  if (at == ComponentLines::none)
    lines.insert(lines.endOfProperties(), line);
  else
    lines.replace(at, line);
}

void addProperties(ComponentLines& lines, const Content& present, const Content& other,
                   const RenamedZones& renamed) {
  const bool hasState = present.hasOneOf(stateNames);
  const bool hasDates = present.hasOneOf(dateNames);
  for (const Property& property : other.properties) {
    const auto& [name, line] = property;
    const std::string added = lineWithZoneNames(line, renamed);
    const bool isKept = isOneOf(versionNames, name) || (isOneOf(stateNames, name) && hasState) ||
                        (isOneOf(dateNames, name) && hasDates) || present.hasLine(line) ||
                        present.hasLine(added);
    if (isKept)
      continue;
    if (name == "CATEGORIES" && present.find(name) != nullptr)
      addCategories(lines, present, line);
    else if (present.find(name) == nullptr || isOneOf(listNames, name))
      lines.insert(lines.endOfProperties(), added);
  }
}

// The first alarm is a field of a task: if both texts have one, that of the other text is left out.
void addComponents(ComponentLines& lines, const Content& present, const Content& other,
                   const RenamedZones& renamed) {
  const auto isAlarm = [](const std::vector<std::string>& component) {
    return upper(component.front()) == "BEGIN:VALARM";
  };
  bool skipAlarm = std::any_of(present.components.begin(), present.components.end(), isAlarm);
  for (const std::vector<std::string>& component : other.components) {
    const bool isFirstAlarm = skipAlarm && isAlarm(component);
    if (isFirstAlarm)
      skipAlarm = false;
    std::vector<std::string> added;
    for (const std::string& line : component)
      added.push_back(lineWithZoneNames(line, renamed));
    if (isFirstAlarm || present.hasComponent(component) || present.hasComponent(added))
      continue;
    for (const std::string& line : added)
      lines.insert(lines.size() - 1, line, true);
  }
}

// Returns the component with what only `other` has. `renamed` has the new names of zones of
// `other`.
QByteArray mergedComponent(std::string_view component, std::string_view other,
                           const RenamedZones& renamed) {
  const Content present = contentOf(component);
  const Content added = contentOf(other);
  ComponentLines lines(component);
  addProperties(lines, present, added, renamed);
  raiseSequence(lines, present, added);
  addComponents(lines, present, added, renamed);
  return lines.text();
}

struct FrequencyWord {
  std::string_view frequency;
  Repetition::Unit unit;
  const char* english;
};
constexpr FrequencyWord frequencyWords[] = {
    {"SECONDLY", Repetition::Unit::second, "second"},
    {"MINUTELY", Repetition::Unit::minute, "minute"},
    {"HOURLY", Repetition::Unit::hour, "hour"},
    {"DAILY", Repetition::Unit::day, "day"},
    {"WEEKLY", Repetition::Unit::week, "week"},
    {"MONTHLY", Repetition::Unit::month, "month"},
    {"YEARLY", Repetition::Unit::year, "year"},
};

Repetition repetitionOfRule(std::string_view rule) {
  Repetition repetition;
  repetition.unit = Repetition::Unit::other;
  repetition.rule = QString::fromUtf8(rule.data(), static_cast<qsizetype>(rule.size()));
  for (const QString& part : repetition.rule.toUpper().split(';')) {
    const QString value = part.section('=', 1);
    if (part.startsWith("FREQ=")) {
      for (const FrequencyWord& word : frequencyWords)
        if (value == QLatin1String(word.frequency.data(), word.frequency.size()))
          repetition.unit = word.unit;
    } else if (part.startsWith("INTERVAL=")) {
      repetition.interval = value.toInt();
    } else {
      repetition.hasMore = true;
    }
  }
  return repetition;
}

std::string recurrenceOf(std::string_view component) {
  const Content content = contentOf(component);
  const Property* const property = content.find("RECURRENCE-ID");
  return property == nullptr ? std::string() : property->line;
}

Content firstTodo(const CalendarText& text) {
  return contentOf(text.bytes(text.pieces()[text.todos().at(0)]));
}

std::set<std::string> usedZoneIds(const CalendarText& text) {
  std::set<std::string> result;
  for (const std::string_view todo : todosOf(text))
    for (std::string& id : zoneIdsIn(todo))
      result.insert(std::move(id));
  return result;
}

QDateTime revisionOf(const QByteArray& text) {
  return TASK_ENG_Ical(text).task(0).getDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION);
}

}  // namespace

QByteArray withUid(const QByteArray& text, const QString& uid) {
  CalendarText calendar(text);
  const std::string line = "UID:" + valueOfText(uid);
  for (const std::size_t todo : calendar.todos()) {
    for (const std::size_t piece : calendar.piecesOf(todo)) {
      ComponentLines lines(calendar.bytes(calendar.pieces()[piece]));
      const std::size_t at = lines.find("UID");
      if (at == ComponentLines::none)
        lines.insert(1, line);
      else
        lines.replace(at, line);
      calendar.replace(piece, lines.text());
    }
  }
  return calendar.text();
}

bool hasSameTodos(const QByteArray& one, const QByteArray& other) {
  if (one == other)
    return true;
  const CalendarText a(one);
  const CalendarText b(other);
  return !a.todos().empty() && todosOf(a) == todosOf(b);
}

QDateTime alarmForDue(const QByteArray& text, const QDateTime& due) {
  CalendarText calendar(text);
  const std::size_t piece = calendar.todos().at(0);
  ComponentLines lines(calendar.bytes(calendar.pieces()[piece]));
  ZTASK_ENG_Task task;
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, due);
  ZoneTable zones(calendar);
  const ProblemReport noReport;
  replaceDueDate(lines, task, {zones, calendar.pieces()[piece].calendar, noReport});
  calendar.replace(piece, lines.text());
  return TASK_ENG_Ical(calendar.text()).task(0).getDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM);
}

bool isOlder(const QByteArray& one, const QByteArray& other) {
  const QDateTime first = revisionOf(one);
  const QDateTime second = revisionOf(other);
  const QDateTime none = ZTASK_ENG_Task::noDate();
  if (first != none && second != none)
    return first < second;
  const CalendarText oneLines(one);
  const CalendarText otherLines(other);
  return sequenceOf(firstTodo(oneLines)) < sequenceOf(firstTodo(otherLines));
}

Repetition repetitionOf(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  if (calendar.count() == 0 || !calendar.repeats(0))
    return {};
  const CalendarText lines(text);
  const Content todo = firstTodo(lines);
  if (const Property* const rule = todo.find("RRULE"); rule != nullptr)
    return repetitionOfRule(parseContentLine(rule->line)->value);
  Repetition onDates;
  onDates.unit = Repetition::Unit::other;
  return onDates;
}

QString englishText(const Repetition& repetition) {
  if (repetition.unit == Repetition::Unit::none)
    return {};
  const auto* const word =
      std::find_if(std::begin(frequencyWords), std::end(frequencyWords),
                   [&](const FrequencyWord& each) { return each.unit == repetition.unit; });
  if (word == std::end(frequencyWords))
    return repetition.rule.isEmpty() ? QString("on several dates") : repetition.rule;
  const QString words = repetition.interval > 1
                            ? QString("every %1 %2s").arg(repetition.interval).arg(word->english)
                            : QString("every %1").arg(word->english);
  return repetition.hasMore ? words + " (" + repetition.rule + ')' : words;
}

QByteArray mergedTodo(const QByteArray& one, const QByteArray& other) {
  const bool isSecond = isOlder(one, other);
  CalendarText result(isSecond ? other : one);
  const CalendarText added(isSecond ? one : other);
  const CalendarText::Parts parts = added.parts(added.todos().at(0));
  const ZoneNames::Zones zones = result.nameZones(parts.zones);
  const std::vector<QByteArray> renamed = withZoneNames(parts.todo, zones.renamed);
  const std::vector<std::size_t> candidates = result.piecesOf(result.todos().at(0));
  for (std::size_t i = 0; i < parts.todo.size(); ++i) {
    // An override that an earlier merge added has the new name.
    const std::string recurrence = recurrenceOf(viewOf(parts.todo[i]));
    const std::string renamedRecurrence = recurrenceOf(viewOf(renamed[i]));
    const auto match = std::find_if(candidates.begin(), candidates.end(), [&](std::size_t piece) {
      const std::string present = recurrenceOf(result.bytes(result.pieces()[piece]));
      return present == recurrence || present == renamedRecurrence;
    });
    if (match != candidates.end())
      result.replace(*match, mergedComponent(result.bytes(result.pieces()[*match]),
                                             viewOf(parts.todo[i]), zones.renamed));
    else
      result.append({renamed[i]});
  }
  const std::set<std::string> used = usedZoneIds(result);
  for (const NamedZone& zone : zones.added)
    if (used.contains(zone.first))
      result.appendZone(zone);
  return result.text();
}

}  // namespace ulo
