// Date-times as people read them.
#pragma once

#include "export.h"

#include <QDateTime>
#include <QString>

class ULO_EXPORT UTIL_DateTime {
public:
  // How much of a date-time is shown.
  enum DateAccuracy : int {
    dateOnly = 0,
    dateAndTime = 1,
  };

  // Returns the local date and time in the short form of the user's language. A local time that
  // daylight saving leaves out is shown as UTIL_TimeConversion::toUTC() stores it. Returns an empty
  // text for an invalid date-time.
  static QString dateToString(const QDateTime& dateTime, int accuracy);
};
