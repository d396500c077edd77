#include "TASK_ENG_Ical.h"

#include "UTIL_TimeConversion.h"
#include "calendar_text.h"
#include "clock.h"
#include "component_lines.h"
#include "content_line.h"
#include "ical_todos.h"
#include "todo_fields.h"
#include "todo_recurrence.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

struct TASK_ENG_Ical::Document {
  explicit Document(const QByteArray& bytes) : text(bytes), report(ulo::reportOf(text)) {
    tasks.resize(text.todos().size());
  }
  Document() : text(ulo::CalendarText::empty()) {}
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // The number of the piece.
  std::size_t todo(int number) const { return text.todos()[static_cast<std::size_t>(number)]; }
  const ulo::Piece& piece(int number) const { return text.pieces()[todo(number)]; }

  // Reads the fields once and reports lines that cannot be read.
  const ZTASK_ENG_Task& task(int number) {
    std::optional<ZTASK_ENG_Task>& known = tasks[static_cast<std::size_t>(number)];
    if (!known) {
      const ulo::Piece& source = piece(number);
      const ulo::ComponentLines lines(text.bytes(source), source.line);
      // Only lines of the text that was read have a number.
      const ulo::ProblemReport add =
          source.line == 0 ? ulo::ProblemReport() : ulo::reportInto(report);
      known = ulo::readFields(lines, {zones, source.calendar, add});
    }
    return *known;
  }

  // Calls `edit` with the lines of a to-do, and keeps them if they have changed.
  template <typename Edit> auto edit(int number, Edit change) {
    const ulo::Piece& source = piece(number);
    // The report describes the text before the change.
    task(number);
    ulo::ComponentLines lines(text.bytes(source));
    const ulo::ProblemReport noReport;
    const auto result = change(lines, ulo::DateReader{zones, source.calendar, noReport});
    if (lines.isChanged()) {
      text.replace(todo(number), lines.text());
      tasks[static_cast<std::size_t>(number)].reset();
    }
    return result;
  }

  ulo::CalendarText text;
  Report report;
  ulo::ZoneTable zones = ulo::ZoneTable(text);
  std::vector<std::optional<ZTASK_ENG_Task>> tasks;
};

bool TASK_ENG_Ical::isIcalendar(const QByteArray& text) {
  return ulo::CalendarText::isIcalendar(ulo::viewOf(text));
}

TASK_ENG_Ical::TASK_ENG_Ical() : document_(std::make_unique<Document>()) {}
TASK_ENG_Ical::TASK_ENG_Ical(const QByteArray& text)
    : document_(std::make_unique<Document>(text)) {}
TASK_ENG_Ical::TASK_ENG_Ical(TASK_ENG_Ical&& other) noexcept = default;
TASK_ENG_Ical& TASK_ENG_Ical::operator=(TASK_ENG_Ical&& other) noexcept = default;
TASK_ENG_Ical::~TASK_ENG_Ical() = default;

const TASK_ENG_Ical::Report& TASK_ENG_Ical::report() const {
  for (int i = 0; i < document_->report.todos; ++i)
    document_->task(i);
  return document_->report;
}

int TASK_ENG_Ical::count() const {
  return static_cast<int>(document_->text.todos().size());
}

ZTASK_ENG_Task TASK_ENG_Ical::task(int todo) const {
  return document_->task(todo);
}

QByteArray TASK_ENG_Ical::text(int todo) const {
  return document_->text.text(document_->todo(todo));
}

bool TASK_ENG_Ical::repeats(int todo) const {
  const ulo::ComponentLines lines(document_->text.bytes(document_->piece(todo)));
  return ulo::hasRecurrence(lines);
}

bool TASK_ENG_Ical::replace(int todo, const ZTASK_ENG_Task& task) {
  return document_->edit(todo, [&](ulo::ComponentLines& lines, const ulo::DateReader& reader) {
    return ulo::replaceFields(lines, task, reader);
  });
}

void TASK_ENG_Ical::append(const ZTASK_ENG_Task& task) {
  document_->text.append({ulo::newTodo(task, document_->text.lineEnd())});
  document_->tasks.emplace_back();
}

void TASK_ENG_Ical::append(const TASK_ENG_Ical& other, int todo) {
  const ulo::CalendarText::Parts parts = other.document_->text.parts(other.document_->todo(todo));
  const ulo::ZoneNames::Zones zones = document_->text.nameZones(parts.zones);
  for (const ulo::NamedZone& zone : zones.added)
    document_->text.appendZone(zone);
  if (!zones.added.empty()) {
    static_cast<void>(report());
    document_->zones.forget();
    document_->tasks.assign(document_->tasks.size(), std::nullopt);
  }
  document_->text.append(ulo::withZoneNames(parts.todo, zones.renamed));
  document_->tasks.emplace_back();
}

TASK_ENG_Ical::NextDate TASK_ENG_Ical::moveToNextDate(int todo) {
  const auto move = [](ulo::ComponentLines& lines, const ulo::DateReader& reader) {
    const ulo::NextDateResult result = ulo::moveToNext(lines, reader);
    if (result == ulo::NextDateResult::moved) {
      ulo::reopen(lines, reader);
      ulo::stampChange(lines, engineNow().toSecsSinceEpoch());
    }
    return result;
  };
  switch (document_->edit(todo, move)) {
  case ulo::NextDateResult::moved:
    return moved;
  case ulo::NextDateResult::lastDate:
    return lastDate;
  case ulo::NextDateResult::noRule:
    return noRule;
  case ulo::NextDateResult::notComputed:
    break;
  }
  return notComputed;
}

QByteArray TASK_ENG_Ical::text() const {
  return document_->text.text();
}

std::vector<TASK_ENG_Ical::Todo> TASK_ENG_Ical::read(const QByteArray& text, Report* report) {
  ulo::IcalTodos todos(text);
  std::vector<Todo> result;
  result.reserve(todos.count());
  for (Todo todo; todos.next(todo);)
    result.push_back(std::move(todo));
  if (todos.report().failure != none)
    result.clear();
  if (report != nullptr)
    *report = todos.report();
  return result;
}

QByteArray TASK_ENG_Ical::write(const ZTASK_ENG_Task& task, const QByteArray& previousText) {
  if (!previousText.isEmpty()) {
    TASK_ENG_Ical calendar(previousText);
    if (calendar.count() > 0) {
      calendar.replace(0, task);
      return calendar.text();
    }
  }
  TASK_ENG_Ical calendar;
  calendar.append(task);
  return calendar.text();
}
