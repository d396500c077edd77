// Dates as people write and read them: local time, in the form of ISO 8601.
#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace ulo {

// The days that a user can enter. vCalendar readers take earlier ones for no date, and 32 bits
// cannot hold later ones in every time zone.
QDate earliestDay();
QDate latestDay();

// The current time for a record: local time, and the right one of the two if the clocks show an
// hour twice.
QDateTime currentLocalTime();

// A time of a local day. None if either is invalid or the clocks skip this time.
std::optional<QDateTime> localTime(const QDate& day, const QTime& time);
// The same, but the first moment of the day if the clocks skip this time.
QDateTime localTimeOrStart(const QDate& day, const QTime& time);

enum class DateProblem {
  none,
  notDate,
  skipped,     // by a change of the clocks
  outOfRange,  // not from earliestDay to latestDay
};
struct ParsedDate {
  QDateTime dateTime;  // invalid unless `problem` is none
  DateProblem problem = DateProblem::none;
};
// Reads "2026-03-05", which is the start of that day, "2026-03-05 18:00" or "2026-03-05T18:00:00".
ParsedDate parseDate(const QString& text);

// "2026-03-05 18:00", without the time at midnight. Empty if the date is not set (hasDate).
QString formatDate(const QDateTime& dateTime);
// "2026-03-05 18:00:59".
QString formatTimestamp(const QDateTime& dateTime);
// "2026-03-05T17:00:59Z", for programs.
QString formatUtc(const QDateTime& dateTime);

}  // namespace ulo
