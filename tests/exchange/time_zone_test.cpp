// Dates in time zones that a text defines, and in those of the system.
#include "berlin_time.h"
#include "ical_text.h"
#include "recurrence_rule.h"
#include "wall_time.h"
#include "zone_rules.h"

#include <gtest/gtest.h>

#include <libical/ical.h>

#include <thread>

namespace {

using Task = ZTASK_ENG_Task;

QByteArray observance(const char* name, const QByteArray& start, const QByteArray& from,
                      const QByteArray& to, const QByteArray& more = {}) {
  const QByteArray component(name);
  return "BEGIN:" + component + "\r\nDTSTART:" + start + "\r\nTZOFFSETFROM:" + from +
         "\r\nTZOFFSETTO:" + to + "\r\n" + more + "END:" + component + "\r\n";
}
QByteArray zoneOf(const QByteArray& observances, const QByteArray& id = "Zone") {
  return "BEGIN:VTIMEZONE\r\nTZID:" + id + "\r\n" + observances + "END:VTIMEZONE\r\n";
}
QByteArray todoAt(const QByteArray& time, const QByteArray& id = "Zone") {
  return "BEGIN:VTODO\r\nDUE;TZID=\"" + id + "\":" + time + "\r\nEND:VTODO\r\n";
}
std::string dueOf(const QByteArray& calendar) {
  return dateText(TASK_ENG_Ical(calendarOf(calendar)).task(0), Task::TASK_FIELD_DUE);
}

// Two hours west of Berlin, with rules of their own.
const QByteArray rules = observance("DAYLIGHT", "19700301T020000", "-0100", "+0000",
                                    "RRULE:FREQ=YEARLY;BYMONTH=5;BYDAY=2SU\r\n") +
                         observance("STANDARD", "19701001T030000", "+0000", "-0100",
                                    "RRULE:FREQ=YEARLY;BYMONTH=9;BYDAY=-1SA\r\n");

TEST(TimeZone, TextDefinesOffsets) {
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260509T120000")), "20260509T130000Z");
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260510T015959")), "20260510T025959Z");
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260510T030000")), "20260510T030000Z");
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260926T015959")), "20260926T015959Z");
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260926T030000")), "20260926T040000Z");
  // It counts also under a name that the system knows.
  EXPECT_EQ(dueOf(zoneOf(rules, "Asia/Tokyo") + todoAt("20261201T120000", "Asia/Tokyo")),
            "20261201T130000Z");
  // And after the to-do.
  EXPECT_EQ(dueOf(todoAt("20260509T120000") + zoneOf(rules)), "20260509T130000Z");
}

// The name is a text in the definition, and plain where it is used.
TEST(TimeZone, NameMayHaveEscapes) {
  EXPECT_EQ(dueOf(zoneOf(rules, "(UTC-01:00) Here\\, there") +
                  todoAt("20261201T120000", "(UTC-01:00) Here, there")),
            "20261201T130000Z");
}

TEST(TimeZone, SkippedAndRepeatedTimesUseTheOffsetBefore) {
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260510T023000")), "20260510T033000Z");
  EXPECT_EQ(dueOf(zoneOf(rules) + todoAt("20260926T023000")), "20260926T023000Z");
}

TEST(TimeZone, RulesHaveEveryForm) {
  // Until the end of 2009, then one hour more.
  const QByteArray until =
      observance("STANDARD", "16010101T000000", "+0500", "+0500") +
      observance("DAYLIGHT", "20000326T020000", "+0500", "+0600",
                 "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU;UNTIL=20090328T205959Z\r\n") +
      observance("STANDARD", "20001029T030000", "+0600", "+0500",
                 "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU;UNTIL=20090101T000000Z\r\n");
  EXPECT_EQ(dueOf(zoneOf(until) + todoAt("20080701T120000")), "20080701T060000Z");
  EXPECT_EQ(dueOf(zoneOf(until) + todoAt("20081201T120000")), "20081201T070000Z");
  // The last change, of March 2009, is one second after UNTIL.
  EXPECT_EQ(dueOf(zoneOf(until) + todoAt("20261201T120000")), "20261201T070000Z");
  const QByteArray dates =
      observance("STANDARD", "19700101T000000", "+0100", "+0100") +
      observance("DAYLIGHT", "20260401T000000", "+0100", "+0200",
                 "RDATE:20270401T000000,20280401T000000\r\nRDATE:20290401T000000\r\n") +
      observance("STANDARD", "20261001T000000", "+0200", "+0100",
                 "RDATE;VALUE=DATE-TIME:20271001T000000\r\n");
  EXPECT_EQ(dueOf(zoneOf(dates) + todoAt("20270701T120000")), "20270701T100000Z");
  EXPECT_EQ(dueOf(zoneOf(dates) + todoAt("20271101T120000")), "20271101T110000Z");
  EXPECT_EQ(dueOf(zoneOf(dates) + todoAt("20281101T120000")), "20281101T100000Z");
  // Not the nth weekday of a month.
  const QByteArray other =
      observance("STANDARD", "19700101T000000", "+0200", "+0100") +
      observance("DAYLIGHT", "19700408T000000", "+0100", "+0200",
                 "RRULE:FREQ=YEARLY;BYMONTH=4;BYMONTHDAY=8,9,10,11,12,13,14;BYDAY=SU\r\n");
  EXPECT_EQ(dueOf(zoneOf(other) + todoAt("20260411T120000")), "20260411T100000Z");
  EXPECT_EQ(dueOf(zoneOf(observance("STANDARD", "19700101T000000", "+053000", "+053015")) +
                  todoAt("20261201T120000")),
            "20261201T062945Z");
}

TEST(TimeZone, UnusableDefinitionIsThatOfTheSystem) {
  for (const QByteArray& definition :
       {QByteArray(), observance("STANDARD", "soon", "+0100", "+0100"),
        observance("STANDARD", "19700101T000000", "+0100", "one hour"),
        observance("STANDARD", "19700101T000000", "+0100", "+2400"),
        observance("STANDARD", "19700101T000000", "+0100", "+0100", "RRULE:FREQ=SECONDLY\r\n"),
        observance("STANDARD", "19700101T000000", "+0100", "+0100", "RRULE:FREQ=SOMETIMES\r\n")})
    EXPECT_EQ(dueOf(zoneOf(definition, "Asia/Tokyo") + todoAt("20261201T120000", "Asia/Tokyo")),
              "20261201T030000Z")
        << definition.toStdString();
}

TEST(TimeZone, SystemKnowsNames) {
  for (const char* id :
       {"Asia/Tokyo", "/freeassociation.sourceforge.net/Asia/Tokyo",
        "/example.org/2026a/Asia/Tokyo", "/example.org/Tzfile/Asia/Tokyo", "Tokyo Standard Time"})
    EXPECT_EQ(dueOf(todoAt("20261201T120000", id)), "20261201T030000Z") << id;
  EXPECT_EQ(dueOf(todoAt("20261201T120000", "America/Argentina/Salta")), "20261201T150000Z");
  EXPECT_EQ(dueOf(todoAt("20261201T120000", "/example.org/America/Argentina/Salta")),
            "20261201T150000Z");
  EXPECT_EQ(dueOf(todoAt("20261201T120000", "UTC")), "20261201T120000Z");
  EXPECT_EQ(dueOf(todoAt("20260701T120000", "America/New_York")), "20260701T160000Z");
  EXPECT_EQ(dueOf(todoAt("20370701T120000", "America/New_York")), "20370701T160000Z");
  EXPECT_EQ(dueOf(todoAt("19710701T120000", "America/New_York")), "19710701T160000Z");
}

TEST(TimeZone, UnknownNamesAreLocalTime) {
  for (const QByteArray& id :
       {QByteArray("Mars/Olympus"), QByteArray("../../../etc/passwd"), QByteArray("/"),
        QByteArray("Asia/../Asia/Tokyo"), "x/" + QByteArray(200, 'x')}) {
    EXPECT_EQ(dueOf(todoAt("20261201T120000", id)), "20261201T110000Z") << id.toStdString();
    EXPECT_NE(problemsOf(calendarOf(todoAt("20261201T120000", id))).find("is not known"),
              std::string::npos);
  }
}

TEST(TimeZone, WorkForDefinitionsIsLimited) {
  // DTSTART is a change, too.
  const auto isComputed = [](std::size_t changes) {
    QByteArray dates = "RDATE:20260101T000000";
    dates += QByteArray(",20260101T000000").repeated(static_cast<qsizetype>(changes - 2));
    const QByteArray text =
        zoneOf(observance("STANDARD", "19700101T000000", "+0300", "+0300", dates + "\r\n"));
    std::size_t work = ulo::zoneWorkLimit;
    return ulo::ZoneRules::ofComponent(
               std::string_view(text.constData(), static_cast<std::size_t>(text.size())), work) !=
           nullptr;
  };
  EXPECT_TRUE(isComputed(ulo::zoneWorkLimit - 1));
  EXPECT_TRUE(isComputed(ulo::zoneWorkLimit));
  EXPECT_FALSE(isComputed(ulo::zoneWorkLimit + 1));
}

TEST(TimeZone, WorkForRulesIsLimited) {
  const auto isComputed = [](std::size_t work) {
    // libical with 32-bit times computes no dates after 2037.
    const QByteArray text =
        zoneOf(observance("STANDARD", "20360101T000000", "+0300", "+0300",
                          "RRULE:FREQ=YEARLY;BYMONTH=2;UNTIL=20361231T000000Z\r\n"));
    return ulo::ZoneRules::ofComponent(
               std::string_view(text.constData(), static_cast<std::size_t>(text.size())), work) !=
           nullptr;
  };
  // Two for DTSTART and the date in 2036.
  EXPECT_TRUE(isComputed(ulo::yearlyRuleWork + 3));
  EXPECT_TRUE(isComputed(ulo::yearlyRuleWork + 2));
  EXPECT_FALSE(isComputed(ulo::yearlyRuleWork));
}

TEST(TimeZone, LookUpsOfNamesAreLimited) {
  constexpr int most = static_cast<int>(ulo::zoneWorkLimit / ulo::systemZoneWork);
  const auto isFound = [](int unknown) {
    QByteArray todos;
    for (int i = 0; i < unknown; ++i)
      todos += todoAt("20261201T120000", "Unknown/" + QByteArray::number(i));
    const TASK_ENG_Ical calendar(calendarOf(todos + todoAt("20261201T120000", "Asia/Tokyo")));
    static_cast<void>(calendar.report());
    return dateText(calendar.task(unknown), Task::TASK_FIELD_DUE) == "20261201T030000Z";
  };
  EXPECT_TRUE(isFound(most - 2));
  EXPECT_TRUE(isFound(most - 1));
  EXPECT_FALSE(isFound(most));
}

TEST(TimeZone, DurationHasSoManyDigits) {
  EXPECT_EQ(ulo::parseDuration("-PT9999999S")->seconds, -9999999);
  EXPECT_EQ(ulo::parseDuration("PT99999999S")->seconds, 99999999);
  EXPECT_FALSE(ulo::parseDuration("PT999999999S"));
  EXPECT_EQ(ulo::parseDuration("+p1dt2h")->seconds, 7200);
  EXPECT_EQ(ulo::parseDuration("P2W3D")->days, 17);
  EXPECT_EQ(ulo::parseDuration("P3D2W")->days, 0);
  for (const char* text :
       {"", "-", "P", "PT", "1D", "P1", "P1H", "PT1D", "P1D1D", "P-1D", "P1DT1D"})
    EXPECT_FALSE(ulo::parseDuration(text)) << text;
}

// A program that lets libical abort on errors is not aborted by a text.
TEST(TimeZone, ErrorsOfTheLibraryDoNotAbort) {
  icalerror_set_errors_are_fatal(1);
  const QByteArray repeating =
      todoOf({"DTSTART:2026", "DUE:20261201T120000Z", "RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30"});
  EXPECT_EQ(TASK_ENG_Ical(repeating).moveToNextDate(0), TASK_ENG_Ical::notComputed);
  EXPECT_EQ(dateText(TASK_ENG_Ical(repeating).task(0), Task::TASK_FIELD_DUE), "20261201T120000Z");
  icalerror_set_errors_are_fatal(0);
  EXPECT_EQ(TASK_ENG_Ical(repeating).moveToNextDate(0), TASK_ENG_Ical::notComputed);
}

// Threads with texts of their own read what a single one reads.
TEST(TimeZone, ThreadsReadAlike) {
  QByteArray text;
  for (const char* id : {"Asia/Tokyo", "Zone", "Tokyo Standard Time", "America/New_York"})
    text += todoAt("20261201T120000\r\nRRULE:FREQ=MONTHLY;BYDAY=-1SU", id);
  text = calendarOf(zoneOf(rules) + text);
  const auto read = [&text] {
    std::string result;
    TASK_ENG_Ical calendar(text);
    for (int i = 0; i < calendar.count(); ++i) {
      EXPECT_EQ(calendar.moveToNextDate(i), TASK_ENG_Ical::moved);
      result += dateText(calendar.task(i), Task::TASK_FIELD_DUE) + " ";
    }
    return result;
  };
  EXPECT_EQ(read(), "20261227T030000Z 20261227T130000Z 20261227T030000Z 20261227T170000Z ");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&read] {
      for (int turn = 0; turn < 50; ++turn)
        EXPECT_EQ(read(), "20261227T030000Z 20261227T130000Z 20261227T030000Z 20261227T170000Z ");
    });
  for (std::thread& thread : threads)
    thread.join();
}

}  // namespace
