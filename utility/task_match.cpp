#include "task_match.h"

#include "UTIL_TimeConversion.h"
#include "task_words.h"

#include <cstring>

namespace {

using Columns = task_scripts::PlainTask;
using Field = ZTASK_ENG_Task::TASK_FIELD_T;

int seconds(const ZTASK_ENG_Task& task, Field field) {
  return static_cast<int>(UTIL_TimeConversion::toUTC(task.getInstant(field)));
}

bool hasDate(int date, int wanted) {
  return wanted == ZTASK_ENG_Task::noDateSeconds || date == wanted;
}

bool hasText(QStringView value, const QString& wanted) {
  return wanted.isEmpty() || value.contains(wanted, Qt::CaseInsensitive);
}

}  // namespace

// Searches bytes, which takes about half the instructions of QStringView::contains.
bool contains(QStringView field, const QString& text) {
  if (field.isEmpty() || text.isEmpty())
    return !field.isEmpty();
  const auto* const begin = reinterpret_cast<const char*>(field.utf16());
  const char* const end = begin + field.size() * qsizetype{sizeof(QChar)};
  const char* found = begin;
  const auto find = [&] {
    found =
        static_cast<const char*>(memmem(found, static_cast<std::size_t>(end - found), text.utf16(),
                                        static_cast<std::size_t>(text.size()) * sizeof(QChar)));
    return found != nullptr;
  };
  while (find()) {
    if ((found - begin) % qsizetype{sizeof(QChar)} == 0)
      return true;
    ++found;
  }
  return false;
}

bool mentions(const ResultRows& row, const QString& text) {
  return contains(row.unicodeView(Columns::note), text) ||
         contains(row.unicodeView(Columns::summary), text) ||
         contains(row.unicodeView(Columns::uuid), text);
}

Example::Example(const ZTASK_ENG_Task& example)
    : due_(seconds(example, ZTASK_ENG_Task::TASK_FIELD_DUE)),
      end_(seconds(example, ZTASK_ENG_Task::TASK_FIELD_END)), priority_(example.getPriorityValue()),
      status_(example.getStatusValue()), note_(example.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE)),
      summary_(example.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY)) {}

bool Example::isMetBy(int due, int end, int priority, int status, QStringView note,
                      QStringView summary) const {
  return hasDate(due, due_) && hasDate(end, end_) && (priority_ == 0 || priority == priority_) &&
         (status_ == codeOf(ulo::Status::none) || status == status_) && hasText(note, note_) &&
         hasText(summary, summary_);
}

bool Example::isMetBy(const ResultRows& row) const {
  return isMetBy(row.integer(Columns::due), row.integer(Columns::end),
                 row.integer(Columns::priority), row.integer(Columns::status),
                 row.unicodeView(Columns::note), row.unicodeView(Columns::summary));
}

bool Example::isMetBy(const ZTASK_ENG_Task& task) const {
  return isMetBy(seconds(task, ZTASK_ENG_Task::TASK_FIELD_DUE),
                 seconds(task, ZTASK_ENG_Task::TASK_FIELD_END), task.getPriorityValue(),
                 task.getStatusValue(), task.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE),
                 task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
}

std::string Example::scriptCondition() const {
  std::string condition;
  const auto require = [&](const char* field, int value, int ignored) {
    // Without a value, a column of the result is 0, but does not equal 0 in the script.
    if (value != ignored && value != 0)
      condition += std::string(condition.empty() ? "" : " && ") + "$c->get_field('" + field +
                   "') == " + std::to_string(value);
  };
  require("due", due_, ZTASK_ENG_Task::noDateSeconds);
  require("end", end_, ZTASK_ENG_Task::noDateSeconds);
  require("priority", priority_, 0);
  require("status", status_, codeOf(ulo::Status::none));
  return condition;
}
