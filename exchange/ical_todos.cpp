#include "ical_todos.h"

#include "component_lines.h"
#include "todo_fields.h"
#include "todo_recurrence.h"

#include <algorithm>

namespace ulo {
namespace {

TASK_ENG_Ical::Failure failureOf(const CalendarText& text) {
  switch (text.failure()) {
  case TextFailure::none:
    break;
  case TextFailure::notCalendar:
    return TASK_ENG_Ical::notCalendar;
  case TextFailure::truncated:
    return TASK_ENG_Ical::truncated;
  case TextFailure::tooLarge:
    return TASK_ENG_Ical::tooLarge;
  }
  return text.todos().empty() ? TASK_ENG_Ical::noTodo : TASK_ENG_Ical::none;
}

void addProblem(TASK_ENG_Ical::Report& report, std::size_t line, const QString& problem) {
  if (report.problemCount++ < listedFaults)
    report.problems.push_back({line, problem});
}

}  // namespace

TASK_ENG_Ical::Report reportOf(const CalendarText& text) {
  TASK_ENG_Ical::Report report;
  report.failure = failureOf(text);
  report.todos = static_cast<int>(text.todos().size());
  report.otherComponents = text.otherComponents();
  for (const TextFault& fault : text.faults())
    addProblem(report, fault.line, QString::fromStdString(fault.text));
  report.problemCount = text.faultCount();
  return report;
}

ProblemReport reportInto(TASK_ENG_Ical::Report& report) {
  return [&report](std::size_t line, const QString& problem) { addProblem(report, line, problem); };
}

IcalTodos::IcalTodos(const QByteArray& text)
    : text_(text), zones_(text_), report_(reportOf(text_)) {}

IcalTodos::~IcalTodos() = default;

QString IcalTodos::uuid(std::size_t todo) const {
  return readUuid(ComponentLines(text_.bytes(text_.pieces()[text_.todos()[todo]])));
}

bool IcalTodos::next(TASK_ENG_Ical::Todo& todo) {
  const ProblemReport problems = reportInto(report_);
  for (; next_ < count(); ++next_) {
    const Piece& piece = text_.pieces()[text_.todos()[next_]];
    const ComponentLines lines(text_.bytes(piece), piece.line);
    todo.task = readFields(lines, {zones_, piece.calendar, problems});
    // If the texts are too large, only the report is completed.
    if (report_.failure != TASK_ENG_Ical::none)
      continue;
    todo.text = text_.text(text_.todos()[next_]);
    todo.repeats = hasRecurrence(lines);
    textBytes_ += static_cast<std::size_t>(todo.text.size());
    if (textBytes_ > TASK_ENG_Ical::textsLimit) {
      report_.failure = TASK_ENG_Ical::tooLarge;
      continue;
    }
    ++next_;
    return true;
  }
  if (textBytes_ > TASK_ENG_Ical::textsLimit) {
    textBytes_ = 0;
    report_.problems.insert(report_.problems.begin(),
                            {0, QString("the texts of the to-dos have more than %1 MiB")
                                    .arg(TASK_ENG_Ical::textsLimit >> 20)});
    report_.problems.resize(std::min(report_.problems.size(), listedFaults));
    ++report_.problemCount;
  }
  return false;
}

}  // namespace ulo
