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

  // Returns the local date-time of that second: its date() and time() are those of the local
  // calendar and clock, and toUTC() returns the same second. Its time specification is
  // Qt::LocalTime, except in an hour that the clock shows twice with the same daylight saving, as
  // when a zone changes its standard time: Qt cannot tell the two apart in local time, so it is
  // Qt::OffsetFromUTC there.
  static QDateTime fromUTC(long seconds);

  // Returns the same instant as fromUTC() would, for any year and with its milliseconds. A
  // date-time in another time zone becomes a local one, and a local time that daylight saving
  // leaves out the one that toUTC() stores. Returns an invalid date-time for an invalid one.
  static QDateTime toLocalTime(const QDateTime& dateTime);

  // Returns the last second of a local day, from 23:59:59 on its clock. If the clock shows that
  // time twice it is the second one; if the clock leaves it out, the last second before that.
  static QDateTime lastSecondOf(const QDate& day);

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
