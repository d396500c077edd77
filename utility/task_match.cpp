#include "task_match.h"

#include "UTIL_TimeConversion.h"
#include "task_words.h"

#include <algorithm>
#include <iterator>

namespace {

using Field = ZTASK_ENG_Task::TASK_FIELD_T;

long seconds(const ZTASK_ENG_Task& task, Field field) {
  return UTIL_TimeConversion::toUTC(task.getInstant(field));
}

bool hasDate(const ZTASK_ENG_Task& task, Field field, long wanted) {
  return wanted == ZTASK_ENG_Task::noDateSeconds || seconds(task, field) == wanted;
}

bool hasText(const ZTASK_ENG_Task& task, Field field, const QString& wanted) {
  return wanted.isEmpty() || task.getString(field).contains(wanted, Qt::CaseInsensitive);
}

}  // namespace

bool mentions(const ZTASK_ENG_Task& task, const QString& text) {
  constexpr Field fields[] = {ZTASK_ENG_Task::TASK_FIELD_CATEGORY, ZTASK_ENG_Task::TASK_FIELD_NOTE,
                              ZTASK_ENG_Task::TASK_FIELD_SUMMARY, ZTASK_ENG_Task::TASK_FIELD_UUID};
  return std::any_of(std::begin(fields), std::end(fields), [&](Field field) {
    const QString value = task.getString(field);
    return !value.isEmpty() && value.contains(text, Qt::CaseSensitive);
  });
}

Example::Example(const ZTASK_ENG_Task& example)
    : due_(seconds(example, ZTASK_ENG_Task::TASK_FIELD_DUE)),
      end_(seconds(example, ZTASK_ENG_Task::TASK_FIELD_END)), priority_(example.getPriorityValue()),
      status_(example.getStatusValue()), note_(example.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE)),
      summary_(example.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY)) {}

bool Example::isMetBy(const ZTASK_ENG_Task& task) const {
  return hasDate(task, ZTASK_ENG_Task::TASK_FIELD_DUE, due_) &&
         hasDate(task, ZTASK_ENG_Task::TASK_FIELD_END, end_) &&
         (priority_ == 0 || task.getPriorityValue() == priority_) &&
         (status_ == codeOf(ulo::Status::none) || task.getStatusValue() == status_) &&
         hasText(task, ZTASK_ENG_Task::TASK_FIELD_NOTE, note_) &&
         hasText(task, ZTASK_ENG_Task::TASK_FIELD_SUMMARY, summary_);
}
