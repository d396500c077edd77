// Moving repeating to-dos to their next date.
#include "berlin_time.h"
#include "ical_text.h"
#include "recurrence_rule.h"
#include "test_clock.h"
#include "wall_time.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;

const std::string movedStamps = "+DTSTAMP:20261120T120000Z\n+LAST-MODIFIED:20261120T120000Z\n"
                                "+SEQUENCE:1\n";

class IcalRecurrence : public testing::Test {
protected:
  IcalRecurrence() { setEngineNow(UTIL_TimeConversion::fromISO8601(QCString("20261120T120000Z"))); }
  ~IcalRecurrence() override { setEngineNow(QDateTime()); }

  // What moving a to-do with these lines changes, without `movedStamps`; or why it does not move.
  static std::string moved(std::initializer_list<QByteArray> lines) {
    const QByteArray text = todoOf(lines);
    TASK_ENG_Ical calendar(text);
    const TASK_ENG_Ical::NextDate result = calendar.moveToNextDate(0);
    std::string changes = differenceOf(text, calendar.text());
    if (result != TASK_ENG_Ical::moved) {
      EXPECT_EQ(changes, "");
      return result == TASK_ENG_Ical::noRule     ? "no rule"
             : result == TASK_ENG_Ical::lastDate ? "last date"
                                                 : "not computed";
    }
    const std::size_t place = changes.find(movedStamps);
    EXPECT_NE(place, std::string::npos) << changes;
    return changes.erase(place, movedStamps.size());
  }
  // The dates of a to-do that starts with this line, one move after the other.
  static std::string series(std::initializer_list<QByteArray> lines) {
    TASK_ENG_Ical calendar(todoOf(lines));
    std::string result;
    for (int i = 0; i < 12; ++i) {
      const TASK_ENG_Ical::NextDate step = calendar.moveToNextDate(0);
      if (step != TASK_ENG_Ical::moved)
        return result + (step == TASK_ENG_Ical::lastDate ? "end" : "not computed");
      const QByteArray text = calendar.text(0);
      const qsizetype start = text.indexOf(":", text.indexOf("DTSTART")) + 1;
      result += text.mid(start, text.indexOf("\r\n", start) - start).toStdString() + " ";
    }
    return result + "...";
  }
};

TEST_F(IcalRecurrence, MovesStartAndDueOnTheClock) {
  EXPECT_EQ(moved({"DTSTART;TZID=Europe/Berlin;X-A=b:20261024T090000",
                   "DUE;TZID=Europe/Berlin:20261024T170000", "RRULE:FREQ=DAILY"}),
            "-DTSTART;TZID=Europe/Berlin;X-A=b:20261024T090000\n"
            "-DUE;TZID=Europe/Berlin:20261024T170000\n"
            "+DTSTART;TZID=Europe/Berlin;X-A=b:20261025T090000\n"
            "+DUE;TZID=Europe/Berlin:20261025T170000\n");
  // In different forms, by the same time.
  EXPECT_EQ(moved({"DTSTART;TZID=Europe/Berlin:20261024T090000", "DUE:20261024T150000Z",
                   "RRULE:FREQ=DAILY"}),
            "-DTSTART;TZID=Europe/Berlin:20261024T090000\n-DUE:20261024T150000Z\n"
            "+DTSTART;TZID=Europe/Berlin:20261025T090000\n+DUE:20261025T160000Z\n");
}

TEST_F(IcalRecurrence, MovesDueWithoutStart) {
  EXPECT_EQ(moved({"DUE;VALUE=DATE:20261130", "RRULE:FREQ=MONTHLY;BYMONTHDAY=-1"}),
            "-DUE;VALUE=DATE:20261130\n+DUE;VALUE=DATE:20261231\n");
}

TEST_F(IcalRecurrence, KeepsDuration) {
  EXPECT_EQ(moved({"DTSTART:20261130T100000Z", "DURATION:P1D", "RRULE:FREQ=WEEKLY"}),
            "-DTSTART:20261130T100000Z\n+DTSTART:20261207T100000Z\n");
}

TEST_F(IcalRecurrence, NextDateIsNotPartlyDone) {
  EXPECT_EQ(moved({"DUE:20261130T100000Z", "RRULE:FREQ=WEEKLY", "STATUS:NEEDS-ACTION",
                   "PERCENT-COMPLETE;X-A=b:50"}),
            "-DUE:20261130T100000Z\n+DUE:20261207T100000Z\n-PERCENT-COMPLETE;X-A=b:50\n"
            "+PERCENT-COMPLETE;X-A=b:0\n");
  EXPECT_EQ(moved({"DUE:20261130T100000Z", "RRULE:FREQ=WEEKLY", "STATUS:IN-PROCESS",
                   "PERCENT-COMPLETE:50"}),
            "-DUE:20261130T100000Z\n+DUE:20261207T100000Z\n-STATUS:IN-PROCESS\n"
            "-PERCENT-COMPLETE:50\n+STATUS:NEEDS-ACTION\n+PERCENT-COMPLETE:0\n");
  EXPECT_EQ(moved({"DUE:20261130T100000Z", "RRULE:FREQ=WEEKLY", "COMPLETED:20261129T100000Z",
                   "PERCENT-COMPLETE:100"}),
            "-DUE:20261130T100000Z\n+DUE:20261207T100000Z\n-COMPLETED:20261129T100000Z\n"
            "-PERCENT-COMPLETE:100\n+PERCENT-COMPLETE:0\n");
  EXPECT_EQ(moved({"DUE:20261130T100000Z", "RRULE:FREQ=WEEKLY", "STATUS:odd"}),
            "-DUE:20261130T100000Z\n+DUE:20261207T100000Z\n");
}

// A record that was reopened and moved does not differ from the moved text.
TEST_F(IcalRecurrence, ChangesSequenceOnce) {
  for (const char* status : {"STATUS:NEEDS-ACTION", "STATUS:IN-PROCESS", "STATUS:COMPLETED"}) {
    TASK_ENG_Ical calendar(
        todoOf({"DUE:20261130T100000Z", "RRULE:FREQ=WEEKLY", status, "PERCENT-COMPLETE:50",
                "COMPLETED:20261129T100000Z", "SEQUENCE:4"}));
    Task task = calendar.task(0);
    EXPECT_EQ(calendar.moveToNextDate(0), TASK_ENG_Ical::moved);
    task.setStatus(1);
    task.setDateTime(Task::TASK_FIELD_END, Task::noDate());
    task.setDateTime(Task::TASK_FIELD_DUE, calendar.task(0).getDateTime(Task::TASK_FIELD_DUE));
    EXPECT_FALSE(calendar.replace(0, task)) << status;
    EXPECT_TRUE(calendar.text().contains("\r\nSEQUENCE:5\r\n")) << status;
  }
}

TEST_F(IcalRecurrence, CountsDown) {
  EXPECT_EQ(moved({"DTSTART:20261130T100000Z", "rrule;X-A=b:freq=WEEKLY;count=3;WKST=SU"}),
            "-DTSTART:20261130T100000Z\n-rrule;X-A=b:freq=WEEKLY;count=3;WKST=SU\n"
            "+DTSTART:20261207T100000Z\n+rrule;X-A=b:freq=WEEKLY;count=2;WKST=SU\n");
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY;COUNT=3"}),
            "20261201T100000Z 20261202T100000Z end");
  // Dates that are taken out count.
  EXPECT_EQ(
      series({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY;COUNT=4", "EXDATE:20261201T100000Z"}),
      "20261202T100000Z 20261203T100000Z end");
}

TEST_F(IcalRecurrence, EndsWithUntil) {
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY;UNTIL=20261202T100000Z"}),
            "20261201T100000Z 20261202T100000Z end");
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY;UNTIL=20261202T095959Z"}),
            "20261201T100000Z end");
  EXPECT_EQ(series({"DTSTART;VALUE=DATE:20261130", "RRULE:FREQ=DAILY;UNTIL=20261201"}),
            "20261201 end");
  // The end is in UTC, the dates are not.
  EXPECT_EQ(series({"DTSTART:20261130T000000", "RRULE:FREQ=DAILY;UNTIL=20261130T230000Z"}),
            "20261201T000000 end");
}

TEST_F(IcalRecurrence, LeavesOutExceptions) {
  EXPECT_EQ(series({"DTSTART;TZID=Europe/Berlin:20261130T100000", "RRULE:FREQ=DAILY;COUNT=6",
                    "EXDATE;TZID=Europe/Berlin:20261201T100000,20261203T100000",
                    "EXDATE:20261202T090000Z", "EXDATE;VALUE=DATE:20261204"}),
            "20261205T100000 end");
}

TEST_F(IcalRecurrence, UsesAdditionalDates) {
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RDATE:20270105T100000Z,20261205T100000Z",
                    "RDATE;VALUE=PERIOD:20261210T100000Z/PT1H"}),
            "20261205T100000Z 20261210T100000Z 20270105T100000Z end");
  EXPECT_EQ(series({"DTSTART;VALUE=DATE:20261130", "RDATE;VALUE=DATE:20261205", "EXDATE:20261205"}),
            "end");
  // The rule does not depend on the date on which it starts.
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RRULE:FREQ=WEEKLY;BYDAY=MO;UNTIL=20261208T000000Z",
                    "RDATE:20261202T100000Z"}),
            "20261202T100000Z 20261207T100000Z end");
  // This one would change.
  EXPECT_EQ(series({"DTSTART:20261130T100000Z", "RRULE:FREQ=WEEKLY", "RDATE:20261202T100000Z"}),
            "not computed");
}

TEST_F(IcalRecurrence, FollowsRules) {
  EXPECT_EQ(series({"DTSTART:20260131T100000", "RRULE:FREQ=MONTHLY;COUNT=4"}),
            "20260331T100000 20260531T100000 20260731T100000 end");
  EXPECT_EQ(series({"DTSTART:20261130T100000", "RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,FR;COUNT=4"}),
            "20261204T100000 20261214T100000 20261218T100000 end");
  EXPECT_EQ(series({"DTSTART:20240229T100000", "RRULE:FREQ=YEARLY;COUNT=3"}),
            "20280229T100000 20320229T100000 end");
  EXPECT_EQ(series({"DTSTART:20261101T080000", "RRULE:FREQ=HOURLY;INTERVAL=10;COUNT=3"}),
            "20261101T180000 20261102T040000 end");
}

TEST_F(IcalRecurrence, MovesAlarms) {
  EXPECT_EQ(moved({"DTSTART;TZID=Europe/Berlin:20261024T090000", "RRULE:FREQ=DAILY", "BEGIN:VALARM",
                   "TRIGGER:-PT15M", "END:VALARM", "BEGIN:VALARM",
                   "TRIGGER;VALUE=DATE-TIME:20261024T060000Z", "END:VALARM"}),
            "-DTSTART;TZID=Europe/Berlin:20261024T090000\n"
            "+DTSTART;TZID=Europe/Berlin:20261025T090000\n"
            "-TRIGGER;VALUE=DATE-TIME:20261024T060000Z\n"
            "+TRIGGER;VALUE=DATE-TIME:20261025T070000Z\n");
}

TEST_F(IcalRecurrence, DoesNotMoveWhatItCannotCompute) {
  EXPECT_EQ(moved({"DTSTART:20261130T100000Z"}), "no rule");
  EXPECT_EQ(moved({"RRULE:FREQ=DAILY"}), "not computed");
  EXPECT_EQ(moved({"DTSTART:soon", "RRULE:FREQ=DAILY"}), "not computed");
  for (const char* rule : {"",
                           "FREQ=OFTEN",
                           "INTERVAL=2",
                           "FREQ=DAILY;INTERVAL=0",
                           "FREQ=DAILY;INTERVAL=32768",
                           "FREQ=DAILY;COUNT=0",
                           "FREQ=DAILY;UNTIL=soon",
                           "FREQ=DAILY;BYMONTH=13",
                           "FREQ=DAILY;X-A=b",
                           "FREQ=DAILY;FREQ=DAILY",
                           "FREQ=DAILY;BYMONTH=",
                           "FREQ=WEEKLY;BYDAY=0MO",
                           "FREQ=WEEKLY;BYDAY=XX",
                           "RSCALE=CHINESE;FREQ=YEARLY",
                           "FREQ=HOURLY;BYHOUR=12",
                           "FREQ=MONTHLY;BYMONTHDAY=-2147483648",
                           "FREQ=MONTHLY;BYMONTHDAY=32",
                           "FREQ=MONTHLY;BYMONTHDAY=0",
                           "FREQ=DAILY;BYHOUR=-1",
                           "FREQ=WEEKLY;BYDAY=MO,TU;BYSETPOS=-1",
                           "FREQ=DAILY;COUNT=99999999999"})
    EXPECT_EQ(moved({"DTSTART:20261130T100000Z", QByteArray("RRULE:") + rule}), "not computed")
        << rule;
  EXPECT_EQ(moved({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY", "RRULE:FREQ=WEEKLY"}),
            "not computed");
  EXPECT_EQ(moved({"DTSTART:20261130T100000Z", "RRULE:FREQ=DAILY", "EXRULE:FREQ=WEEKLY"}),
            "not computed");
}

TEST_F(IcalRecurrence, RulesWithoutDatesEnd) {
  for (const char* rule :
       {"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=MONTHLY;BYMONTH=2;BYMONTHDAY=30",
        "FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30", "FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30",
        "FREQ=MINUTELY;BYMONTH=2;BYMONTHDAY=30", "FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=30",
        "FREQ=SECONDLY;INTERVAL=32767;BYMONTH=2;BYMONTHDAY=30"})
    EXPECT_EQ(moved({"DTSTART:20261130T100000Z", QByteArray("RRULE:") + rule}), "not computed")
        << rule;
}

TEST_F(IcalRecurrence, SearchesOnlySoManySteps) {
  constexpr std::int64_t hour = 3600;
  const std::int64_t leapDay = ulo::wallOf(QDate(1972, 2, 29));
  const ulo::RecurrenceRule rule = ulo::parseRule("FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=29").value();
  // Whether the leap day is found from so many hours before.
  const auto isFound = [&](int steps) {
    return ulo::RuleDates(rule, leapDay - steps * hour).next() == leapDay;
  };
  EXPECT_TRUE(isFound(ulo::ruleStepLimit - 1));
  EXPECT_TRUE(isFound(ulo::ruleStepLimit));
  EXPECT_FALSE(isFound(ulo::ruleStepLimit + 1));
}

TEST_F(IcalRecurrence, KnowsWhatRepeats) {
  EXPECT_TRUE(TASK_ENG_Ical(todoOf({"rrule:FREQ=DAILY"})).repeats(0));
  EXPECT_TRUE(TASK_ENG_Ical(todoOf({"RDATE:20261130"})).repeats(0));
  EXPECT_FALSE(TASK_ENG_Ical(todoOf({"BEGIN:X-A", "RRULE:FREQ=DAILY", "END:X-A"})).repeats(0));
}

}  // namespace
