// Tests with every time zone of the system, around each of its clock changes.

#include "UTIL_TimeConversion.h"
#include "environment_variable.h"
#include "utc_zone.h"

#include <gtest/gtest.h>

#include <QTimeZone>

#include <ctime>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

// From 1970 until the year in which 32-bit times end.
constexpr long firstSecond = 0;
constexpr long endSecond = 2145916800;  // 2038-01-01 in UTC
constexpr long day = 86400;

// The C library's local time, which none of the conversions uses.
tm clockAt(long seconds) {
  const std::time_t time = seconds;
  tm parts{};
  localtime_r(&time, &parts);
  return parts;
}
QDate dateAt(long seconds) {
  const tm parts = clockAt(seconds);
  return QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
}
QTime timeAt(long seconds) {
  const tm parts = clockAt(seconds);
  return QTime(parts.tm_hour, parts.tm_min, parts.tm_sec);
}
std::pair<long, int> stateAt(long seconds) {
  const tm parts = clockAt(seconds);
  return {parts.tm_gmtoff, parts.tm_isdst};
}

// Clock changes: the first second, and the offset from UTC after it.
using Changes = std::vector<std::pair<long, long>>;

// Returns the clock changes of the current zone. In any zone they are more than two days apart.
Changes changes() {
  Changes found;
  constexpr long step = 2 * day;
  auto state = stateAt(firstSecond);
  for (long before = firstSecond; before < endSecond; before += step) {
    const auto after = stateAt(before + step);
    if (after == state)
      continue;
    long low = before;
    long high = before + step;
    while (high - low > 1) {
      const long middle = low + (high - low) / 2;
      (stateAt(middle) == state ? low : high) = middle;
    }
    found.emplace_back(high, after.first);
    state = after;
  }
  return found;
}

// Runs `check` with the changes of each zone. `check` returns the description of a failure, or an
// empty text. Zones with the same changes are checked once.
template <typename Check> void inEachZone(Check check) {
  const QList<QByteArray> names = QTimeZone::availableTimeZoneIds();
  ASSERT_GT(names.size(), 300);
  ASSERT_TRUE(names.contains("Asia/Almaty"));
  ASSERT_TRUE(names.contains("America/Santiago"));
  std::set<Changes> seen;
  int checked = 0;
  for (const QByteArray& name : names) {
    const EnvironmentVariable zone("TZ", name.constData());
    const Changes all = changes();
    if (!seen.insert(all).second)
      continue;
    std::string failure;
    for (const auto& [change, offset] : all) {
      ++checked;
      if (failure = check(change); !failure.empty())
        break;
    }
    EXPECT_EQ(failure, "") << name.toStdString();
  }
  EXPECT_GT(checked, 10000);
}

std::string at(long seconds, const char* what) {
  return std::to_string(seconds) + ": " + what;
}

TEST(Zones, EverySecondReadsBack) {
  inEachZone([](long change) -> std::string {
    for (const long distance :
         {-25200L, -3601L, -3600L, -1L, 0L, 1799L, 3599L, 3600L, 10799L, 25199L}) {
      const long seconds = change + distance;
      const QDateTime local = UTIL_TimeConversion::fromUTC(seconds);
      // For an ambiguous time, the C library's choice depends on earlier conversions.
      for (const long before : {change - 20 * day, change + 20 * day}) {
        tm parts = clockAt(before);
        mktime(&parts);
        if (UTIL_TimeConversion::toUTC(local) != seconds)
          return at(seconds, "another second");
      }
      if (local.date() != dateAt(seconds) || local.time() != timeAt(seconds))
        return at(seconds, "another date or time than the clock shows");
      const QCString text = UTIL_TimeConversion::toISO8601(local);
      if (distance == 0 &&
          UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromISO8601(text)) != seconds)
        return at(seconds, "the text of it is another second");
      if (local != QDateTime::fromSecsSinceEpoch(seconds, ulo::utcZone) ||
          !(local < UTIL_TimeConversion::fromUTC(seconds + 1)))
        return at(seconds, "compares as another second");
    }
    return {};
  });
}

TEST(Zones, LastSecondOfEveryDay) {
  inEachZone([](long change) -> std::string {
    for (const long within : {change - day, change - 1, change, change + day}) {
      const QDate today = dateAt(within);
      const long last = UTIL_TimeConversion::toUTC(UTIL_TimeConversion::lastSecondOf(today));
      if (dateAt(last) != today)
        return at(within, "the day ends on another day");
      for (long later = last + 1; later < last + day; later += 899) {
        if (dateAt(later) <= today)
          return at(within, "the day is not over at its end");
      }
    }
    return {};
  });
}

}  // namespace
