// Converts date-times to and from the formats of the store and of vCalendar texts.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QDateTime>

class ULO_EXPORT UTIL_TimeConversion {
public:
  // Returns seconds since 1970-01-01 00:00 UTC; milliseconds are dropped. Returns 0x7FFFFFFF, the
  // no-date value, for an invalid date-time. A date that does not fit into 32 bits is clamped to
  // 0x7FFFFFFE, so that it does not become the no-date value, or to -0x80000000; this is logged. A
  // local time skipped by daylight saving, which Qt considers invalid, is interpreted as by
  // fromISO8601.
  static long toUTC(const QDateTime& dateTime);

  // Returns the local date-time of that second: date() and time() are those of the local calendar
  // and clock, and toUTC() returns the same second. Its time specification is Qt::LocalTime, except
  // in an hour that the clock shows twice with the same daylight saving, as when a zone changes its
  // standard time. Qt cannot distinguish the two in local time, so the result is Qt::OffsetFromUTC
  // there.
  static QDateTime fromUTC(long seconds);

  // Converts any date-time to a local one, as fromUTC() does, but for any year and with
  // milliseconds. A local time skipped by daylight saving becomes the one that toUTC() stores.
  // Returns an invalid date-time for an invalid one.
  static QDateTime toLocalTime(const QDateTime& dateTime);

  // Returns the last second of a local day, normally 23:59:59. If the clock shows that time twice,
  // returns the second occurrence; if the clock skips it, the last second before the gap.
  static QDateTime lastSecondOf(const QDate& day);

  // Returns the basic format of vCalendar 1.0 (ISO 8601) in UTC: "20060305T120000Z". Returns an
  // empty string for an invalid date-time and, with a log entry, for a year outside 0001 to 9999.
  static QCString toISO8601(const QDateTime& dateTime);

  // Parses the basic format (20060305T120000Z in UTC, 20060305T120000 in local time, 20060305 for
  // local midnight) and the extended format (2006-03-05T12:00:00, seconds optional). Either may
  // have an offset (+0100, +01:00, +01) in place of Z. Surrounding blanks and fractions of a second
  // are ignored. Returns a local date-time, or an invalid one for anything else. A local time
  // skipped by daylight saving is read with the offset before the change, and one that occurs twice
  // as its first occurrence (RFC 5545, 3.3.5).
  static QDateTime fromISO8601(const QCString& text);
  // The same instant, but in UTC if the text says Z or an offset, which takes less time.
  static QDateTime instantFromISO8601(const QCString& text);
};
