// Date-times as the store and vCalendar texts keep them.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QDateTime>

class ULO_EXPORT UTIL_TimeConversion {
public:
  // Seconds since 1970-01-01 00:00 UTC, milliseconds dropped. An invalid date-time gives
  // 0x7FFFFFFF, the no-date value. A date that 32 bits cannot hold saturates, which is logged:
  // to 0x7FFFFFFE, for a real date never becomes the no-date value, or to -0x80000000. A local
  // time that daylight saving leaves out counts as fromISO8601 reads it, though Qt calls it
  // invalid.
  static long toUTC(const QDateTime& dateTime);

  // The local date-time of that second.
  static QDateTime fromUTC(long seconds);

  // The basic format of vCalendar 1.0 (ISO 8601) in UTC: "20060305T120000Z". Empty for an invalid
  // date-time and, which is logged, for a year that has not four digits (0001 to 9999).
  static QCString toISO8601(const QDateTime& dateTime);

  // Reads the basic format (20060305T120000Z in UTC, 20060305T120000 in local time, 20060305 for
  // local midnight) and the extended one (2006-03-05T12:00:00, seconds optional); either may have
  // an offset (+0100, +01:00, +01) for Z. Blanks around it and fractions of a second are dropped.
  // Gives a local date-time; an invalid one for anything else. A local time that daylight saving
  // leaves out is read as the clock that was not put forward would show it, one that it shows
  // twice is the first of the two (RFC 5545, 3.3.5).
  static QDateTime fromISO8601(const QCString& text);
};
