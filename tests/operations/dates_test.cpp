#include "dates.h"

#include "UTIL_TimeConversion.h"
#include "task_dates.h"
#include "utc_zone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

using ulo::DateProblem;

class Dates : public testing::Test {
protected:
  // Berlin skips 02:00 to 03:00 on March 29, 2026, and Cairo the first hour of April 24, 2026.
  Dates() { useZone("Europe/Berlin"); }

  static void useZone(const char* name) {
    setenv("TZ", name, 1);
    tzset();
  }
  static QDateTime parsed(const char* text) {
    const ulo::ParsedDate result = ulo::parseDate(text);
    EXPECT_EQ(result.problem, DateProblem::none) << text;
    return result.dateTime;
  }
  static QDateTime local(int year, int month, int day, int hour = 0, int minute = 0,
                         int second = 0) {
    return {QDate(year, month, day), QTime(hour, minute, second)};
  }
};

TEST_F(Dates, ReadsLocalDatesAndTimes) {
  EXPECT_EQ(parsed("2026-03-05"), local(2026, 3, 5));
  EXPECT_EQ(parsed("2026-03-05 18:00"), local(2026, 3, 5, 18));
  EXPECT_EQ(parsed("2026-03-05T18:00:59"), local(2026, 3, 5, 18, 0, 59));
  EXPECT_EQ(parsed("2026-03-05 18:00").timeSpec(), Qt::LocalTime);
}

TEST_F(Dates, RejectsOtherTexts) {
  for (const char* text :
       {"", "tomorrow", "2026-3-5", "2026-02-30", "05.03.2026", "2026-03-05 ", "2026-03-05 25:00",
        "2026-03-05_18:00", "2026-03-05 18", "2026-03-05 18:00:00Z", " 2026-03-05"})
    EXPECT_EQ(ulo::parseDate(text).problem, DateProblem::notDate) << text;
}

TEST_F(Dates, RejectsSkippedTimes) {
  EXPECT_EQ(ulo::parseDate("2026-03-29 02:30").problem, DateProblem::skipped);
  EXPECT_EQ(parsed("2026-03-29 03:00"), local(2026, 3, 29, 3));
}

TEST_F(Dates, RangeIsWhatEveryReaderKeeps) {
  EXPECT_EQ(parsed("1970-01-02"), local(1970, 1, 2));
  EXPECT_EQ(parsed("2038-01-17 23:59"), local(2038, 1, 17, 23, 59));
  for (const char* text : {"1970-01-01 23:59", "2038-01-18", "9999-12-31"})
    EXPECT_EQ(ulo::parseDate(text).problem, DateProblem::outOfRange) << text;
}

TEST_F(Dates, DayBeginsWithItsFirstMoment) {
  useZone("Africa/Cairo");
  EXPECT_EQ(parsed("2026-04-24"), local(2026, 4, 24, 1));
  EXPECT_FALSE(ulo::localTime(QDate(2026, 4, 24), QTime(0, 0)));
  EXPECT_EQ(ulo::localTimeOrStart(QDate(2026, 4, 24), QTime(0, 30)), local(2026, 4, 24, 1));
  EXPECT_EQ(ulo::localTimeOrStart(QDate(2026, 4, 24), QTime(7, 30)), local(2026, 4, 24, 7, 30));
}

TEST_F(Dates, LocalTimeNeedsDayAndTime) {
  EXPECT_EQ(ulo::localTime(QDate(2026, 3, 5), QTime(7, 30)), local(2026, 3, 5, 7, 30));
  EXPECT_FALSE(ulo::localTime(QDate(), QTime(7, 30)));
  EXPECT_FALSE(ulo::localTime(QDate(2026, 3, 5), QTime()));
}

TEST_F(Dates, WritesWhatItReads) {
  for (const char* text : {"2026-03-05", "2026-03-05 18:00", "2026-03-05 00:01"})
    EXPECT_EQ(ulo::formatDate(parsed(text)), text);
  EXPECT_EQ(ulo::formatDate(local(2026, 3, 5, 18, 0, 59)), "2026-03-05 18:00");
  EXPECT_EQ(ulo::formatTimestamp(local(2026, 3, 5, 18, 0, 59)), "2026-03-05 18:00:59");
  EXPECT_EQ(ulo::formatUtc(local(2026, 3, 5, 18, 0, 59)), "2026-03-05T17:00:59Z");
}

TEST_F(Dates, WritesEachYearAsQtDoes) {
  for (const int year : {-44, 1, 12, 987, 1970, 2026, 9999, 10000, 12345}) {
    const QDateTime utc(QDate(year, 2, 3), QTime(4, 5, 6), ulo::utcZone);
    EXPECT_EQ(ulo::formatUtc(utc), utc.toString(Qt::ISODate)) << year;
    const QDateTime local = UTIL_TimeConversion::toLocalTime(utc);
    EXPECT_EQ(ulo::formatDate(utc), local.toString("yyyy-MM-dd HH:mm")) << year;
  }
}

TEST_F(Dates, WritesOtherZonesInLocalTime) {
  const QDateTime utc(QDate(2026, 3, 5), QTime(17, 30), ulo::utcZone);
  EXPECT_EQ(ulo::formatDate(utc), "2026-03-05 18:30");
  EXPECT_EQ(ulo::formatUtc(utc), "2026-03-05T17:30:00Z");
}

TEST_F(Dates, HasDateAgreesWithTheStore) {
  const QDateTime noDate = ZTASK_ENG_Task::noDate();
  const QDateTime skipped(QDate(2026, 3, 29), QTime(2, 30));
  for (const QDateTime& date : {noDate, noDate.toUTC(), noDate.addSecs(-1), QDateTime(),
                                local(1970, 1, 1, 1), local(1969, 12, 31), local(2026, 3, 5),
                                skipped, QDateTime(QDate(2026, 3, 5), QTime(), ulo::utcZone)})
    EXPECT_EQ(ulo::hasDate(date), UTIL_TimeConversion::toUTC(date) != ZTASK_ENG_Task::noDateSeconds)
        << date.toString(Qt::ISODate).toStdString();
  EXPECT_TRUE(ulo::hasDate(skipped));
  EXPECT_FALSE(ulo::hasDate(noDate));
  EXPECT_EQ(ulo::formatDate(noDate), "");
  EXPECT_EQ(ulo::formatDate(QDateTime()), "");
}

TEST_F(Dates, CurrentTimeIsLocal) {
  const QDateTime before = QDateTime::currentDateTimeUtc();
  const QDateTime now = ulo::currentLocalTime();
  EXPECT_GE(now, before);
  EXPECT_LE(now, QDateTime::currentDateTimeUtc());
  EXPECT_NE(now.timeSpec(), Qt::UTC);
}

}  // namespace
