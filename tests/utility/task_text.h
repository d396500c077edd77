#pragma once

#include "UTIL_TimeConversion.h"
#include "ZTASK_ENG_Task.h"

#include <string>

// A date-time field in UTC; "-" when it is not set.
inline std::string dateText(const ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field) {
  const QDateTime value = task.getDateTime(field);
  return value == ZTASK_ENG_Task::noDate() ? "-"
         : value.isValid()                 ? UTIL_TimeConversion::toISO8601(value).toStdString()
                                           : "invalid";
}

// A text field in quotes, with line breaks and backslashes shown; "null" for a null text.
inline std::string quoted(const QString& text) {
  if (text.isNull())
    return "null";
  std::string result = "\"";
  for (const char c : text.toUtf8().toStdString()) {
    if (c == '\n')
      result += "\\n";
    else if (c == '\r')
      result += "\\r";
    else if (c == '\\')
      result += "\\\\";
    else
      result += c;
  }
  return result + "\"";
}

// The fields of a task that vCalendar texts carry, one to a line.
inline std::string taskText(const ZTASK_ENG_Task& task) {
  using Task = ZTASK_ENG_Task;
  return "summary " + quoted(task.getString(Task::TASK_FIELD_SUMMARY)) + "\nnote " +
         quoted(task.getString(Task::TASK_FIELD_NOTE)) + "\ncategory " +
         quoted(task.getString(Task::TASK_FIELD_CATEGORY)) + "\nstatus " +
         std::to_string(task.getStatusValue()) + "\npriority " +
         std::to_string(task.getPriorityValue()) + "\ndue " + dateText(task, Task::TASK_FIELD_DUE) +
         "\nend " + dateText(task, Task::TASK_FIELD_END) + "\nalarm " +
         dateText(task, Task::TASK_FIELD_ALARM) + "\n";
}
