// Formats date-times for display.
#pragma once

#include "ulo/export.h"

#include <QDateTime>
#include <QString>

class ULO_EXPORT UTIL_DateTime {
public:
  // The part of a date-time to show.
  enum DateAccuracy : int {
    dateOnly = 0,
    dateAndTime = 1,
  };

  // Returns the local date and time in the short format of the user's locale. A local time skipped
  // by daylight saving is shown as UTIL_TimeConversion::toUTC() stores it. Returns an empty string
  // for an invalid date-time.
  static QString dateToString(const QDateTime& dateTime, int accuracy);
};
