#include "dates.h"

#include "UTIL_TimeConversion.h"
#include "task_dates.h"

namespace ulo {

QDate earliestDay() {
  return {1970, 1, 2};
}

QDate latestDay() {
  return {2038, 1, 17};
}

QDateTime currentLocalTime() {
  return UTIL_TimeConversion::toLocalTime(QDateTime::currentDateTimeUtc());
}

std::optional<QDateTime> localTime(const QDate& day, const QTime& time) {
  if (!day.isValid() || !time.isValid())
    return std::nullopt;
  const QDateTime result(day, time);
  return result.isValid() && result.time() == time ? std::optional(result) : std::nullopt;
}

QDateTime localTimeOrStart(const QDate& day, const QTime& time) {
  return localTime(day, time).value_or(day.startOfDay());
}

ParsedDate parseDate(const QString& text) {
  constexpr qsizetype dayLength = 10;  // of yyyy-MM-dd
  const QDate day = QDate::fromString(text.left(dayLength), "yyyy-MM-dd");
  const QString rest = text.mid(dayLength);
  if (!day.isValid())
    return {{}, DateProblem::notDate};
  std::optional<QDateTime> result = day.startOfDay();
  if (!rest.isEmpty()) {
    QTime time = QTime::fromString(rest.mid(1), "HH:mm");
    if (!time.isValid())
      time = QTime::fromString(rest.mid(1), "HH:mm:ss");
    if ((rest[0] != ' ' && rest[0] != 'T') || !time.isValid())
      return {{}, DateProblem::notDate};
    result = localTime(day, time);
  }
  if (!result)
    return {{}, DateProblem::skipped};
  if (day < earliestDay() || day > latestDay())
    return {{}, DateProblem::outOfRange};
  return {*result, DateProblem::none};
}

QString formatDate(const QDateTime& dateTime) {
  if (!hasDate(dateTime))
    return {};
  const QDateTime local = UTIL_TimeConversion::toLocalTime(dateTime);
  const bool isMidnight = local.time() == QTime(0, 0);
  return local.toString(isMidnight ? "yyyy-MM-dd" : "yyyy-MM-dd HH:mm");
}

QString formatTimestamp(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toLocalTime(dateTime).toString("yyyy-MM-dd HH:mm:ss");
}

QString formatUtc(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toLocalTime(dateTime).toUTC().toString(Qt::ISODate);
}

}  // namespace ulo
