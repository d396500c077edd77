#include "task_match.h"

#include "UTIL_TimeConversion.h"

#include <algorithm>
#include <iterator>

namespace {

using Field = ZTASK_ENG_Task::TASK_FIELD_T;

bool hasDateOf(const ZTASK_ENG_Task& task, const ZTASK_ENG_Task& example, Field field) {
  const long wanted = UTIL_TimeConversion::toUTC(example.getDateTime(field));
  return wanted == ZTASK_ENG_Task::noDateSeconds ||
         UTIL_TimeConversion::toUTC(task.getDateTime(field)) == wanted;
}

bool hasTextOf(const ZTASK_ENG_Task& task, const ZTASK_ENG_Task& example, Field field) {
  const QString wanted = example.getString(field);
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

bool resembles(const ZTASK_ENG_Task& task, const ZTASK_ENG_Task& example) {
  return hasDateOf(task, example, ZTASK_ENG_Task::TASK_FIELD_DUE) &&
         hasDateOf(task, example, ZTASK_ENG_Task::TASK_FIELD_END) &&
         (example.getPriorityValue() == 0 ||
          task.getPriorityValue() == example.getPriorityValue()) &&
         (example.getStatusValue() == -1 || task.getStatusValue() == example.getStatusValue()) &&
         hasTextOf(task, example, ZTASK_ENG_Task::TASK_FIELD_NOTE) &&
         hasTextOf(task, example, ZTASK_ENG_Task::TASK_FIELD_SUMMARY);
}
