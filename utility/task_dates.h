// The date fields of a task record.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <QDateTime>

namespace ulo {

// Whether a date field is set. False for the no-date value and for an invalid date-time, but true
// for a local time skipped by daylight saving, which Qt considers invalid and the store converts.
// Agrees with UTIL_TimeConversion::toUTC, but logs nothing if the date is out of range.
inline bool hasDate(const QDateTime& dateTime) {
  constexpr qint64 noDate = qint64{ZTASK_ENG_Task::noDateSeconds} * 1000;
  if (dateTime.isValid())
    return dateTime.toMSecsSinceEpoch() != noDate;
  return dateTime.timeSpec() == Qt::LocalTime && dateTime.date().isValid() &&
         dateTime.time().isValid();
}

inline bool hasDate(const ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field) {
  return hasDate(task.getInstant(field));
}

}  // namespace ulo
