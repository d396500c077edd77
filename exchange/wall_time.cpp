#include "wall_time.h"

#include "UTIL_TimeConversion.h"
#include "qt2.h"
#include "utc_zone.h"

#include <algorithm>
#include <charconv>

namespace ulo {
namespace {

bool areDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Requires: only digits, few enough for an int.
int numberOf(std::string_view digits) {
  int number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
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
  const QDate day(numberOf(clock.substr(0, 4)), numberOf(clock.substr(4, 2)),
                  numberOf(clock.substr(6, 2)));
  if (!day.isValid())
    return std::nullopt;
  result.seconds = wallOf(day);
  if (result.isDate)
    return result;
  const int hour = numberOf(clock.substr(dateLength + 1, 2));
  const int minute = numberOf(clock.substr(dateLength + 3, 2));
  const int second = numberOf(clock.substr(dateLength + 5, 2));
  constexpr int hours = 24;
  constexpr int sixty = 60;
  if (hour >= hours || minute >= sixty || second > sixty)
    return std::nullopt;
  result.seconds += (hour * sixty + minute) * sixty + std::min(second, sixty - 1);
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
  constexpr std::size_t mostDigits = 8;
  constexpr std::int64_t daysPerWeek = 7;
  std::size_t i = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
  const std::int64_t sign = i == 1 && text[0] == '-' ? -1 : 1;
  if (i >= text.size() || (text[i] != 'P' && text[i] != 'p'))
    return std::nullopt;
  Duration result;
  bool isTime = false;
  std::string units;  // those read so far; each may occur once
  for (++i; i < text.size();) {
    if (!isTime && (text[i] == 'T' || text[i] == 't')) {
      isTime = true;
      ++i;
      continue;
    }
    const std::size_t end = std::min(text.find_first_not_of("0123456789", i), text.size());
    if (end == i || end == text.size() || end - i > mostDigits)
      return std::nullopt;
    const char unit = text[end] >= 'a' ? static_cast<char>(text[end] - 'a' + 'A') : text[end];
    if (std::string_view(isTime ? "HMS" : "WD").find(unit) == std::string_view::npos ||
        units.find(unit) != std::string::npos)
      return std::nullopt;
    const std::int64_t number = sign * numberOf(text.substr(i, end - i));
    if (isTime)
      result.seconds += number * (unit == 'H' ? 3600 : unit == 'M' ? 60 : 1);
    else
      result.days += number * (unit == 'W' ? daysPerWeek : 1);
    units += unit;
    i = end + 1;
  }
  if (units.empty())
    return std::nullopt;
  // Weeks precede days; with the opposite order, the duration is none.
  return units.find("DW") == std::string::npos ? result : Duration();
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
