// Tests for times and dates.

#include "UTIL_DateTime.h"
#include "UTIL_TimeConversion.h"
#include "environment_variable.h"
#include "log_capture.h"
#include "utc_zone.h"

#include <gmock/gmock.h>

#include <QLocale>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>
#include <optional>
#include <random>

namespace {

class TimeZone {
public:
  explicit TimeZone(const char* name) : variable_("TZ", name) {}

private:
  EnvironmentVariable variable_;
};

constexpr const char* zones[] = {"Europe/Berlin", "America/New_York",    "UTC",
                                 "Asia/Shanghai", "Australia/Lord_Howe", "Asia/Kolkata"};

constexpr long noDate = 0x7FFFFFFF;

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), ulo::utcZone);
}
// Returns the seconds of the date-time that the text is read as, or nothing if it is invalid.
std::optional<qint64> readSeconds(const char* text) {
  const QDateTime read = UTIL_TimeConversion::fromISO8601(text);
  if (!read.isValid())
    return std::nullopt;
  EXPECT_EQ(read.timeSpec(), Qt::LocalTime) << text;
  return read.toSecsSinceEpoch();
}
std::string shown(const QDateTime& dateTime) {
  return dateTime.toString("yyyy-MM-dd HH:mm:ss").toStdString();
}

// Seconds

TEST(ToUtc, CountsSeconds) {
  EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(1970, 1, 1)), 0);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(2006, 3, 5, 12)), 1141560000);
  const TimeZone zone("America/New_York");
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime(QDate(2006, 3, 5), QTime(7, 0))), 1141560000);
}

TEST(ToUtc, DropsMilliseconds) {
  for (const int milliseconds : {0, 1, 500, 999}) {
    EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(2006, 3, 5, 12).addMSecs(milliseconds)), 1141560000);
    EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(1970, 1, 1).addMSecs(milliseconds)), 0);
    EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(1969, 12, 31, 23, 59, 59).addMSecs(milliseconds)), -1);
    EXPECT_EQ(UTIL_TimeConversion::toUTC(utc(1969, 12, 31, 23, 59, 58).addMSecs(milliseconds)), -2);
  }
}

TEST(ToUtc, InvalidDateIsNoDate) {
  LogCapture log;
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime()), noDate);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime(QDate(2006, 2, 30), QTime(0, 0), ulo::utcZone)),
            noDate);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromUTC(noDate)), noDate);
  EXPECT_EQ(log.text(), "");
}

TEST(ToUtc, Saturates) {
  const auto at = [](qint64 seconds) {
    return QDateTime::fromSecsSinceEpoch(seconds, ulo::utcZone);
  };
  {
    LogCapture log;
    EXPECT_EQ(UTIL_TimeConversion::toUTC(at(noDate - 1)), noDate - 1);
    EXPECT_EQ(UTIL_TimeConversion::toUTC(at(INT32_MIN)), INT32_MIN);
    EXPECT_EQ(log.text(), "");
  }
  const auto logged = [&](qint64 seconds, long expected) {
    LogCapture log;
    EXPECT_EQ(UTIL_TimeConversion::toUTC(at(seconds)), expected);
    EXPECT_EQ(log.withoutLines(), "(platform/util/UTIL_TimeConversion.cpp)A date of " +
                                      std::to_string(seconds) + " seconds is out of range, " +
                                      std::to_string(expected) + " is taken");
  };
  logged(qint64{noDate} + 1, noDate - 1);
  logged(qint64{INT32_MIN} - 1, INT32_MIN);
  logged(253402300799, noDate - 1);  // the end of the year 9999
  logged(-62135596800, INT32_MIN);   // the start of the year 1
}

// A real date never becomes the no-date value, not even in the same second.
TEST(ToUtc, MillisecondsAfterNoDateSaturate) {
  constexpr qint64 noDateMilliseconds = qint64{noDate} * 1000;
  LogCapture log;
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(noDateMilliseconds)), noDate);
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(noDateMilliseconds + 1)),
            noDate - 1);
  EXPECT_EQ(
      UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(qint64{INT32_MIN} * 1000 - 1)),
      INT32_MIN);
  EXPECT_NE(log.text(), "");
}

// Qt treats skipped local times as invalid, but they are dates that users have entered.
TEST(ToUtc, SkippedLocalTimesConvert) {
  const TimeZone zone("Europe/Berlin");
  const QDateTime skipped(QDate(2006, 3, 26), QTime(2, 30, 0, 999));
  EXPECT_EQ(UTIL_TimeConversion::toUTC(skipped), 1143336600);
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(skipped), "20060326T013000Z");
}

TEST(ToUtc, InvertsFromUtc) {
  for (const char* name : zones) {
    const TimeZone zone(name);
    int wrong = 0;
    for (qint64 seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 199999)
      wrong += UTIL_TimeConversion::toUTC(
                   UTIL_TimeConversion::fromUTC(static_cast<long>(seconds))) != seconds;
    // A year with all its clock changes.
    for (long seconds = 1136073600; seconds < 1136073600 + 366 * 86400; seconds += 599)
      wrong += UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromUTC(seconds)) != seconds;
    EXPECT_EQ(wrong, 0) << name;
  }
}

TEST(FromUtc, ReturnsLocalTime) {
  const TimeZone zone("Asia/Shanghai");
  const QDateTime local = UTIL_TimeConversion::fromUTC(1141560000);
  EXPECT_EQ(local.timeSpec(), Qt::LocalTime);
  EXPECT_EQ(shown(local), "2006-03-05 20:00:00");
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(-1)), "1970-01-01 07:59:59");
}

TEST(FromUtc, FollowsDaylightSaving) {
  {
    const TimeZone zone("Europe/Berlin");
    EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1143334799)), "2006-03-26 01:59:59");
    EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1143334800)), "2006-03-26 03:00:00");
    EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1162083599)), "2006-10-29 02:59:59");
    EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1162083600)), "2006-10-29 02:00:00");
  }
  const TimeZone zone("America/New_York");
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1772953199)), "2026-03-08 01:59:59");
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1772953200)), "2026-03-08 03:00:00");
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1793512799)), "2026-11-01 01:59:59");
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1793512800)), "2026-11-01 01:00:00");
}

// Almaty put its standard time back by an hour on 2024-03-01, without daylight saving before or
// after, so that the last hour of February occurred twice.
TEST(FromUtc, KeepsInstantWhenStandardTimeIsPutBack) {
  const TimeZone zone("Asia/Almaty");
  const QDateTime first = UTIL_TimeConversion::fromUTC(1709227800);
  const QDateTime second = UTIL_TimeConversion::fromUTC(1709231400);
  EXPECT_EQ(shown(first), "2024-02-29 23:30:00");
  EXPECT_EQ(shown(second), "2024-02-29 23:30:00");
  EXPECT_EQ(UTIL_TimeConversion::toUTC(first), 1709227800);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(second), 1709231400);
  EXPECT_TRUE(first < second);
  EXPECT_EQ(second, UTIL_TimeConversion::fromUTC(1709231400));
  EXPECT_NE(second, UTIL_TimeConversion::fromUTC(noDate));
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(second), "20240229T183000Z");
  EXPECT_EQ(UTIL_TimeConversion::fromISO8601("20240229T183000Z"), second);
  // Outside these hours all dates are in local time.
  EXPECT_EQ(UTIL_TimeConversion::fromUTC(1709233200).timeSpec(), Qt::LocalTime);
  EXPECT_EQ(shown(UTIL_TimeConversion::fromUTC(1709233200)), "2024-03-01 00:00:00");
}

TEST(FromUtc, AcceptsAnyNumber) {
  for (const long seconds : {LONG_MAX, LONG_MIN, LONG_MAX / 1000, LONG_MIN / 1000}) {
    const QDateTime date = UTIL_TimeConversion::fromUTC(seconds);
    const bool hasDate = date.isValid() && seconds != noDate;
    LogCapture log;
    EXPECT_EQ(UTIL_TimeConversion::toUTC(date),
              hasDate ? std::clamp<qint64>(seconds, INT32_MIN, noDate - 1) : noDate)
        << seconds;
  }
}

TEST(ToLocalTime, ShowsLocalDateAndTime) {
  const TimeZone zone("Europe/Berlin");
  const QDateTime local = UTIL_TimeConversion::toLocalTime(utc(2006, 3, 5, 23, 30).addMSecs(5));
  EXPECT_EQ(local.timeSpec(), Qt::LocalTime);
  EXPECT_EQ(local.toString("yyyy-MM-dd HH:mm:ss.zzz"), "2006-03-06 00:30:00.005");
  EXPECT_EQ(shown(UTIL_TimeConversion::toLocalTime(utc(9999, 6, 1))), "9999-06-01 02:00:00");
  const QDateTime east = ulo::atOffset(QDate(2006, 3, 5), QTime(1, 0), 7200);
  EXPECT_EQ(shown(UTIL_TimeConversion::toLocalTime(east)), "2006-03-05 00:00:00");
  const QDateTime already(QDate(2006, 3, 5), QTime(1, 0));
  EXPECT_EQ(UTIL_TimeConversion::toLocalTime(already), already);
  // A skipped time is shown as the time that is stored.
  const QDateTime skipped(QDate(2006, 3, 26), QTime(2, 30));
  EXPECT_EQ(shown(UTIL_TimeConversion::toLocalTime(skipped)), "2006-03-26 03:30:00");
  EXPECT_FALSE(UTIL_TimeConversion::toLocalTime(QDateTime()).isValid());
  EXPECT_FALSE(UTIL_TimeConversion::toLocalTime(utc(2006, 2, 30)).isValid());
}

TEST(LastSecondOf, IsLastSecondOfLocalDay) {
  const auto last = [](const char* name, QDate day) {
    const TimeZone zone(name);
    return UTIL_TimeConversion::toUTC(UTIL_TimeConversion::lastSecondOf(day));
  };
  EXPECT_EQ(last("Europe/Berlin", QDate(2006, 3, 5)), 1141599599);
  EXPECT_EQ(last("Europe/Berlin", QDate(2006, 3, 26)), 1143410399);
  EXPECT_EQ(last("Europe/Berlin", QDate(2006, 10, 29)), 1162162799);
  // The hour before midnight occurs twice: put back from 24:00 to 23:00.
  EXPECT_EQ(last("America/Santiago", QDate(2024, 4, 6)), 1712462399);
  EXPECT_EQ(last("Asia/Almaty", QDate(2024, 2, 29)), 1709233199);
  // The hour after midnight occurs twice.
  EXPECT_EQ(last("America/Havana", QDate(2023, 11, 4)), 1699156799);
  // Put forward from 23:00 to 24:00: the day ends at 22:59:59.
  EXPECT_EQ(last("America/Nuuk", QDate(2024, 3, 30)), 1711846799);
  const TimeZone zone("America/Nuuk");
  EXPECT_EQ(shown(UTIL_TimeConversion::lastSecondOf(QDate(2024, 3, 30))), "2024-03-30 22:59:59");
}

// The text form

TEST(ToIso8601, IsBasicAndInUtc) {
  const TimeZone zone("America/New_York");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(utc(2006, 3, 5, 12)), "20060305T120000Z");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(QDateTime(QDate(2006, 3, 5), QTime(23, 30, 1, 999))),
            "20060306T043001Z");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(UTIL_TimeConversion::fromUTC(0)), "19700101T000000Z");
}

TEST(ToIso8601, DoesNotDependOnLanguage) {
  const QLocale previous;
  QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(utc(2006, 3, 5, 12)), "20060305T120000Z");
  QLocale::setDefault(previous);
}

TEST(ToIso8601, YearsHaveFourDigits) {
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(utc(1, 1, 1)), "00010101T000000Z");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(utc(9999, 12, 31, 23, 59, 59)), "99991231T235959Z");
  LogCapture log;
  EXPECT_TRUE(UTIL_TimeConversion::toISO8601(QDateTime()).isEmpty());
  EXPECT_EQ(log.text(), "");
  for (const QDateTime& date : {utc(10000, 1, 1), utc(-1, 12, 31, 23, 59, 59)})
    EXPECT_TRUE(UTIL_TimeConversion::toISO8601(date).isEmpty());
  const std::string line = "(platform/util/UTIL_TimeConversion.cpp)The year ";
  EXPECT_EQ(log.withoutLines(), line + "10000 can't be written with four digits" + line +
                                    "-1 can't be written with four digits");
  const TimeZone zone("America/New_York");  // the year in UTC counts
  EXPECT_TRUE(
      UTIL_TimeConversion::toISO8601(QDateTime(QDate(9999, 12, 31), QTime(20, 0))).isEmpty());
}

TEST(FromIso8601, ReadsAllFormats) {
  const TimeZone zone("Europe/Berlin");
  const long noon = 1141560000;  // 12:00 in UTC, 13:00 in Berlin
  for (const char* text : {"20060305T120000Z",
                           "20060305T120000z",
                           "20060305t120000Z",
                           "20060305T1200Z",
                           "2006-03-05T12:00:00Z",
                           "2006-03-05T12:00Z",
                           "2006-03-05 12:00:00Z",
                           "20060305T130000",
                           "2006-03-05T13:00:00",
                           "2006-03-05T13:00",
                           "20060305T1300",
                           "20060305T130000+0100",
                           "20060305T130000+01:00",
                           "20060305T130000+01",
                           "2006-03-05T13:00:00+01:00",
                           "2006-03-05T13:00+01",
                           "20060305T064500-0515",
                           "20060305T173000+0530",
                           "20060306T115900+2359",
                           "20060304T120100-23:59",
                           "20060305T120000+0000",
                           "20060305T120000-00",
                           "20060305T120000.123Z",
                           "20060305T120000,9Z",
                           "2006-03-05T12:00:00.999999999999999999999Z",
                           "20060305T130000.5",
                           "20060305T130000.5+0100",
                           " 20060305T120000Z",
                           "\t\r\n 20060305T120000Z \r\n"})
    EXPECT_EQ(readSeconds(text), noon) << text;
  EXPECT_EQ(readSeconds("20060305"), noon - 13L * 3600);
  EXPECT_EQ(readSeconds("2006-03-05"), noon - 13L * 3600);
  EXPECT_EQ(readSeconds(" 20060305\r\n"), noon - 13L * 3600);
  EXPECT_EQ(readSeconds("20060305T235959Z"), noon + 12L * 3600 - 1);
  EXPECT_EQ(readSeconds("20040229T000000Z"), 1078012800);
}

TEST(FromIso8601, InstantIsInUtcIfTextHasOffset) {
  const TimeZone zone("Europe/Berlin");
  const auto specOf = [](const char* text) {
    const QDateTime instant = UTIL_TimeConversion::instantFromISO8601(text);
    EXPECT_EQ(instant, UTIL_TimeConversion::fromISO8601(text)) << text;
    return instant.timeSpec();
  };
  EXPECT_EQ(specOf("20060305T120000Z"), Qt::UTC);
  EXPECT_EQ(specOf("20060305T130000+0100"), Qt::UTC);
  EXPECT_EQ(specOf("20060305T130000"), Qt::LocalTime);
  EXPECT_EQ(specOf("20060305"), Qt::LocalTime);
  EXPECT_FALSE(UTIL_TimeConversion::instantFromISO8601("20060305T").isValid());
}

TEST(FromIso8601, RejectsAnythingElse) {
  for (const char* text : {"",
                           " ",
                           "x",
                           "Z",
                           "T",
                           "2006",
                           "200603",
                           "2006035",
                           "2006-03",
                           "20060305T",
                           "20060305T1",
                           "20060305T12",
                           "20060305T120",
                           "20060305T12000",
                           "20060305T12:",
                           "20060305T12:00:",
                           "20060305T12:00:0",
                           "20060305T12:0000",
                           "20060305Z",
                           "20060305+0100",
                           "2006-0305",
                           "200603-05",
                           "06-03-05",
                           "20060230T000000Z",
                           "20060229",
                           "20060431",
                           "20060001",
                           "20061301",
                           "20060100",
                           "20060132",
                           "00000101",
                           "-0010101",
                           "20060305T240000Z",
                           "20060305T126000Z",
                           "20060305T120060Z",
                           "20060305T-10000",
                           "20060305T120000ZZ",
                           "20060305T120000Zx",
                           "20060305T120000 Z",
                           "20060305T120000X",
                           "20060305T120000+",
                           "20060305T120000+1",
                           "20060305T120000+1:00",
                           "20060305T120000+010",
                           "20060305T120000+01000",
                           "20060305T120000+01:",
                           "20060305T120000+01:0",
                           "20060305T120000+2400",
                           "20060305T120000+0160",
                           "20060305T120000+-100",
                           "20060305T120000.Z",
                           "20060305T120000.",
                           "20060305T1200.5",
                           "20060305T120000.5.5",
                           "20060305  120000Z",
                           "20060305T 120000Z",
                           "2006 03 05",
                           "20060305T120000Z;20060306",
                           "\xD9\xA2\xD9\xA0\xD9\xA0\xD9\xA6",
                           "100000101T000000Z"}) {
    EXPECT_EQ(readSeconds(text), std::nullopt) << text;
  }
  EXPECT_FALSE(UTIL_TimeConversion::fromISO8601(QCString()).isValid());
  EXPECT_FALSE(UTIL_TimeConversion::fromISO8601(QByteArray("20060305T120000Z\0x", 18)).isValid());
  EXPECT_FALSE(UTIL_TimeConversion::fromISO8601(QByteArray("20060305\0", 9)).isValid());
}

TEST(FromIso8601, ReadsOrRejectsEachPrefix) {
  const std::string good = " 2006-03-05T12:00:00.5+01:00 ";
  for (std::size_t size = 0; size <= good.size(); ++size) {
    // In a separate allocation, so that reading beyond the end is detected.
    const std::string prefix = good.substr(0, size);
    const bool valid = UTIL_TimeConversion::fromISO8601(prefix.c_str()).isValid();
    const bool expected =
        size == 11 || size == 17 || size == 20 || size == 22 || size == 25 || size >= 28;
    EXPECT_EQ(valid, expected) << prefix;
  }
}

TEST(FromIso8601, ReadsFirstAndLastYears) {
  const TimeZone zone("UTC");
  EXPECT_EQ(readSeconds("00010101T000000Z"), -62135596800);
  EXPECT_EQ(readSeconds("0001-01-01"), -62135596800);
  EXPECT_EQ(readSeconds("99991231T235959Z"), 253402300799);
  EXPECT_EQ(readSeconds("99991231T235959-2359"), 253402300799 + 23L * 3600 + 59L * 60);
}

TEST(FromIso8601, ReadsLocalTime) {
  for (const char* name : zones) {
    const TimeZone zone(name);
    for (int year = 1; year <= 9999; year += year < 1850 || year > 2100 ? 97 : 1)
      for (int month = 1; month <= 12; ++month) {
        char text[64];
        char expected[64];
        std::snprintf(text, sizeof text, "%04d%02d17T123456", year, month);
        std::snprintf(expected, sizeof expected, "%04d-%02d-17 12:34:56", year, month);
        ASSERT_EQ(shown(UTIL_TimeConversion::fromISO8601(text)), expected) << name;
      }
  }
}

TEST(FromIso8601, InvertsToIso8601) {
  for (const char* name : zones) {
    const TimeZone zone(name);
    int wrong = 0;
    for (qint64 seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 399989) {
      const QCString text =
          UTIL_TimeConversion::toISO8601(UTIL_TimeConversion::fromUTC(static_cast<long>(seconds)));
      wrong += readSeconds(text.constData()) != seconds;
    }
    for (long seconds = 1136073600; seconds < 1136073600 + 366 * 86400; seconds += 1201) {
      const QDateTime date = UTIL_TimeConversion::fromUTC(seconds);
      wrong += readSeconds(UTIL_TimeConversion::toISO8601(date).constData()) != seconds;
      // In local time, at least the date and time of day are the same.
      const QString local = date.toString("yyyyMMdd'T'HHmmss");
      wrong +=
          UTIL_TimeConversion::fromISO8601(local.toLatin1()).toString("yyyyMMdd'T'HHmmss") != local;
    }
    EXPECT_EQ(wrong, 0) << name;
  }
}

// The C library remembers the last offset it used. Earlier conversions must not matter.
void expectWhateverWasReadBefore(const char* text, long expected) {
  for (const char* before :
       {"20060101T120000", "20060701T120000", "20260101T120000", "20260701T120000"}) {
    readSeconds(before);
    tm parts{};
    parts.tm_year = 106;
    parts.tm_mon = before[5] == '7' ? 6 : 0;
    parts.tm_mday = 1;
    parts.tm_isdst = -1;
    mktime(&parts);
    EXPECT_EQ(readSeconds(text), expected) << text << " after " << before;
  }
}

TEST(FromIso8601, SkippedLocalTimes) {
  {
    const TimeZone zone("Europe/Berlin");
    expectWhateverWasReadBefore("20060326T015959", 1143334799);
    expectWhateverWasReadBefore("20060326T020000", 1143334800);
    expectWhateverWasReadBefore("20060326T023000", 1143336600);
    expectWhateverWasReadBefore("20060326T025959", 1143338399);
    expectWhateverWasReadBefore("20060326T030000", 1143334800);
    EXPECT_EQ(shown(UTIL_TimeConversion::fromISO8601("20060326T023000")), "2006-03-26 03:30:00");
  }
  const TimeZone zone("America/New_York");
  expectWhateverWasReadBefore("20260308T015959", 1772953199);
  expectWhateverWasReadBefore("20260308T023000", 1772955000);
  expectWhateverWasReadBefore("20260308T030000", 1772953200);
}

TEST(FromIso8601, AmbiguousLocalTimes) {
  {
    const TimeZone zone("Europe/Berlin");
    expectWhateverWasReadBefore("20061029T015959", 1162079999);
    expectWhateverWasReadBefore("20061029T020000", 1162080000);
    expectWhateverWasReadBefore("20061029T023000", 1162081800);
    expectWhateverWasReadBefore("20061029T030000", 1162087200);
    EXPECT_EQ(readSeconds("20061029T023000+0100"), 1162085400);
  }
  const TimeZone zone("America/New_York");
  expectWhateverWasReadBefore("20261101T005959", 1793509199);
  expectWhateverWasReadBefore("20261101T013000", 1793511000);
  expectWhateverWasReadBefore("20261101T020000", 1793516400);
}

// Dates for users

class DateText : public testing::Test {
protected:
  ~DateText() override { QLocale::setDefault(previous_); }

  const QDateTime date_{QDate(2006, 3, 5), QTime(17, 4, 59)};

private:
  QLocale previous_;
};

TEST_F(DateText, German) {
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  EXPECT_EQ(UTIL_DateTime::dateToString(date_, 0), "05.03.06");
  EXPECT_EQ(UTIL_DateTime::dateToString(date_, 1), "05.03.06 17:04");
}

TEST_F(DateText, C) {
  QLocale::setDefault(QLocale::c());
  EXPECT_EQ(UTIL_DateTime::dateToString(date_, 0), "5 Mar 2006");
  EXPECT_EQ(UTIL_DateTime::dateToString(date_, 1), "5 Mar 2006 17:04:59");
}

TEST_F(DateText, ShowsSkippedTimesAsStored) {
  const TimeZone zone("Europe/Berlin");
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  const QDateTime skipped(QDate(2006, 3, 26), QTime(2, 30));
  EXPECT_EQ(UTIL_DateTime::dateToString(skipped, 1), "26.03.06 03:30");
  EXPECT_EQ(UTIL_DateTime::dateToString(skipped, 0), "26.03.06");
  const TimeZone greenland("America/Nuuk");
  const QDateTime beforeMidnight(QDate(2024, 3, 30), QTime(23, 30));
  EXPECT_EQ(UTIL_DateTime::dateToString(beforeMidnight, 1), "31.03.24 00:30");
  EXPECT_EQ(UTIL_DateTime::dateToString(beforeMidnight, 0), "31.03.24");
}

TEST_F(DateText, IsLocal) {
  const TimeZone zone("Europe/Berlin");
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  EXPECT_EQ(UTIL_DateTime::dateToString(utc(2006, 3, 5, 23, 30), 1), "06.03.06 00:30");
  EXPECT_EQ(UTIL_DateTime::dateToString(utc(2006, 3, 5, 23, 30), 0), "06.03.06");
  const TimeZone almaty("Asia/Almaty");
  EXPECT_EQ(UTIL_DateTime::dateToString(UTIL_TimeConversion::fromUTC(1709231400), 1),
            "29.02.24 23:30");
}

TEST_F(DateText, InvalidIsEmpty) {
  for (const int accuracy : {0, 1})
    EXPECT_TRUE(UTIL_DateTime::dateToString(QDateTime(), accuracy).isEmpty());
}

}  // namespace
