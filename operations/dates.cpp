#include "dates.h"

#include "UTIL_TimeConversion.h"
#include "task_dates.h"

#include <chrono>

namespace ulo {
namespace {

bool hasFourDigits(int year) {
  return year >= 1 && year <= 9999;
}

// The last field of a text such as "2026-03-05 18:00:59".
enum class Last { day, minutes, seconds };

// The day without QCalendar, whose first use crashes if memory is exhausted.
std::chrono::year_month_day dayOf(const QDate& date) {
  constexpr qint64 firstDay = 2440588;  // the Julian day of 1970-01-01
  return std::chrono::sys_days(std::chrono::days(date.toJulianDay() - firstDay));
}

// The same as QDateTime::toString, which takes ten times as long. Requires: a year of four digits.
QString fieldsOf(const QDateTime& dateTime, char separator, Last last) {
  char text[sizeof "yyyy-MM-dd HH:mm:ss"];
  char* end = text;
  const auto addDigits = [&](int number) {
    *end++ = static_cast<char>('0' + number / 10);
    *end++ = static_cast<char>('0' + number % 10);
  };
  const auto add = [&](char before, int number) {
    *end++ = before;
    addDigits(number);
  };
  const std::chrono::year_month_day date = dayOf(dateTime.date());
  const QTime time = dateTime.time();
  const int year = static_cast<int>(date.year());
  addDigits(year / 100);
  addDigits(year % 100);
  add('-', static_cast<int>(static_cast<unsigned int>(date.month())));
  add('-', static_cast<int>(static_cast<unsigned int>(date.day())));
  if (last >= Last::minutes) {
    add(separator, time.hour());
    add(':', time.minute());
  }
  if (last >= Last::seconds)
    add(':', time.second());
  return QString::fromLatin1(text, end - text);
}

}  // namespace

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
  if (!hasFourDigits(local.date().year()))
    return local.toString(isMidnight ? "yyyy-MM-dd" : "yyyy-MM-dd HH:mm");
  return fieldsOf(local, ' ', isMidnight ? Last::day : Last::minutes);
}

QString formatTimestamp(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toLocalTime(dateTime).toString("yyyy-MM-dd HH:mm:ss");
}

QString formatUtc(const QDateTime& dateTime) {
  const bool isUtc = dateTime.isValid() && dateTime.timeSpec() == Qt::UTC;
  const QDateTime utc = isUtc ? dateTime : UTIL_TimeConversion::toLocalTime(dateTime).toUTC();
  if (!utc.isValid() || !hasFourDigits(utc.date().year()))
    return utc.toString(Qt::ISODate);
  return fieldsOf(utc, 'T', Last::seconds) + QLatin1Char('Z');
}

}  // namespace ulo
