#include "UTIL_TimeConversion.h"

#include "module_log.h"
#include "utc_zone.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <string_view>

namespace {

constexpr qint64 noDateSeconds = INT32_MAX;
constexpr qint64 latestSeconds = INT32_MAX - 1;
constexpr qint64 earliestSeconds = INT32_MIN;

// Reads the parts of a date-time from the beginning of a text.
class Reader {
public:
  explicit Reader(std::string_view text) : text_(text) {}

  [[nodiscard]] bool atEnd() const { return text_.empty(); }
  bool take(char c) {
    if (text_.empty() || text_.front() != c)
      return false;
    text_.remove_prefix(1);
    return true;
  }
  [[nodiscard]] bool atDigit() const {
    return !text_.empty() && text_.front() >= '0' && text_.front() <= '9';
  }
  // Reads a number with exactly `digits` digits; clears `good_` if there is none.
  int number(int digits) {
    int value = 0;
    for (int i = 0; i < digits; ++i) {
      good_ = good_ && atDigit();
      if (!good_)
        return 0;
      value = value * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
    }
    return value;
  }
  void skipDigits() {
    good_ = good_ && atDigit();
    while (atDigit())
      text_.remove_prefix(1);
  }
  [[nodiscard]] bool good() const { return good_; }

private:
  std::string_view text_;
  bool good_ = true;
};

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

QDate readDate(Reader& reader) {
  const int year = reader.number(4);
  const bool extended = reader.take('-');
  const int month = reader.number(2);
  if (extended && !reader.take('-'))
    return {};
  const int day = reader.number(2);
  return reader.good() ? QDate(year, month, day) : QDate();
}

QTime readTime(Reader& reader) {
  const int hour = reader.number(2);
  const bool extended = reader.take(':');
  const int minute = reader.number(2);
  int second = 0;
  if (extended ? reader.take(':') : reader.atDigit()) {
    second = reader.number(2);
    if (reader.take('.') || reader.take(','))
      reader.skipDigits();
  }
  return reader.good() ? QTime(hour, minute, second) : QTime();
}

// Reads an optional UTC offset. Returns seconds east of UTC, or nothing for local time. Sets
// `valid` to false if the offset is malformed.
std::optional<int> readZone(Reader& reader, bool& valid) {
  if (reader.take('Z') || reader.take('z'))
    return 0;
  const bool east = reader.take('+');
  if (!east && !reader.take('-'))
    return std::nullopt;
  const int hours = reader.number(2);
  int minutes = 0;
  if (reader.take(':') || reader.atDigit())
    minutes = reader.number(2);
  valid = reader.good() && hours < 24 && minutes < 60;
  const int seconds = hours * 3600 + minutes * 60;
  return east ? seconds : -seconds;
}

constexpr qint64 secondsOfDay = 86400;

// Returns the time on a local clock as the seconds at which a UTC clock shows it.
qint64 wallSeconds(const QDate& date, const QTime& time) {
  return QDateTime(date, time, ulo::utcZone).toSecsSinceEpoch();
}

// Returns seconds east of UTC. QDateTime::offsetFromUtc() is wrong in an hour that the clock shows
// twice if daylight saving is the same in both, because it starts from the date and the time.
qint64 offsetAt(qint64 seconds) {
  const QDateTime local = QDateTime::fromSecsSinceEpoch(seconds);
  return wallSeconds(local.date(), local.time()) - seconds;
}

// The local time according to the C library, which is faster.
struct ClockState {
  qint64 offset = 0;
  bool isDaylightSaving = false;
};
ClockState stateAt(qint64 seconds) {
  using Limits = std::numeric_limits<std::time_t>;
  const auto time = static_cast<std::time_t>(
      std::clamp<qint64>(seconds, qint64{Limits::min()}, qint64{Limits::max()}));
  std::tm parts{};
  if (localtime_r(&time, &parts) == nullptr)
    return {};
  return {parts.tm_gmtoff, parts.tm_isdst > 0};
}

// Returns true if the clock shows the same time at another second, too, with the same daylight
// saving. `here` is the offset from UTC at `seconds`.
bool comesTwiceAlike(qint64 seconds, qint64 here) {
  for (const qint64 near : {seconds - secondsOfDay, seconds + secondsOfDay}) {
    const qint64 offset = stateAt(near).offset;
    if (offset == here)
      continue;
    const ClockState other = stateAt(seconds + here - offset);
    if (other.offset == offset && other.isDaylightSaving == stateAt(seconds).isDaylightSaving)
      return true;
  }
  return false;
}

// `local` is the local time that Qt returns for an instant. In an hour that the clock shows twice,
// Qt distinguishes the two only by daylight saving. If that is the same in both, as when a zone
// changes its standard time, Qt chooses one depending on earlier conversions; the result then keeps
// the instant by its offset from UTC instead.
QDateTime keepingInstant(const QDateTime& local, qint64 milliseconds) {
  if (!local.isValid())
    return local;
  const qint64 seconds = (milliseconds - local.time().msec()) / 1000;
  const qint64 offset = wallSeconds(local.date(), local.time()) - seconds;
  if (!comesTwiceAlike(seconds, offset))
    return local;
  return ulo::atOffset(local.date(), local.time(), static_cast<int>(offset));
}

QDateTime localTimeOf(qint64 milliseconds) {
  return keepingInstant(QDateTime::fromMSecsSinceEpoch(milliseconds), milliseconds);
}

// Returns the instant of a local time. Neither Qt nor the C library specifies its choice for a time
// that the clock shows twice or never, so this looks at both sides of the change.
qint64 localSeconds(const QDate& date, const QTime& time) {
  const qint64 wall = wallSeconds(date, time);
  const qint64 before = offsetAt(wall - secondsOfDay);
  const qint64 after = offsetAt(wall + secondsOfDay);
  const bool isBefore = offsetAt(wall - before) == before;
  const bool isAfter = offsetAt(wall - after) == after;
  return wall - (isAfter && !isBefore ? after : before);
}

// Returns milliseconds since 1970 in UTC. Also converts local times that the clock skips, which Qt
// considers invalid.
std::optional<qint64> instantOf(const QDateTime& dateTime) {
  if (dateTime.isValid())
    return dateTime.toMSecsSinceEpoch();
  if (!dateTime.date().isValid() || !dateTime.time().isValid() ||
      dateTime.timeSpec() != Qt::LocalTime)
    return std::nullopt;
  return localSeconds(dateTime.date(), dateTime.time()) * 1000 + dateTime.time().msec();
}

void writeDigits(char* first, int count, int number) {
  for (char* place = first + count; place != first; number /= 10)
    *--place = static_cast<char>('0' + number % 10);
}

}  // namespace

long UTIL_TimeConversion::toUTC(const QDateTime& dateTime) {
  const std::optional<qint64> milliseconds = instantOf(dateTime);
  if (!milliseconds || *milliseconds == noDateSeconds * 1000)
    return noDateSeconds;
  const qint64 seconds = *milliseconds / 1000 - (*milliseconds % 1000 < 0 ? 1 : 0);
  const qint64 nearest = std::clamp(seconds, earliestSeconds, latestSeconds);
  if (nearest != seconds)
    ULO_LOG_ERROR("A date of %lld seconds is out of range, %lld is taken",
                  static_cast<long long>(seconds), static_cast<long long>(nearest));
  return static_cast<long>(nearest);
}

QDateTime UTIL_TimeConversion::fromUTC(long seconds) {
  const QDateTime local = QDateTime::fromSecsSinceEpoch(seconds);
  return local.isValid() ? keepingInstant(local, qint64{seconds} * 1000) : local;
}

QDateTime UTIL_TimeConversion::toLocalTime(const QDateTime& dateTime) {
  if (dateTime.isValid() && dateTime.timeSpec() == Qt::LocalTime)
    return dateTime;
  const std::optional<qint64> milliseconds = instantOf(dateTime);
  return milliseconds ? localTimeOf(*milliseconds) : QDateTime();
}

QDateTime UTIL_TimeConversion::lastSecondOf(const QDate& day) {
  const qint64 wall = wallSeconds(day, QTime(23, 59, 59));
  const qint64 before = offsetAt(wall - secondsOfDay);
  const qint64 after = offsetAt(wall + secondsOfDay);
  qint64 last = wall - std::max(before, after);
  qint64 beyond = wall - std::min(before, after);
  if (beyond + offsetAt(beyond) == wall)
    return localTimeOf(beyond * 1000);
  // Otherwise the clock shows this second once, or skips it. If skipped, the day ends where the
  // clock is put forward, which a binary search between the two finds.
  while (last + offsetAt(last) != wall && beyond - last > 1) {
    const qint64 middle = last + (beyond - last) / 2;
    (middle + offsetAt(middle) <= wall ? last : beyond) = middle;
  }
  return localTimeOf(last * 1000);
}

QCString UTIL_TimeConversion::toISO8601(const QDateTime& dateTime) {
  const std::optional<qint64> milliseconds = instantOf(dateTime);
  if (!milliseconds)
    return QCString();
  const QDateTime utc = QDateTime::fromMSecsSinceEpoch(*milliseconds, ulo::utcZone);
  const QDate date = utc.date();
  const QTime time = utc.time();
  if (date.year() < 1 || date.year() > 9999) {
    ULO_LOG_ERROR("The year %d can't be written with four digits", date.year());
    return QCString();
  }
  // QDateTime::toString() would take twenty times as long.
  QByteArray text(sizeof "yyyyMMddTHHmmssZ" - 1, 'T');
  char* const digits = text.data();
  writeDigits(digits, 4, date.year());
  writeDigits(digits + 4, 2, date.month());
  writeDigits(digits + 6, 2, date.day());
  writeDigits(digits + 9, 2, time.hour());
  writeDigits(digits + 11, 2, time.minute());
  writeDigits(digits + 13, 2, time.second());
  digits[15] = 'Z';
  return text;
}

QDateTime UTIL_TimeConversion::fromISO8601(const QCString& text) {
  return toLocalTime(instantFromISO8601(text));
}

QDateTime UTIL_TimeConversion::instantFromISO8601(const QCString& text) {
  Reader reader(withoutBlanks({text.constData(), static_cast<std::size_t>(text.size())}));
  const QDate date = readDate(reader);
  if (!date.isValid())
    return QDateTime();
  if (reader.atEnd())
    return localTimeOf(localSeconds(date, QTime(0, 0)) * 1000);
  if (!reader.take('T') && !reader.take('t') && !reader.take(' '))
    return QDateTime();
  const QTime time = readTime(reader);
  bool zoneIsValid = true;
  const std::optional<int> zone = readZone(reader, zoneIsValid);
  if (!time.isValid() || !zoneIsValid || !reader.atEnd())
    return QDateTime();
  if (!zone)
    return localTimeOf(localSeconds(date, time) * 1000);
  return QDateTime(date, time, ulo::utcZone).addSecs(-*zone);
}
