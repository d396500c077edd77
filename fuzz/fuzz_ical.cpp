// Bytes as an iCalendar 2.0 text: read, edited line by line, written and read again.
#include "TASK_ENG_Ical.h"
#include "content_line.h"
#include "ical_todos.h"

#include "fuzz_support.h"
#include "task_text.h"
#include "utc_zone.h"

#include <algorithm>
#include <array>

namespace {

using Task = ZTASK_ENG_Task;

// Enough for what differs between the to-dos of a text.
constexpr int mostTodos = 8;

QByteArray bytesOf(const std::string& text) {
  return {text.data(), static_cast<qsizetype>(text.size())};
}

// The fields, with an empty text like a missing one.
std::string fieldsOf(Task task) {
  for (const auto field :
       {Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_NOTE, Task::TASK_FIELD_CATEGORY})
    if (task.getString(field).isEmpty())
      task.setString(field, QString());
  return taskText(task);
}

// Calls `visit` with each line of a text, and with its bytes.
template <typename Visit> void forEachLine(const QByteArray& text, Visit visit) {
  ulo::LineSplitter splitter(
      std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
  ulo::RawLine line;
  std::string buffer;
  while (splitter.next(line))
    visit(ulo::unfolded(line, buffer), line.bytes);
}

// The lines of a text without those of properties with these names.
template <std::size_t count>
std::string withoutLines(const QByteArray& text, const std::array<std::string_view, count>& names) {
  std::string result;
  forEachLine(text, [&](std::string_view line, std::string_view bytes) {
    const std::string_view name = ulo::nameOf(line);
    if (std::none_of(names.begin(), names.end(),
                     [&](std::string_view one) { return ulo::sameName(name, one); }))
      result += bytes;
  });
  return result;
}

int alarms(const QByteArray& text) {
  int count = 0;
  forEachLine(text, [&](std::string_view line, std::string_view) {
    count += ulo::sameName(line, "BEGIN:VALARM") ? 1 : 0;
  });
  return count;
}

constexpr std::array<std::string_view, 3> stamps = {"DTSTAMP", "LAST-MODIFIED", "SEQUENCE"};

void checkText(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  FUZZ_REQUIRE(calendar.text() == text);
  const TASK_ENG_Ical::Report& report = calendar.report();
  FUZZ_REQUIRE(calendar.text() == text);
  FUZZ_REQUIRE(report.todos == calendar.count());
  FUZZ_REQUIRE((report.failure == TASK_ENG_Ical::none) == (calendar.count() > 0));
  FUZZ_REQUIRE(report.failure != TASK_ENG_Ical::notCalendar || !TASK_ENG_Ical::isIcalendar(text));
  FUZZ_REQUIRE(report.problems.size() == std::min<std::size_t>(report.problemCount, 100));
  const auto lines = static_cast<std::size_t>(text.count('\n') + text.count('\r')) + 1;
  for (const TASK_ENG_Ical::Problem& problem : report.problems)
    FUZZ_REQUIRE(problem.line <= lines);
}

// Reading one after the other returns the same to-dos.
void checkSequence(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  ulo::IcalTodos todos(text);
  FUZZ_REQUIRE(todos.count() == static_cast<std::size_t>(calendar.count()));
  TASK_ENG_Ical::Todo each;
  for (int i = 0; todos.next(each); ++i) {
    FUZZ_REQUIRE(todos.uuid(static_cast<std::size_t>(i)) ==
                 each.task.getString(Task::TASK_FIELD_UUID));
    if (i >= mostTodos)
      continue;
    FUZZ_REQUIRE(taskText(each.task) == taskText(calendar.task(i)));
    FUZZ_REQUIRE(each.text == calendar.text(i));
    FUZZ_REQUIRE(each.repeats == calendar.repeats(i));
  }
  FUZZ_REQUIRE(todos.report().failure == calendar.report().failure ||
               todos.report().failure == TASK_ENG_Ical::tooLarge);
}

// A to-do's own text, and a new text with its fields, read alike.
void checkReadBack(const TASK_ENG_Ical& calendar, int todo) {
  const Task task = calendar.task(todo);
  const TASK_ENG_Ical alone(calendar.text(todo));
  FUZZ_REQUIRE(alone.count() == 1);
  FUZZ_REQUIRE(fieldsOf(alone.task(0)) == fieldsOf(task));
  FUZZ_REQUIRE(alone.repeats(0) == calendar.repeats(todo));
  FUZZ_REQUIRE(alone.text(0) == alone.text());

  const QByteArray written = TASK_ENG_Ical::write(task);
  const TASK_ENG_Ical again(written);
  FUZZ_REQUIRE(TASK_ENG_Ical::isIcalendar(written));
  FUZZ_REQUIRE(again.count() == 1);
  FUZZ_REQUIRE(again.report().problemCount == 0);
  FUZZ_REQUIRE(fieldsOf(again.task(0)) == fieldsOf(task));
  FUZZ_REQUIRE(TASK_ENG_Ical::write(task, calendar.text(todo)) == calendar.text(todo));

  TASK_ENG_Ical all;
  all.append(calendar, todo);
  Task other = task;
  other.setString(Task::TASK_FIELD_UUID, "another one");
  all.append(other);
  const TASK_ENG_Ical appended(all.text());
  FUZZ_REQUIRE(appended.count() == 2);
  FUZZ_REQUIRE(fieldsOf(appended.task(0)) == fieldsOf(task));
  FUZZ_REQUIRE(fieldsOf(appended.task(1)) == fieldsOf(task));
}

// Replaces one field and requires that only its lines change.
template <std::size_t count, typename Edit>
void checkEdit(const QByteArray& text, int todo, const std::array<std::string_view, count>& names,
               Edit edit) {
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(todo);
  FUZZ_REQUIRE(!calendar.replace(todo, task));
  FUZZ_REQUIRE(calendar.text() == text);
  edit(task);
  const bool isReplaced = calendar.replace(todo, task);
  const QByteArray edited = calendar.text();
  FUZZ_REQUIRE(isReplaced == (edited != text));
  FUZZ_REQUIRE(withoutLines(edited, names) == withoutLines(text, names));
  const TASK_ENG_Ical again(edited);
  FUZZ_REQUIRE(again.count() == calendar.count());
  FUZZ_REQUIRE(fieldsOf(again.task(todo)) == fieldsOf(task));
  FUZZ_REQUIRE(fieldsOf(calendar.task(todo)) == fieldsOf(task));
}

void checkEdits(const QByteArray& text, int todo) {
  const std::array<std::string_view, 5> texts = {"SUMMARY", "DESCRIPTION", stamps[0], stamps[1],
                                                 stamps[2]};
  // Not the beginning of a longer text, which counts as unchanged.
  checkEdit(text, todo, texts, [](Task& task) {
    task.setString(Task::TASK_FIELD_SUMMARY,
                   "Gr\u00FC\u00DFe, " + task.getString(Task::TASK_FIELD_NOTE).left(80) + "\n;\\");
    task.setString(Task::TASK_FIELD_NOTE, QString());
  });
  const std::array<std::string_view, 6> states = {"STATUS",  "PRIORITY", "PERCENT-COMPLETE",
                                                  stamps[0], stamps[1],  stamps[2]};
  checkEdit(text, todo, states, [](Task& task) {
    task.setStatus(task.getStatusValue() == 0 ? 2 : 0);
    task.setPriority(task.getPriorityValue() == 4 ? 0 : 4);
  });
  const std::array<std::string_view, 4> categories = {"CATEGORIES", stamps[0], stamps[1],
                                                      stamps[2]};
  checkEdit(text, todo, categories,
            [](Task& task) { task.setString(Task::TASK_FIELD_CATEGORY, "a,b"); });
  const std::array<std::string_view, 10> dates = {"DTSTART", "DUE",    "DURATION", "COMPLETED",
                                                  "TRIGGER", "BEGIN",  "END",      stamps[0],
                                                  stamps[1], stamps[2]};
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(todo);
  const QDateTime date(QDate(2026, 11, 20), QTime(12, 34, 56), ulo::utcZone);
  task.setDateTime(Task::TASK_FIELD_DUE, UTIL_TimeConversion::toLocalTime(date));
  task.setDateTime(Task::TASK_FIELD_END, UTIL_TimeConversion::toLocalTime(date.addSecs(60)));
  task.setDateTime(Task::TASK_FIELD_ALARM, UTIL_TimeConversion::toLocalTime(date.addDays(-1)));
  calendar.replace(todo, task);
  const std::string after = withoutLines(calendar.text(), dates);
  const std::string before = withoutLines(text, dates);
  // A new alarm has lines of its own.
  if (alarms(calendar.text()) == alarms(text))
    FUZZ_REQUIRE(after == before);
  // STATUS may follow from COMPLETED.
  const Task again = TASK_ENG_Ical(calendar.text()).task(todo);
  for (const auto field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_END, Task::TASK_FIELD_ALARM})
    FUZZ_REQUIRE(dateText(again, field) == dateText(task, field));
  FUZZ_REQUIRE(!TASK_ENG_Ical(calendar.text()).replace(todo, again));
}

void checkMove(const QByteArray& text, int todo) {
  TASK_ENG_Ical calendar(text);
  const TASK_ENG_Ical::NextDate result = calendar.moveToNextDate(todo);
  FUZZ_REQUIRE(calendar.repeats(todo) == (result != TASK_ENG_Ical::noRule));
  FUZZ_REQUIRE((calendar.text() == text) == (result != TASK_ENG_Ical::moved));
  FUZZ_REQUIRE(TASK_ENG_Ical(calendar.text()).count() == calendar.count());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isPrepared = [] {
    fuzz::prepare();
    return true;
  }();
  static_cast<void>(isPrepared);
  const std::string input = fuzz::textOf(data, size);
  const QByteArray text = bytesOf(input);
  checkText(text);
  checkSequence(text);
  const TASK_ENG_Ical calendar(text);
  for (int i = 0; i < std::min(calendar.count(), mostTodos); ++i) {
    checkReadBack(calendar, i);
    checkEdits(text, i);
    checkMove(text, i);
  }
  FUZZ_REQUIRE(TASK_ENG_Ical::read(text).size() == static_cast<std::size_t>(calendar.count()));
  return 0;
}
