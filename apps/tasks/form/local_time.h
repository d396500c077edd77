#pragma once

#include <QDateTime>

namespace tasks {

// A time of a local day; the day's first moment where clocks leave that time out.
[[nodiscard]] inline QDateTime atTime(const QDate& day, const QTime& time) {
  const QDateTime dateTime(day, time);
  return dateTime.isValid() ? dateTime : day.startOfDay();
}

}  // namespace tasks
