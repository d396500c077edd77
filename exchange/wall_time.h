// Dates and times as clocks show them.
//
// A wall time is the number of seconds at which a clock in UTC shows the date and time. An instant
// is the number of seconds since 1970-01-01 00:00 UTC.
#pragma once

#include <QDate>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ulo {

constexpr std::int64_t secondsPerDay = 86400;

// A value of type DATE or DATE-TIME (RFC 5545, sections 3.3.4 and 3.3.5).
struct WallTime {
  std::int64_t seconds = 0;
  bool isDate = false;
  bool isUtc = false;
};
// Returns nothing for anything else, such as a day that the calendar does not have. A leap second
// is read as the second that precedes it.
std::optional<WallTime> parseWallTime(std::string_view text);

// "20260305" and "20260305T180000". Require years from 1 to 9999.
std::string dateText(std::int64_t wall);
std::string dateTimeText(std::int64_t wall);
bool hasFourDigitYear(std::int64_t wall);

QDate dayOf(std::int64_t wall);
std::int64_t wallOf(const QDate& day, std::int64_t secondOfDay = 0);

// A value of type DURATION (RFC 5545, section 3.3.6). Days are those of the calendar; they may have
// 23 or 25 hours.
struct Duration {
  std::int64_t days = 0;
  std::int64_t seconds = 0;
};
std::optional<Duration> parseDuration(std::string_view text);

// The system's local time. A time that the clock skips is read with the offset before the change,
// and one that it shows twice as its first occurrence.
std::int64_t localInstant(std::int64_t wall);
std::int64_t localWall(std::int64_t instant);

}  // namespace ulo
