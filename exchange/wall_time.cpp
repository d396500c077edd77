#include "wall_time.h"

#include "UTIL_TimeConversion.h"
#include "qt2.h"
#include "utc_zone.h"

#include <libical/ical.h>

#include <algorithm>

namespace ulo {
namespace {

bool areDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// 1970-01-01.
constexpr std::int64_t julianDayOfEpoch = 2440588;

std::int64_t floorOf(std::int64_t wall) {
  return (wall >= 0 ? wall : wall - secondsPerDay + 1) / secondsPerDay;
}

void appendNumber(std::string& text, int number, int digits) {
  std::string reversed;
  for (int i = 0; i < digits; ++i, number /= 10)
    reversed += static_cast<char>('0' + number % 10);
  text.append(reversed.rbegin(), reversed.rend());
}

}  // namespace

// The functions of libical that are called here get only values of the correct form, so that they
// report no error. They keep no state.
std::optional<WallTime> parseWallTime(std::string_view text) {
  constexpr std::size_t dateLength = 8;
  constexpr std::size_t timeLength = 15;
  WallTime result;
  result.isUtc = text.size() == timeLength + 1 && (text.back() == 'Z' || text.back() == 'z');
  const std::string_view clock = text.substr(0, text.size() - (result.isUtc ? 1 : 0));
  result.isDate = clock.size() == dateLength;
  if (!areDigits(clock.substr(0, dateLength)))
    return std::nullopt;
  if (!result.isDate &&
      (clock.size() != timeLength || (clock[dateLength] != 'T' && clock[dateLength] != 't') ||
       !areDigits(clock.substr(dateLength + 1))))
    return std::nullopt;
  std::string form(clock);
  if (!result.isDate)
    form[dateLength] = 'T';
  const icaltimetype time = icaltime_from_string(form.c_str());
  const QDate day(time.year, time.month, time.day);
  constexpr int hours = 24;
  constexpr int sixty = 60;
  if (!day.isValid() || time.hour >= hours || time.minute >= sixty || time.second > sixty)
    return std::nullopt;
  result.seconds = wallOf(day);
  if (!result.isDate)
    result.seconds += (time.hour * sixty + time.minute) * sixty + std::min(time.second, sixty - 1);
  return result;
}

QDate dayOf(std::int64_t wall) {
  return QDate::fromJulianDay(floorOf(wall) + julianDayOfEpoch);
}

std::int64_t wallOf(const QDate& day, std::int64_t secondOfDay) {
  return (day.toJulianDay() - julianDayOfEpoch) * secondsPerDay + secondOfDay;
}

bool hasFourDigitYear(std::int64_t wall) {
  constexpr int lastYear = 9999;
  const QDate day = dayOf(wall);
  return day.isValid() && day.year() >= 1 && day.year() <= lastYear;
}

std::string dateText(std::int64_t wall) {
  const QDate day = dayOf(wall);
  std::string text;
  appendNumber(text, day.year(), 4);
  appendNumber(text, day.month(), 2);
  appendNumber(text, day.day(), 2);
  return text;
}

std::string dateTimeText(std::int64_t wall) {
  const int second = static_cast<int>(wall - floorOf(wall) * secondsPerDay);
  std::string text = dateText(wall) + "T";
  appendNumber(text, second / 3600, 2);
  appendNumber(text, second / 60 % 60, 2);
  appendNumber(text, second % 60, 2);
  return text;
}

std::optional<Duration> parseDuration(std::string_view text) {
  // Checked before libical reads it, which would accept digits that its numbers cannot hold.
  constexpr std::size_t mostDigits = 8;
  std::size_t i = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
  if (i >= text.size() || (text[i] != 'P' && text[i] != 'p'))
    return std::nullopt;
  std::string form(text.substr(0, i));
  form += 'P';
  bool isTime = false;
  bool hasPart = false;
  for (++i; i < text.size();) {
    if (!isTime && (text[i] == 'T' || text[i] == 't')) {
      isTime = true;
      form += 'T';
      ++i;
      continue;
    }
    const std::size_t end = std::min(text.find_first_not_of("0123456789", i), text.size());
    if (end == i || end == text.size() || end - i > mostDigits)
      return std::nullopt;
    const char unit = text[end] >= 'a' ? static_cast<char>(text[end] - 'a' + 'A') : text[end];
    if (std::string_view(isTime ? "HMS" : "WD").find(unit) == std::string_view::npos)
      return std::nullopt;
    // Each unit once: libical rejects nothing here.
    if (form.find(unit, 1) != std::string::npos)
      return std::nullopt;
    form.append(text.substr(i, end - i)).append(1, unit);
    hasPart = true;
    i = end + 1;
  }
  if (!hasPart)
    return std::nullopt;
  const icaldurationtype read = icaldurationtype_from_string(form.c_str());
  constexpr std::int64_t daysPerWeek = 7;
  const std::int64_t sign = read.is_neg != 0 ? -1 : 1;
  Duration result;
  result.days = sign * (std::int64_t{read.weeks} * daysPerWeek + std::int64_t{read.days});
  result.seconds = sign * (std::int64_t{read.hours} * 3600 + std::int64_t{read.minutes} * 60 +
                           std::int64_t{read.seconds});
  return result;
}

std::int64_t localInstant(std::int64_t wall) {
  return UTIL_TimeConversion::fromISO8601(QCString(dateTimeText(wall).c_str())).toSecsSinceEpoch();
}

std::int64_t localWall(std::int64_t instant) {
  const QDateTime local =
      UTIL_TimeConversion::toLocalTime(QDateTime::fromSecsSinceEpoch(instant, utcZone));
  return wallOf(local.date(), QTime(0, 0).secsTo(local.time()));
}

}  // namespace ulo
