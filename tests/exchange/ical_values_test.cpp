// Dates and durations are read as libical reads them.

#include "wall_time.h"

#include <gtest/gtest.h>
#include <libical/ical.h>

#include <QDate>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>

namespace {

constexpr int texts = 20000;

class RandomText {
public:
  int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
  bool oneIn(int number) { return upTo(number - 1) == 0; }
  // A number of two digits, often a little more than `most`.
  std::string two(int most) {
    const std::string digits = std::to_string(oneIn(10) ? most + upTo(3) : upTo(most));
    return digits.size() < 2 ? '0' + digits : digits;
  }
  std::string dateTime() {
    const std::string year = std::to_string(10000 + upTo(9999)).substr(1);
    std::string text = year + two(12) + two(31);
    if (!oneIn(4))
      text += 'T' + two(23) + two(59) + two(60);
    if (text.size() > 8 && oneIn(2))
      text += 'Z';
    return text;
  }
  // Units in their order, each at most once.
  std::string duration() {
    std::string text = oneIn(3) ? "-P" : oneIn(3) ? "+P" : "P";
    for (const char* unit : {"W", "D", "T", "H", "M", "S"}) {
      if (*unit == 'T')
        text += unit;
      else if (oneIn(2))
        text += std::to_string(upTo(oneIn(5) ? 99999999 : 99)) + unit;
    }
    return text;
  }

private:
  std::mt19937 random_{17};
};

std::optional<ulo::WallTime> readByLibrary(const std::string& text) {
  const icaltimetype time = icaltime_from_string(text.c_str());
  const QDate day(time.year, time.month, time.day);
  if (!day.isValid() || time.hour > 23 || time.minute > 59 || time.second > 60)
    return std::nullopt;
  const int second = (time.hour * 60 + time.minute) * 60 + std::min(time.second, 59);
  return ulo::WallTime{ulo::wallOf(day, second), time.is_date != 0, icaltime_is_utc(time) != 0};
}

TEST(IcalValues, DatesAreReadAsByLibical) {
  RandomText random;
  int valid = 0;
  for (int i = 0; i < texts; ++i) {
    const std::string text = random.dateTime();
    const auto expected = readByLibrary(text);
    const auto read = ulo::parseWallTime(text);
    ASSERT_EQ(read.has_value(), expected.has_value()) << text;
    if (!read)
      continue;
    ++valid;
    ASSERT_EQ(read->seconds, expected->seconds) << text;
    ASSERT_EQ(read->isDate, expected->isDate) << text;
    ASSERT_EQ(read->isUtc, expected->isUtc) << text;
  }
  EXPECT_GT(valid, texts / 4);
  EXPECT_LT(valid, texts);
}

TEST(IcalValues, DurationsAreReadAsByLibical) {
  RandomText random;
  int valid = 0;
  for (int i = 0; i < texts; ++i) {
    const std::string text = random.duration();
    const auto read = ulo::parseDuration(text);
    // libical reads a duration without any unit as zero.
    ASSERT_EQ(read.has_value(), text.find_first_of("0123456789") != std::string::npos) << text;
    if (!read)
      continue;
    ++valid;
    const icaldurationtype expected = icaldurationtype_from_string(text.c_str());
    const std::int64_t sign = expected.is_neg != 0 ? -1 : 1;
    ASSERT_EQ(read->days, sign * (std::int64_t{expected.weeks} * 7 + expected.days)) << text;
    ASSERT_EQ(read->seconds, sign * (std::int64_t{expected.hours} * 3600 +
                                     std::int64_t{expected.minutes} * 60 + expected.seconds))
        << text;
  }
  EXPECT_GT(valid, texts / 2);
}

}  // namespace
