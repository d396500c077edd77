// UTC as an argument of QDateTime: QDateTime(date, time, ulo::utcZone). Qt deprecates Qt::UTC there
// and offers the replacement only since version 6.5.
#pragma once

#include <QDateTime>
#include <QTimeZone>

namespace ulo {

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr QTimeZone::Initialization utcZone = QTimeZone::UTC;
#else
constexpr Qt::TimeSpec utcZone = Qt::UTC;
#endif

// A local date-time of this many seconds east of UTC.
inline QDateTime atOffset(QDate date, QTime time, int seconds) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
  return {date, time, QTimeZone::fromSecondsAheadOfUtc(seconds)};
#else
  return {date, time, Qt::OffsetFromUTC, seconds};
#endif
}

}  // namespace ulo
