#include "todo_fields.h"

#include "UTIL_TimeConversion.h"
#include "clock.h"
#include "foreign_text.h"
#include "task_dates.h"
#include "task_words.h"
#include "todo_due.h"
#include "utc_zone.h"
#include "uuid.h"

#include <array>
#include <limits>
#include <utility>

namespace ulo {
namespace {

using Task = ZTASK_ENG_Task;
constexpr std::size_t none = ComponentLines::none;

// RFC 5545, section 3.8.1.11. A status without a word is written as "needs action".
struct StatusWord {
  const char* word;
  Status status;
};
constexpr std::array<StatusWord, 4> icalendarStatusWords = {{{"NEEDS-ACTION", Status::needsAction},
                                                             {"COMPLETED", Status::completed},
                                                             {"IN-PROCESS", Status::accepted},
                                                             {"CANCELLED", Status::declined}}};

const StatusWord& wordOf(int status) {
  for (const StatusWord& entry : icalendarStatusWords)
    if (codeOf(entry.status) == status)
      return entry;
  return icalendarStatusWords.front();
}

constexpr int lowestPriority = 9;

// The priority that a text can express. A record's class of any other number is low.
int writtenPriority(int priority) {
  return priority < 0 || priority > lowestPriority ? lowestPriority : priority;
}

constexpr int allPercent = 100;

std::optional<std::int64_t> instantOf(const QDateTime& dateTime) {
  if (!hasDate(dateTime))
    return std::nullopt;
  // Qt cannot convert a local time that the clock skips.
  return (dateTime.isValid() ? dateTime : UTIL_TimeConversion::toLocalTime(dateTime))
      .toSecsSinceEpoch();
}

std::optional<std::int64_t> instantOf(const Task& task, Task::TASK_FIELD_T field) {
  const std::optional<std::int64_t> instant = instantOf(task.getInstant(field));
  return instant && hasFourDigitYear(*instant) ? instant : std::nullopt;
}

void setInstant(Task& task, Task::TASK_FIELD_T field, std::int64_t instant) {
  task.setDateTime(field, UTIL_TimeConversion::toLocalTime(
                              QDateTime::fromSecsSinceEpoch(instant, ulo::utcZone)));
}

std::string alarmText(const Task& task) {
  const QString summary = task.getString(Task::TASK_FIELD_SUMMARY);
  return summary.isEmpty() ? "Reminder" : valueOfText(summary);
}

// Reads the fields one by one.
class FieldReader {
public:
  FieldReader(const ComponentLines& lines, const DateReader& reader)
      : lines_(lines), reader_(reader) {}

  // The value of a property without surrounding blanks; nothing if there is none.
  [[nodiscard]] std::optional<std::string_view> value(std::string_view name) const {
    const std::size_t line = lines_.find(name);
    const std::optional<ContentLine> content = line == none ? std::nullopt : lines_.property(line);
    return content ? std::optional(withoutBlanks(content->value)) : std::nullopt;
  }

  // A null text if the property is missing.
  [[nodiscard]] QString text(std::string_view name) const {
    const std::size_t line = lines_.find(name);
    const std::optional<ContentLine> content = line == none ? std::nullopt : lines_.property(line);
    return content ? decoded(line, content->value) : QString();
  }

  [[nodiscard]] QString category() const {
    const std::size_t line = lines_.find("CATEGORIES");
    const std::optional<ContentLine> content = line == none ? std::nullopt : lines_.property(line);
    if (!content)
      return {};
    const QString name =
        decoded(line, content->value.substr(0, firstValueLength(content->value))).trimmed();
    return name.isEmpty() ? QString() : name;
  }

  [[nodiscard]] int priority() const {
    const std::optional<std::string_view> text = value("PRIORITY");
    if (!text)
      return 0;
    const std::optional<int> number = parseInteger(*text);
    if (number && *number >= 0 && *number <= lowestPriority)
      return *number;
    reader_.problem(lines_, lines_.find("PRIORITY"),
                    "not a number from 0 to 9; the to-do has none");
    return 0;
  }

  [[nodiscard]] int percent() const {
    return parseInteger(value("PERCENT-COMPLETE").value_or("")).value_or(0);
  }

  [[nodiscard]] Status status() const {
    const std::optional<std::string_view> word = value("STATUS");
    if (!word) {
      const bool isDone = lines_.find("COMPLETED") != none || percent() == allPercent;
      return isDone ? Status::completed : Status::needsAction;
    }
    for (const StatusWord& entry : icalendarStatusWords)
      if (sameName(*word, entry.word))
        return entry.status;
    reader_.problem(lines_, lines_.find("STATUS"), "not a known status; \"needs action\" is used");
    return Status::needsAction;
  }

  [[nodiscard]] std::optional<std::int64_t> date(std::string_view name) const {
    const std::size_t line = lines_.find(name);
    return line == none ? std::nullopt : inRange(line, reader_.read(lines_, line));
  }

  // Nothing, and a report, for a date that a record cannot hold.
  [[nodiscard]] std::optional<std::int64_t> inRange(std::size_t line,
                                                    const std::optional<DateValue>& date) const {
    if (!date)
      return std::nullopt;
    const std::int64_t instant = date->instant();
    return reader_.isInRange(lines_, line, instant) ? std::optional(instant) : std::nullopt;
  }

private:
  [[nodiscard]] QString decoded(std::size_t line, std::string_view value) const {
    bool isLatin1 = false;
    QString text = textOfValue(value, isLatin1);
    if (isLatin1)
      reader_.problem(lines_, line, "not valid UTF-8; read as Latin-1");
    return text;
  }

  const ComponentLines& lines_;
  const DateReader& reader_;
};

// Returns true if a record's text equals the value of the line, or its truncated beginning.
bool isSameText(const QString& present, const QString& text, int limit) {
  const QString written = asWritten(text);
  if (written == present || (written.isEmpty() && present.isEmpty()))
    return true;
  return present.size() > limit &&
         (written == wholeLetters(present, limit) || written == asWritten(present.left(limit)));
}

// Sets the value of the first property with a name, and removes some of its parameters; adds one if
// there is none.
void setValue(ComponentLines& lines, std::string_view name, const std::string& value,
              std::initializer_list<std::string_view> removed = {}) {
  const std::size_t line = lines.find(name);
  const std::optional<ContentLine> content = line == none ? std::nullopt : lines.property(line);
  if (!content) {
    lines.insert(lines.endOfProperties(), std::string(name) + ':' + value);
    return;
  }
  lines.replace(line, std::string(content->name) + withoutParameters(content->parameters, removed) +
                          ':' + value);
}

// Replaces the fields one by one.
class FieldWriter {
public:
  FieldWriter(ComponentLines& lines, const Task& task, const DateReader& reader)
      : lines_(lines), task_(task), reader_(reader), fields_(lines, reader) {}

  bool run() {
    const std::optional<std::size_t> alarm = numberOfAlarm();
    replaceText("SUMMARY", Task::TASK_FIELD_SUMMARY, Task::summaryLimit);
    replaceText("DESCRIPTION", Task::TASK_FIELD_NOTE, Task::noteLimit);
    replaceCategory();
    replacePriority();
    replaceStatus();
    replaceEnd();
    replaceDueDate(lines_, task_, reader_);
    replaceAlarm(alarm);
    if (!lines_.isChanged())
      return false;
    stampChange(
        lines_,
        instantOf(task_, Task::TASK_FIELD_REVISION).value_or(instantOf(engineNow()).value_or(0)));
    return true;
  }

private:
  void replaceText(std::string_view name, Task::TASK_FIELD_T field, int limit) {
    const QString text = task_.getString(field);
    if (isSameText(fields_.text(name), text, limit))
      return;
    if (asWritten(text).isEmpty())
      lines_.removeAll(name);
    else
      setValue(lines_, name, valueOfText(text));
  }

  void replaceCategory() {
    const QString name = asWritten(task_.getString(Task::TASK_FIELD_CATEGORY)).trimmed();
    if (name == fields_.category() || (name.isEmpty() && fields_.category().isEmpty()))
      return;
    const std::size_t line = lines_.find("CATEGORIES");
    const std::optional<ContentLine> content = line == none ? std::nullopt : lines_.property(line);
    const std::string_view list = content ? content->value : std::string_view();
    const std::string_view others = list.substr(firstValueLength(list));
    if (!name.isEmpty())
      setValue(lines_, "CATEGORIES", valueOfText(name) + std::string(others));
    else if (others.empty())
      lines_.remove({line, line + 1});
    else
      setValue(lines_, "CATEGORIES", std::string(others.substr(1)));
  }

  void replacePriority() {
    const int priority = writtenPriority(task_.getPriorityValue());
    if (priority != fields_.priority())
      setValue(lines_, "PRIORITY", std::to_string(priority));
  }

  void replaceStatus() {
    const Status present = fields_.status();
    const StatusWord& wanted = wordOf(task_.getStatusValue());
    if (wanted.status == present)
      return;
    setValue(lines_, "STATUS", wanted.word);
    if (wanted.status == Status::completed)
      setValue(lines_, "PERCENT-COMPLETE", std::to_string(allPercent));
    else if (present == Status::completed && fields_.percent() == allPercent)
      setValue(lines_, "PERCENT-COMPLETE", "0");
  }

  void replaceEnd() {
    const std::optional<std::int64_t> end = instantOf(task_, Task::TASK_FIELD_END);
    const std::size_t line = lines_.find("COMPLETED");
    if (isSameDate(line == none ? std::nullopt : reader_.read(lines_, line), end))
      return;
    if (!end)
      lines_.removeAll("COMPLETED");
    else if (line != none)
      replaceDate(lines_, line, utcDate(*end), reader_);
    else
      lines_.insert(lines_.endOfProperties(), utcDate(*end).line("COMPLETED", ""));
  }

  // Returns which of the components VALARM is the alarm of the record.
  [[nodiscard]] std::optional<std::size_t> numberOfAlarm() const {
    const std::optional<TodoAlarm> alarm = readAlarm(lines_, readDates(lines_, reader_), reader_);
    if (!alarm)
      return std::nullopt;
    std::size_t number = 0;
    for (const ComponentLines::Range& range : lines_.nested("VALARM"))
      number += range.begin < alarm->range.begin ? 1 : 0;
    return number;
  }

  // `before` is numberOfAlarm() before the dates were replaced, which can take the time from a
  // relative alarm.
  void replaceAlarm(std::optional<std::size_t> before) {
    const std::optional<TodoAlarm> present = readAlarm(lines_, readDates(lines_, reader_), reader_);
    const std::optional<std::int64_t> alarm = instantOf(task_, Task::TASK_FIELD_ALARM);
    if (!alarm) {
      if (before)
        lines_.remove(lines_.nested("VALARM").at(*before));
      else if (present)
        lines_.remove(present->range);
      return;
    }
    if (present && present->instant == *alarm)
      return;
    std::size_t trigger = present ? present->trigger : none;
    if (!present && before)
      trigger = lines_.find("TRIGGER", lines_.nested("VALARM").at(*before));
    const std::string value = dateTimeText(*alarm) + "Z";
    if (trigger == none) {
      addAlarm(value);
      return;
    }
    const std::optional<ContentLine> content = lines_.property(trigger);
    std::string replaced(content->name);
    replaced.append(";VALUE=DATE-TIME")
        .append(withoutParameters(content->parameters, {"VALUE", "RELATED", "TZID"}))
        .append(":")
        .append(value);
    lines_.replace(trigger, replaced);
  }

  void addAlarm(const std::string& trigger) {
    std::size_t line = lines_.endOfComponents();
    for (const std::string& content :
         {std::string("BEGIN:VALARM"), std::string("ACTION:DISPLAY"),
          "DESCRIPTION:" + alarmText(task_), "TRIGGER;VALUE=DATE-TIME:" + trigger,
          std::string("END:VALARM")})
      lines_.insert(line++, content, true);
  }

  ComponentLines& lines_;
  const Task& task_;
  const DateReader& reader_;
  FieldReader fields_;
};

void setStamp(ComponentLines& lines, std::string_view name, const std::string& value) {
  setValue(lines, name, value, {"VALUE", "TZID"});
}

}  // namespace

QString readUuid(const ComponentLines& lines) {
  const std::size_t line = lines.find("UID");
  const std::optional<ContentLine> content = line == none ? std::nullopt : lines.property(line);
  bool isLatin1 = false;
  return content ? textOfValue(content->value, isLatin1) : QString();
}

ZTASK_ENG_Task readFields(const ComponentLines& lines, const DateReader& reader) {
  const FieldReader fields(lines, reader);
  Task task;
  task.setString(Task::TASK_FIELD_UUID, fields.text("UID"));
  task.setString(Task::TASK_FIELD_SUMMARY, fields.text("SUMMARY"));
  task.setString(Task::TASK_FIELD_NOTE, fields.text("DESCRIPTION"));
  task.setString(Task::TASK_FIELD_CATEGORY, fields.category());
  task.setPriority(fields.priority());
  task.setStatus(codeOf(fields.status()));
  const auto set = [&](Task::TASK_FIELD_T field, const std::optional<std::int64_t>& instant) {
    if (instant)
      setInstant(task, field, *instant);
  };
  const TodoDates dates = readDates(lines, reader);
  if (dates.due)
    set(Task::TASK_FIELD_DUE,
        fields.inRange(dates.dueLine != none ? dates.dueLine : dates.durationLine, dates.due));
  set(Task::TASK_FIELD_END, fields.date("COMPLETED"));
  set(Task::TASK_FIELD_REVISION, fields.date("LAST-MODIFIED"));
  if (const std::optional<TodoAlarm> alarm = readAlarm(lines, dates, reader))
    setInstant(task, Task::TASK_FIELD_ALARM, alarm->instant);
  return task;
}

bool replaceFields(ComponentLines& lines, const ZTASK_ENG_Task& task, const DateReader& reader) {
  return FieldWriter(lines, task, reader).run();
}

void replaceDueDate(ComponentLines& lines, const ZTASK_ENG_Task& task, const DateReader& reader) {
  replaceDue(lines, instantOf(task, Task::TASK_FIELD_DUE), reader);
}

void reopen(ComponentLines& lines, const DateReader& reader) {
  const FieldReader fields(lines, reader);
  lines.removeAll("COMPLETED");
  if (fields.percent() != 0)
    setValue(lines, "PERCENT-COMPLETE", "0");
  if (fields.status() != Status::needsAction)
    setValue(lines, "STATUS", wordOf(codeOf(Status::needsAction)).word);
}

void stampChange(ComponentLines& lines, std::int64_t instant) {
  const std::string time = dateTimeText(instant) + "Z";
  setStamp(lines, "DTSTAMP", time);
  setStamp(lines, "LAST-MODIFIED", time);
  const std::size_t line = lines.find("SEQUENCE");
  const std::optional<ContentLine> content = line == none ? std::nullopt : lines.property(line);
  const int sequence = content ? parseInteger(withoutBlanks(content->value)).value_or(0) : 0;
  constexpr int last = std::numeric_limits<int>::max();
  setStamp(lines, "SEQUENCE",
           std::to_string(sequence < 0       ? 1
                          : sequence == last ? last
                                             : sequence + 1));
}

QByteArray newTodo(const ZTASK_ENG_Task& task, const std::string& lineEnd) {
  std::string text;
  const auto add = [&](const std::string& line) { text += foldedLine(line, lineEnd); };
  const auto addText = [&](const char* name, const QString& value) {
    if (!asWritten(value).isEmpty())
      add(std::string(name) + ':' + valueOfText(value));
  };
  const auto addDate = [&](const char* name, const std::optional<std::int64_t>& instant) {
    if (instant)
      add(utcDate(*instant).line(name, ""));
  };
  const std::optional<std::int64_t> revision = instantOf(task, Task::TASK_FIELD_REVISION);
  const QString uuid = task.getString(Task::TASK_FIELD_UUID);
  add("BEGIN:VTODO");
  addText("UID", asWritten(uuid).isEmpty() ? generateUuid() : uuid);
  addDate("DTSTAMP", revision ? revision : instantOf(engineNow()));
  addDate("LAST-MODIFIED", revision);
  addText("SUMMARY", task.getString(Task::TASK_FIELD_SUMMARY));
  addText("DESCRIPTION", task.getString(Task::TASK_FIELD_NOTE));
  addText("CATEGORIES", task.getString(Task::TASK_FIELD_CATEGORY).trimmed());
  if (const int priority = writtenPriority(task.getPriorityValue()))
    add("PRIORITY:" + std::to_string(priority));
  add(std::string("STATUS:") + wordOf(task.getStatusValue()).word);
  if (const std::optional<std::int64_t> due = instantOf(task, Task::TASK_FIELD_DUE))
    add(localDay(*due).value_or(utcDate(*due)).line("DUE", ""));
  addDate("COMPLETED", instantOf(task, Task::TASK_FIELD_END));
  if (const std::optional<std::int64_t> alarm = instantOf(task, Task::TASK_FIELD_ALARM)) {
    add("BEGIN:VALARM");
    add("ACTION:DISPLAY");
    add("DESCRIPTION:" + alarmText(task));
    add("TRIGGER;VALUE=DATE-TIME:" + dateTimeText(*alarm) + "Z");
    add("END:VALARM");
  }
  add("END:VTODO");
  return QByteArray::fromStdString(text);
}

}  // namespace ulo
