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

  // In the short form of the user's language. An invalid date-time gives an empty text.
  static QString dateToString(const QDateTime& dateTime, int accuracy);
};
