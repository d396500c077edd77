#include "task_format.h"

#include "dates.h"
#include "task_dates.h"
#include "task_words.h"
#include "text.h"

namespace ulotask {
namespace {

const char* statusWord(const ZTASK_ENG_Task& task) {
  return ulo::entryOf(task.getStatusValue()).word;
}

const char* priorityWord(const ZTASK_ENG_Task& task) {
  return ulo::entryOf(ulo::priorityOf(task)).word;
}

std::string orDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

std::string shownDate(const ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field) {
  return orDash(ulo::formatDate(task.getInstant(field)).toStdString());
}

struct DateField {
  ZTASK_ENG_Task::TASK_FIELD_T field;
  const char* label;
};
constexpr DateField dateFields[] = {
    {ZTASK_ENG_Task::TASK_FIELD_DUE, "Due"},
    {ZTASK_ENG_Task::TASK_FIELD_ALARM, "Alarm"},
    {ZTASK_ENG_Task::TASK_FIELD_END, "Finished"},
    {ZTASK_ENG_Task::TASK_FIELD_REVISION, "Changed"},
};

struct TextField {
  ZTASK_ENG_Task::TASK_FIELD_T field;
  const char* label;
};
constexpr TextField summaryField = {ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "Summary"};
constexpr TextField categoryField = {ZTASK_ENG_Task::TASK_FIELD_CATEGORY, "Category"};
constexpr TextField uuidField = {ZTASK_ENG_Task::TASK_FIELD_UUID, "UUID"};
constexpr TextField noteField = {ZTASK_ENG_Task::TASK_FIELD_NOTE, "Note"};

constexpr int labelColumns = 10;

void printField(Output& output, std::string label, const std::string& value) {
  label.resize(labelColumns, ' ');
  output.line(label + orDash(value));
}

void printField(Output& output, const ZTASK_ENG_Task& task, const TextField& field) {
  printField(output, field.label, severalLines(task.getString(field.field), labelColumns));
}

}  // namespace

void printTask(Output& output, const ZTASK_ENG_Task& task, const QString& repetition) {
  printField(output, "UID", std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)));
  printField(output, task, summaryField);
  printField(output, "Status", statusWord(task));
  printField(output, "Priority",
             std::to_string(task.getPriorityValue()) + " (" + priorityWord(task) + ")");
  printField(output, task, categoryField);
  for (const DateField& field : dateFields)
    printField(output, field.label, shownDate(task, field.field));
  if (!repetition.isEmpty())
    printField(output, "Repeats", oneLine(repetition));
  printField(output, task, uuidField);
  printField(output, task, noteField);
}

std::string sentence(const ulo::ShortenedText& text) {
  const char* field = text.field == ZTASK_ENG_Task::TASK_FIELD_NOTE ? "note" : "summary";
  return std::string("a ") + field + " of " + std::to_string(text.length) +
         " characters is cut to its first " + std::to_string(text.kept);
}

Table taskTable() {
  constexpr int widestCategory = 16;
  return Table({{"UID", Table::Align::right, 0},
                {"DUE", Table::Align::left, 0},
                {"PRI", Table::Align::right, 0},
                {"STATUS", Table::Align::left, 0},
                {"CATEGORY", Table::Align::left, widestCategory},
                {"SUMMARY", Table::Align::left, 0}});
}

Table::Row rowOf(const ZTASK_ENG_Task& task) {
  return {std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)),
          shownDate(task, ZTASK_ENG_Task::TASK_FIELD_DUE),
          std::to_string(task.getPriorityValue()),
          statusWord(task),
          orDash(oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY))),
          oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY))};
}

}  // namespace ulotask
