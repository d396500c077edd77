// Times, character sets and directories.

#include "EMAIL_Util.h"
#include "UTIL_DateTime.h"
#include "UTIL_TimeConversion.h"
#include "data_directory.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <QLocale>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <optional>
#include <random>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

// Sets a variable, or unsets it, while the object lives.
class Environment {
public:
  Environment(const char* name, const char* value) : name_(name) {
    if (const char* previous = std::getenv(name))
      previous_ = previous;
    set(value);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() { set(previous_ ? previous_->c_str() : nullptr); }

private:
  void set(const char* value) {
    value == nullptr ? unsetenv(name_) : setenv(name_, value, 1);
    tzset();
  }

  const char* name_;
  std::optional<std::string> previous_;
};

class TimeZone {
public:
  explicit TimeZone(const char* name) : variable_("TZ", name) {}

private:
  Environment variable_;
};

constexpr const char* zones[] = {"Europe/Berlin", "America/New_York",    "UTC",
                                 "Asia/Shanghai", "Australia/Lord_Howe", "Asia/Kolkata"};

constexpr long noDate = 0x7FFFFFFF;

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}
// Seconds of the date-time that the text is read as; nothing for an invalid one.
std::optional<long> readSeconds(const char* text) {
  const QDateTime read = UTIL_TimeConversion::fromISO8601(text);
  if (!read.isValid())
    return std::nullopt;
  EXPECT_EQ(read.timeSpec(), Qt::LocalTime) << text;
  return static_cast<long>(read.toSecsSinceEpoch());
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

TEST(ToUtc, InvalidIsNoDate) {
  LogCapture log;
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime()), noDate);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime(QDate(2006, 2, 30), QTime(0, 0), Qt::UTC)),
            noDate);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromUTC(noDate)), noDate);
  EXPECT_EQ(log.text(), "");
}

TEST(ToUtc, Saturates) {
  const auto at = [](qint64 seconds) { return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC); };
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
  logged(noDate + 1L, noDate - 1);
  logged(INT32_MIN - 1L, INT32_MIN);
  logged(253402300799L, noDate - 1);  // the end of the year 9999
  logged(-62135596800L, INT32_MIN);   // the start of the year 1
}

// A real date is never the no-date value, not even in its second.
TEST(ToUtc, MillisecondsBehindNoDateSaturateToo) {
  LogCapture log;
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(noDate * 1000)), noDate);
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(noDate * 1000 + 1)),
            noDate - 1);
  EXPECT_EQ(UTIL_TimeConversion::toUTC(QDateTime::fromMSecsSinceEpoch(INT32_MIN * 1000L - 1)),
            INT32_MIN);
  EXPECT_NE(log.text(), "");
}

// Qt calls them invalid, but they are somebody's dates.
TEST(ToUtc, TimesThatAreLeftOutAreDates) {
  const TimeZone zone("Europe/Berlin");
  const QDateTime skipped(QDate(2006, 3, 26), QTime(2, 30, 0, 999));
  EXPECT_EQ(UTIL_TimeConversion::toUTC(skipped), 1143336600);
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(skipped), "20060326T013000Z");
}

TEST(ToUtc, ReadsBackWhatFromUtcGave) {
  for (const char* name : zones) {
    const TimeZone zone(name);
    int wrong = 0;
    for (long seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 199999)
      wrong += UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromUTC(seconds)) != seconds;
    // All the changes of the clock in a year, each second time closely.
    for (long seconds = 1136073600; seconds < 1136073600 + 366 * 86400; seconds += 599)
      wrong += UTIL_TimeConversion::toUTC(UTIL_TimeConversion::fromUTC(seconds)) != seconds;
    EXPECT_EQ(wrong, 0) << name;
  }
}

TEST(FromUtc, GivesLocalTime) {
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

TEST(FromUtc, TakesAnyNumber) {
  for (const long seconds : {LONG_MAX, LONG_MIN, LONG_MAX / 1000, LONG_MIN / 1000}) {
    const QDateTime date = UTIL_TimeConversion::fromUTC(seconds);
    LogCapture log;
    const long stored = UTIL_TimeConversion::toUTC(date);
    EXPECT_TRUE(date.isValid() ? stored == (seconds > 0 ? noDate - 1 : INT32_MIN)
                               : stored == noDate)
        << seconds;
  }
}

// The text form

TEST(ToIso8601, IsBasicAndInUtc) {
  const TimeZone zone("America/New_York");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(utc(2006, 3, 5, 12)), "20060305T120000Z");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(QDateTime(QDate(2006, 3, 5), QTime(23, 30, 1, 999))),
            "20060306T043001Z");
  EXPECT_EQ(UTIL_TimeConversion::toISO8601(UTIL_TimeConversion::fromUTC(0)), "19700101T000000Z");
}

TEST(ToIso8601, DoesNotDependOnTheLanguage) {
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
  const TimeZone zone("America/New_York");  // the year that counts is the one in UTC
  EXPECT_TRUE(
      UTIL_TimeConversion::toISO8601(QDateTime(QDate(9999, 12, 31), QTime(20, 0))).isEmpty());
}

TEST(FromIso8601, ReadsAllForms) {
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
  EXPECT_EQ(readSeconds("20060305"), noon - 13 * 3600);
  EXPECT_EQ(readSeconds("2006-03-05"), noon - 13 * 3600);
  EXPECT_EQ(readSeconds(" 20060305\r\n"), noon - 13 * 3600);
  EXPECT_EQ(readSeconds("20060305T235959Z"), noon + 12 * 3600 - 1);
  EXPECT_EQ(readSeconds("20040229T000000Z"), 1078012800);
}

TEST(FromIso8601, RefusesAnythingElse) {
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

TEST(FromIso8601, ReadsEachPrefixOrRefusesIt) {
  const std::string good = " 2006-03-05T12:00:00.5+01:00 ";
  for (std::size_t size = 0; size <= good.size(); ++size) {
    // In memory of its own, so that reading beyond the end shows.
    const std::string prefix = good.substr(0, size);
    const bool valid = UTIL_TimeConversion::fromISO8601(prefix.c_str()).isValid();
    const bool expected =
        size == 11 || size == 17 || size == 20 || size == 22 || size == 25 || size >= 28;
    EXPECT_EQ(valid, expected) << prefix;
  }
}

TEST(FromIso8601, ReadsTheFirstAndLastYears) {
  const TimeZone zone("UTC");
  EXPECT_EQ(readSeconds("00010101T000000Z"), -62135596800);
  EXPECT_EQ(readSeconds("0001-01-01"), -62135596800);
  EXPECT_EQ(readSeconds("99991231T235959Z"), 253402300799);
  EXPECT_EQ(readSeconds("99991231T235959-2359"), 253402300799 + 23 * 3600 + 59 * 60);
}

TEST(FromIso8601, LocalTimeIsWhatTheTextSays) {
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

TEST(FromIso8601, ReadsBackWhatToIso8601Gave) {
  for (const char* name : zones) {
    const TimeZone zone(name);
    int wrong = 0;
    for (long seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 399989) {
      const QCString text = UTIL_TimeConversion::toISO8601(UTIL_TimeConversion::fromUTC(seconds));
      wrong += readSeconds(text.constData()) != seconds;
    }
    for (long seconds = 1136073600; seconds < 1136073600 + 366 * 86400; seconds += 1201) {
      const QDateTime date = UTIL_TimeConversion::fromUTC(seconds);
      wrong += readSeconds(UTIL_TimeConversion::toISO8601(date).constData()) != seconds;
      // In local time at least the clock shows the same.
      const QString local = date.toString("yyyyMMdd'T'HHmmss");
      wrong +=
          UTIL_TimeConversion::fromISO8601(local.toLatin1()).toString("yyyyMMdd'T'HHmmss") != local;
    }
    EXPECT_EQ(wrong, 0) << name;
  }
}

// The C library remembers the last offset it saw: what was read before must not matter.
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

TEST(FromIso8601, TimesThatAreLeftOut) {
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

TEST(FromIso8601, TimesThatComeTwice) {
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

// Dates for people

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

TEST_F(DateText, InvalidIsEmpty) {
  for (const int accuracy : {0, 1})
    EXPECT_TRUE(UTIL_DateTime::dateToString(QDateTime(), accuracy).isEmpty());
}

// Character sets

struct Name {
  int code;
  const char* name;
};
constexpr Name names[] = {{1, "US-ASCII"}, {12, "UTF-7"}, {13, "UTF-8"},
                          {14, "GB2312"},  {15, "GBK"},   {16, "BIG5"}};
constexpr int unknownCodes[] = {-1, 2, 11, 17, INT_MAX, INT_MIN};

TEST(Charsets, Names) {
  for (const Name& entry : names) {
    QCString name("before");
    EXPECT_TRUE(EMAIL_Util::charsetEnumToStr(entry.code, name));
    EXPECT_EQ(name, entry.name);
  }
  std::vector<int> unknown(std::begin(unknownCodes), std::end(unknownCodes));
  unknown.push_back(0);
  for (const int code : unknown) {
    QCString name("before");
    EXPECT_FALSE(EMAIL_Util::charsetEnumToStr(code, name)) << code;
    EXPECT_TRUE(name.isEmpty());
  }
}

struct Sample {
  int code;
  const char* bytes;
  const char16_t* text;
};
constexpr Sample samples[] = {
    {1, "Buy milk", u"Buy milk"},
    {12, "+ZeVnLIqe-", u"\u65E5\u672C\u8A9E"},
    {12, "1 +- 2 +AOk-!", u"1 + 2 \u00E9!"},
    {12, "+2D3eAA-", u"\U0001F600"},
    {13, "\xC3\xA9\xE4\xBB\xBB\xF0\x9F\x98\x80", u"\u00E9\u4EFB\U0001F600"},
    {14, "\xC8\xCE\xCE\xF1 1", u"\u4EFB\u52A1 1"},
    {15, "\xC8\xCE\xCE\xF1\x81\x40", u"\u4EFB\u52A1\u4E02"},
    {16, "\xA5\xF4\xB0\xC8", u"\u4EFB\u52D9"},
};

TEST(Charsets, Decode) {
  for (const Sample& sample : samples) {
    LogCapture log;
    QString text("before");
    EXPECT_TRUE(EMAIL_Util::decFromCharset(sample.bytes, text, sample.code)) << sample.bytes;
    EXPECT_EQ(text.toStdU16String(), sample.text) << sample.bytes;
    EXPECT_EQ(log.text(), "");
  }
}

TEST(Charsets, Encode) {
  for (const Sample& sample : samples) {
    QCString bytes("before");
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString::fromUtf16(sample.text), sample.code))
        << sample.bytes;
    EXPECT_EQ(bytes.toStdString(),
              // Plain characters need no escape, whoever writes.
              sample.bytes == std::string("1 +- 2 +AOk-!") ? "1 +- 2 +AOkAIQ-" : sample.bytes);
  }
}

TEST(Charsets, Utf7IsEnded) {
  QCString bytes;
  EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(QChar(0xE9)), 12));
  EXPECT_EQ(bytes, "+AOk-");
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes + "abc", text, 12));
  EXPECT_EQ(text, QString(QChar(0xE9)) + "abc");
}

TEST(Charsets, ProgramsThatDeclareGb2312UseItsSuccessors) {
  for (const int code : {14, 15}) {
    QString text;
    EXPECT_TRUE(EMAIL_Util::decFromCharset("\x81\x40\x81\x30\x81\x30", text, code));
    EXPECT_EQ(text.toStdU16String(), u"\u4E02\u0080");
  }
}

TEST(Charsets, InvalidBytesAreReadAsLatin1) {
  struct Invalid {
    int code;
    const char* bytes;
    int at;
    const char* name;
  };
  constexpr Invalid invalid[] = {
      {1, "ab\xE9", 2, "US-ASCII"},
      {12, "a\xFF", 1, "UTF-7"},
      {13,
       "ab\xFF"
       "c",
       2, "UTF-8"},
      {13, "a\xC3", 1, "UTF-8"},
      {13, "\xE4\xBB", 0, "UTF-8"},
      {13, "\xC0\x80", 0, "UTF-8"},
      {13, "\xED\xA0\x80", 0, "UTF-8"},
      {13, "\x80", 0, "UTF-8"},
      {13, "\xF5\x80\x80\x80", 0, "UTF-8"},
      {14, "\xC8\xCE\xCE", 2, "GB2312"},
      {14, "\xFF", 0, "GB2312"},
      {15, "x\x81", 1, "GBK"},
      {15, "\x81\x20", 0, "GBK"},
      {16, "\xA5", 0, "BIG5"},
      {16, "ok\xFF\xFF", 2, "BIG5"},
  };
  for (const Invalid& sample : invalid) {
    SCOPED_TRACE(std::string(sample.name) + " " + sample.bytes);
    LogCapture log;
    QString text("before");
    EXPECT_FALSE(EMAIL_Util::decFromCharset(sample.bytes, text, sample.code));
    EXPECT_EQ(text, QString::fromLatin1(sample.bytes));
    EXPECT_EQ(log.withoutLines(), "(platform/util/EMAIL_Util.cpp)Byte " +
                                      std::to_string(sample.at) + " is not valid in " +
                                      sample.name + ", the text is read as Latin-1");
  }
}

TEST(Charsets, UnknownCodesAreReadAsLatin1) {
  QByteArray all;
  for (int byte = 0; byte < 256; ++byte)
    all += static_cast<char>(byte);
  LogCapture log;
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset(all, text, 0));
  EXPECT_EQ(text, QString::fromLatin1(all));
  for (const int code : unknownCodes) {
    text = "before";
    EXPECT_FALSE(EMAIL_Util::decFromCharset(all, text, code)) << code;
    EXPECT_EQ(text, QString::fromLatin1(all));
  }
  EXPECT_EQ(log.text(), "");
}

TEST(Charsets, NullAndEmpty) {
  for (const int code : {0, 1, 12, 13, 14, 15, 16}) {
    SCOPED_TRACE(code);
    QString text("before");
    EXPECT_TRUE(EMAIL_Util::decFromCharset(QByteArray(), text, code));
    EXPECT_TRUE(text.isNull());
    EXPECT_TRUE(EMAIL_Util::decFromCharset(QByteArray(""), text, code));
    EXPECT_TRUE(text.isEmpty() && !text.isNull());
    if (code == 0)
      continue;
    QCString bytes("before");
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(), code));
    EXPECT_TRUE(bytes.isNull());
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(""), code));
    EXPECT_TRUE(bytes.isEmpty() && !bytes.isNull());
  }
}

TEST(Charsets, EncodingToAnUnknownOneGivesNothing) {
  std::vector<int> unknown(std::begin(unknownCodes), std::end(unknownCodes));
  unknown.push_back(0);
  for (const int code : unknown) {
    QCString bytes("before");
    EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, "text", code)) << code;
    EXPECT_TRUE(bytes.isNull());
  }
}

TEST(Charsets, WhatASetLacksIsReplaced) {
  const QString text = QString::fromUtf16(u"a\u00E9b\u4EFB\U0001F600c");
  const auto encoded = [&](int code) {
    QCString bytes;
    EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, text, code));
    return bytes.toStdString();
  };
  EXPECT_EQ(encoded(1), "a?b??c");
  EXPECT_EQ(encoded(14), "a\xA8\xA6"
                         "b\xC8\xCE?c");
  EXPECT_EQ(encoded(15), "a\xA8\xA6"
                         "b\xC8\xCE?c");
  EXPECT_EQ(encoded(16), "a?b\xA5\xF4?c");
}

TEST(Charsets, LoneSurrogatesAreReplaced) {
  for (const char16_t unit : {u'\xD800', u'\xDC00'})
    for (const int code : {1, 12, 13, 14, 15, 16}) {
      const bool hasReplacement = code == 12 || code == 13;
      const QChar replacement = hasReplacement ? QChar(QChar::ReplacementCharacter) : QChar('?');
      for (const QString& place :
           {QString("a%1b"), QString("%1b"), QString("a%1"), QString::fromUtf16(u"%1\U0001F600")}) {
        if (!hasReplacement && place.size() == 4)
          continue;  // the pair can't be written either
        QCString bytes;
        EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, place.arg(QChar(unit)), code));
        QString back;
        EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
        EXPECT_EQ(back, place.arg(replacement)) << code;
      }
    }
}

TEST(Charsets, Utf7ThatIsCutShortIsNotValid) {
  for (const char* bytes : {"+A", "+AG", "a+", "+2D0", "+2D0-", "+2D3eA", "+AGF-"}) {
    LogCapture log;
    QString text;
    EXPECT_FALSE(EMAIL_Util::decFromCharset(bytes, text, 12)) << bytes;
    EXPECT_EQ(text, QString::fromLatin1(bytes));
  }
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset("+AGE", text, 12));  // complete without its hyphen
  EXPECT_EQ(text, "a");
}

TEST(Charsets, CombinedCharactersAtTheEndAreRead) {
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset("a\x88\x62", text, 16));
  EXPECT_EQ(text.toStdU16String(), u"a\u00CA\u0304");
  EXPECT_TRUE(EMAIL_Util::decFromCharset("a\x88\x66", text, 16));
  EXPECT_EQ(text.toStdU16String(), u"a\u00CA");
}

// Language tags, which the C library drops without an error.
TEST(Charsets, CharactersThatVanishAreToldOf) {
  QCString bytes;
  EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, QString::fromUtf16(u"a\U000E0067z"), 1));
  EXPECT_EQ(bytes, "az");
}

// Each failure makes the C library convert thousands of characters again.
TEST(Charsets, ManyCharactersThatASetLacksTakeNoLongerThanOthers) {
  QCString bytes;
  EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, QString(1000000, QChar(0x4E00)), 1));
  EXPECT_TRUE(bytes == QByteArray(1000000, '?'));
}

TEST(Charsets, LongTextsPassWhole) {
  QString text;
  for (int i = 0; i < 20000; ++i)
    text += QChar(0x4E00 + i % 5000);
  for (const int code : {12, 13}) {
    QCString bytes;
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, text, code));
    QString back;
    EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
    EXPECT_TRUE(back == text);
  }
}

TEST(Charsets, AByteOrderMarkIsText) {
  const QString text = QString(QChar(0xFEFF)) + "a";
  for (const int code : {12, 13}) {
    QCString bytes;
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, text, code));
    QString back;
    EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
    EXPECT_EQ(back.toStdU16String(), text.toStdU16String()) << code;
  }
}

// Quoted-printable

std::string encoded(const std::string& bytes) {
  const QCString result =
      EMAIL_Util::encQp(bytes.data(), static_cast<unsigned long>(bytes.size()), 0);
  return result.toStdString();
}

int hexDigit(char c) {
  const std::string digits = "0123456789ABCDEF";  // RFC 2045 wants them in upper case
  const std::size_t found = digits.find(c);
  return found == std::string::npos ? -1 : static_cast<int>(found);
}

// Reads quoted-printable by RFC 2045, 6.7, and tells what offends against it or our own rules.
std::string decoded(const std::string& text, std::string& fault) {
  std::string bytes;
  std::size_t lineStart = 0;
  std::size_t limit = 76 - 52;
  const auto endLine = [&](std::size_t end) {
    const std::string line = text.substr(lineStart, end - lineStart);
    if (line.size() > limit)
      fault = "long line";
    if (!line.empty() && (line.front() == ' ' || line.back() == ' '))
      fault = "blank at an edge";
    lineStart = end + 1;
    limit = 76;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '=' && i + 1 < text.size() && text[i + 1] == '\n') {
      endLine(i + 1);
      ++i;
      if (i + 1 == text.size())
        fault = "soft break at the end";
    } else if (c == '=') {
      const int high = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
      const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
      if (high < 0 || low < 0)
        fault = "bad escape";
      bytes += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      if (c < ' ' || c > '~' || c == ';')
        fault = "raw byte";
      bytes += c;
    }
  }
  endLine(text.size());
  return bytes;
}

void expectSound(const std::string& bytes) {
  std::string fault;
  const std::string text = encoded(bytes);
  ASSERT_TRUE(decoded(text, fault) == bytes) << text;
  ASSERT_EQ(fault, "") << text;
}

TEST(QuotedPrintable, KnownTexts) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("Buy milk"), "Buy milk");
  EXPECT_EQ(encoded("a=b;c"), "a=3Db=3Bc");
  EXPECT_EQ(encoded("\xC3\xA9\x7F"), "=C3=A9=7F");
  EXPECT_EQ(encoded("a\r\nb\tc"), "a=0D=0Ab=09c");
  EXPECT_EQ(encoded(std::string("\0", 1)), "=00");
  EXPECT_EQ(encoded(" "), "=20");
  EXPECT_EQ(encoded(" a b "), "=20a b=20");
  EXPECT_EQ(EMAIL_Util::encQp(nullptr, 0, 0), "");
}

TEST(QuotedPrintable, LinesAreBroken) {
  EXPECT_EQ(encoded(std::string(23, 'x')), std::string(23, 'x'));
  const std::string many = encoded(std::string(200, 'x'));
  EXPECT_EQ(many, std::string(23, 'x') + "=\n" + std::string(75, 'x') + "=\n" +
                      std::string(75, 'x') + "=\n" + std::string(27, 'x'));
  EXPECT_EQ(
      EMAIL_Util::qpNameLength,
      static_cast<int>(std::string("DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:").size()));
}

TEST(QuotedPrintable, EachLengthAndByteAtEachPlace) {
  for (const char byte : {'x', ' ', '=', '\xE4', '\n'})
    for (std::size_t size = 0; size < 180; ++size) {
      expectSound(std::string(size, byte));
      expectSound(std::string(size, 'x') + byte);
      expectSound(std::string(size, 'x') + byte + "yy");
      expectSound(std::string(size, 'x') + std::string(3, byte) + "y");
    }
}

TEST(QuotedPrintable, RandomBytes) {
  std::mt19937 random(7);  // NOLINT: the same bytes each time
  for (int round = 0; round < 3000; ++round) {
    std::string bytes(random() % 400, '\0');
    const bool printable = round % 2 == 0;  // with many blanks then
    for (char& byte : bytes)
      byte = static_cast<char>(printable ? " abc=;\xE9"[random() % 7] : random() % 256);
    expectSound(bytes);
  }
}

// Directories

class DataDirectoryTest : public testing::Test {
protected:
  [[nodiscard]] fs::path below(const char* name) const { return directory_.path() / name; }
  static void expectMade(const fs::path& path) {
    EXPECT_EQ(ulo::dataDirectory(), path);
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0700));
  }

  TemporaryDirectory directory_;
  Environment own_{"ULO_DATA_DIR", nullptr};
  Environment xdg_{"XDG_DATA_HOME", nullptr};
  Environment home_{"HOME", below("home").c_str()};
};

TEST_F(DataDirectoryTest, OwnVariableFirst) {
  const Environment own("ULO_DATA_DIR", below("a/b/c").c_str());
  const Environment xdg("XDG_DATA_HOME", below("xdg").c_str());
  expectMade(below("a/b/c"));
  for (const char* parent : {"a", "a/b"})
    EXPECT_EQ(fs::status(below(parent)).permissions(), fs::perms(0700));
  EXPECT_FALSE(fs::exists(below("xdg")));
}

TEST_F(DataDirectoryTest, ThenTheDesktopsVariable) {
  const Environment own("ULO_DATA_DIR", "");
  const Environment xdg("XDG_DATA_HOME", below("xdg").c_str());
  expectMade(below("xdg/ulo"));
  EXPECT_FALSE(fs::exists(below("home")));
}

TEST_F(DataDirectoryTest, ThenHome) {
  expectMade(below("home/.local/share/ulo"));
  const Environment xdg("XDG_DATA_HOME", "");
  expectMade(below("home/.local/share/ulo"));
}

// As the desktops' specification has it.
TEST_F(DataDirectoryTest, ARelativeVariableOfTheDesktopIsIgnored) {
  const Environment xdg("XDG_DATA_HOME", "data");
  expectMade(below("home/.local/share/ulo"));
}

TEST_F(DataDirectoryTest, NoneWithoutAHome) {
  for (const char* home : {"", static_cast<const char*>(nullptr)}) {
    const Environment unset("HOME", home);
    errno = 0;
    EXPECT_EQ(ulo::dataDirectory(), "");
    EXPECT_EQ(errno, ENOENT);
  }
}

TEST_F(DataDirectoryTest, OneThatExistsIsLeftAsItIs) {
  fs::create_directory(below("there"));
  fs::permissions(below("there"), fs::perms(0755));
  const Environment own("ULO_DATA_DIR", below("there").c_str());
  EXPECT_EQ(ulo::dataDirectory(), below("there"));
  EXPECT_EQ(fs::status(below("there")).permissions(), fs::perms(0755));
}

TEST_F(DataDirectoryTest, ATrailingSlashIsFine) {
  const Environment own("ULO_DATA_DIR", (below("a/b").string() + "/").c_str());
  EXPECT_EQ(ulo::dataDirectory(), below("a/b").string() + "/");
  EXPECT_TRUE(fs::is_directory(below("a/b")));
}

TEST_F(DataDirectoryTest, AFileInTheWay) {
  std::ofstream(below("file")) << "";
  for (const char* name : {"file", "file/a", "file/a/b"}) {
    const Environment own("ULO_DATA_DIR", below(name).c_str());
    errno = 0;
    EXPECT_EQ(ulo::dataDirectory(), "");
    EXPECT_EQ(errno, ENOTDIR) << name;
  }
  EXPECT_TRUE(fs::is_regular_file(below("file")));
}

TEST_F(DataDirectoryTest, OneThatCannotBeMade) {
  const Environment own("ULO_DATA_DIR", "/proc/ulo/data");
  errno = 0;
  EXPECT_EQ(ulo::dataDirectory(), "");
  EXPECT_EQ(errno, ENOENT);  // what the kernel says about /proc
}

}  // namespace
