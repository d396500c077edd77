#include "todo_text.h"

#include "TASK_ENG_Ical.h"
#include "utc_zone.h"

#include <gtest/gtest.h>

#include <string>

namespace {

QByteArray todo(const std::string& lines) {
  return QByteArray::fromStdString("BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n");
}
QByteArray calendar(const QByteArray& content) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + content + "END:VCALENDAR\r\n";
}
// A calendar with one to-do with these lines after its UID.
QByteArray state(const std::string& lines) {
  return calendar(todo("UID:a\r\n" + lines));
}
const std::string early = "LAST-MODIFIED:20260101T000000Z\r\n";
const std::string late = "LAST-MODIFIED:20260102T000000Z\r\n";

TEST(WithUid, ReplacesUidOfTodoAndOverrides) {
  const std::string alarm = "BEGIN:VALARM\r\nUID:alarm\r\nEND:VALARM\r\n";
  const auto text = [&](const std::string& uid) {
    return calendar(todo(uid + "SUMMARY:a\r\n" + alarm) +
                    todo("SUMMARY:b\r\n" + uid + "RECURRENCE-ID:20260101\r\n"));
  };
  EXPECT_EQ(ulo::withUid(text("UID:old\r\n"), "new"), text("UID:new\r\n"));
  EXPECT_EQ(ulo::withUid(calendar(todo("SUMMARY:a\r\n")), "a;b,c"),
            calendar(todo("UID:a\\;b\\,c\r\nSUMMARY:a\r\n")));
}

TEST(SameTodos, ComparesOnlyTodos) {
  const QByteArray one = calendar(todo("UID:a\r\nSUMMARY:a\r\n"));
  EXPECT_TRUE(ulo::hasSameTodos(one, one));
  EXPECT_TRUE(
      ulo::hasSameTodos(one, QByteArray(one).replace("VERSION:2.0", "PRODID:x\r\nVERSION:2.0")));
  EXPECT_FALSE(ulo::hasSameTodos(one, QByteArray(one).replace("SUMMARY:a", "SUMMARY:b")));
  EXPECT_FALSE(
      ulo::hasSameTodos(one, calendar(todo("UID:a\r\nSUMMARY:a\r\n") + todo("UID:b\r\n"))));
  EXPECT_FALSE(ulo::hasSameTodos(calendar(""), "no calendar"));
}

TEST(Repetition, IsDescribed) {
  const auto repetition = [](const std::string& rule) {
    return ulo::englishText(ulo::repetitionOf(state("DTSTART:20260101T100000Z\r\n" + rule)))
        .toStdString();
  };
  EXPECT_EQ(repetition(""), "");
  EXPECT_EQ(repetition("RRULE:FREQ=DAILY\r\n"), "every day");
  EXPECT_EQ(repetition("RRULE:INTERVAL=3;FREQ=MONTHLY\r\n"), "every 3 months");
  EXPECT_EQ(repetition("RRULE:FREQ=WEEKLY;BYDAY=MO\r\n"), "every week (FREQ=WEEKLY;BYDAY=MO)");
  EXPECT_EQ(repetition("RRULE:FREQ=SOMETIMES\r\n"), "FREQ=SOMETIMES");
  EXPECT_EQ(repetition("RDATE:20260201T100000Z\r\n"), "on several dates");
  EXPECT_EQ(ulo::repetitionOf("no calendar").unit, ulo::Repetition::Unit::none);
}

TEST(AlarmForDue, FollowsOnlyDueDate) {
  const auto hour = [](const std::string& lines, const std::string& trigger) {
    const QByteArray text =
        state(lines + "BEGIN:VALARM\r\nTRIGGER" + trigger + "\r\nEND:VALARM\r\n");
    const QDateTime due(QDate(2026, 3, 2), QTime(12, 0), ulo::utcZone);
    const QDateTime alarm = ulo::alarmForDue(text, due).toUTC();
    return alarm.date().day() * 100 + alarm.time().hour();
  };
  const std::string due = "DUE:20260301T100000Z\r\n";
  const std::string start = "DTSTART:20260301T090000Z\r\n";
  EXPECT_EQ(hour(due, ":-PT1H"), 211);
  EXPECT_EQ(hour(due, ";VALUE=DATE-TIME:20260301T080000Z"), 108);
  EXPECT_EQ(hour(start + due, ":-PT1H"), 108);
  EXPECT_EQ(hour(start + due, ";RELATED=END:-PT1H"), 211);
  EXPECT_EQ(hour(start + "DURATION:PT1H\r\n", ";RELATED=END:-PT1H"), 211);
}

// The clock changes to summer time on March 28.
TEST(AlarmForDue, CountsDaysInFormOfDueDate) {
  const auto alarm = [](const std::string& lines, const QDateTime& due) {
    const QByteArray text =
        state(lines + "BEGIN:VALARM\r\nTRIGGER;RELATED=END:-P1D\r\nEND:VALARM\r\n");
    return ulo::alarmForDue(text, due).toUTC().toString("yyyyMMdd HHmm").toStdString();
  };
  const QDateTime sunday(QDate(2027, 3, 28), QTime(16, 0), ulo::utcZone);
  EXPECT_EQ(alarm("DUE;TZID=Europe/Berlin:20270320T180000\r\n", sunday), "20270327 1700");
  EXPECT_EQ(alarm("DTSTART;TZID=Europe/Berlin:20270319T180000\r\nDURATION:P1D\r\n", sunday),
            "20270327 1700");
  EXPECT_EQ(alarm("DUE:20270320T170000Z\r\n", sunday), "20270327 1600");
  const QDateTime monday(QDate(2027, 3, 28), QTime(22, 0), ulo::utcZone);
  EXPECT_EQ(alarm("DUE;VALUE=DATE:20270320\r\n", monday), "20270327 2300");
}

TEST(Merge, EqualTextsStay) {
  const QByteArray text = state(early + "SUMMARY:a\r\nX-A:1\r\n");
  EXPECT_EQ(ulo::mergedTodo(text, text), text);
}

TEST(Merge, LaterStateWinsInEitherOrder) {
  const QByteArray before = state(early + "SUMMARY:old\r\nPRIORITY:1\r\n");
  const QByteArray after = state(late + "SUMMARY:new\r\nPRIORITY:2\r\n");
  EXPECT_EQ(ulo::mergedTodo(before, after), after);
  EXPECT_EQ(ulo::mergedTodo(after, before), after);
}

TEST(Merge, FirstStateWinsIfTimesDoNotDecide) {
  const QByteArray dated = state(early + "SUMMARY:dated\r\n");
  const QByteArray other = state(early + "SUMMARY:other\r\n");
  const QByteArray undated = state("SUMMARY:undated\r\n");
  EXPECT_EQ(ulo::mergedTodo(dated, other), dated);
  EXPECT_EQ(ulo::mergedTodo(other, dated), other);
  EXPECT_EQ(ulo::mergedTodo(undated, dated), undated);
  EXPECT_EQ(ulo::mergedTodo(undated, state("SUMMARY:x\r\n")), undated);
}

TEST(Merge, HigherSequenceWinsIfOneTimeIsUnknown) {
  const QByteArray before = state("SEQUENCE:2\r\nSUMMARY:old\r\n");
  const QByteArray after = state("SEQUENCE:5\r\nSUMMARY:new\r\n");
  const QByteArray dated = state(late + "SEQUENCE:2\r\nSUMMARY:old\r\n");
  for (const QByteArray& older : {before, dated}) {
    EXPECT_EQ(ulo::mergedTodo(older, after), after);
    EXPECT_EQ(ulo::mergedTodo(after, older), after);
  }
}

TEST(Merge, AddsWhatOnlyEarlierStateHas) {
  const QByteArray merged =
      ulo::mergedTodo(state(early + "SUMMARY:a\r\nDESCRIPTION:note\r\nX-OLD:1\r\nATTACH:one\r\n"
                                    "DUE:20260301T100000Z\r\n"),
                      state(late + "SUMMARY:b\r\nX-NEW:2\r\nATTACH:two\r\n"));
  EXPECT_EQ(merged, state(late + "SUMMARY:b\r\nX-NEW:2\r\nATTACH:two\r\nDESCRIPTION:note\r\n"
                                 "X-OLD:1\r\nATTACH:one\r\nDUE:20260301T100000Z\r\n"));
}

TEST(Merge, TakesStateOfCompletionAsWhole) {
  EXPECT_EQ(ulo::mergedTodo(state(early + "STATUS:COMPLETED\r\nCOMPLETED:20260101T000000Z\r\n"
                                          "PERCENT-COMPLETE:100\r\n"),
                            state(late + "STATUS:NEEDS-ACTION\r\n")),
            state(late + "STATUS:NEEDS-ACTION\r\n"));
  EXPECT_EQ(ulo::mergedTodo(state(early + "DUE:20260301T100000Z\r\n"),
                            state(late + "DTSTART:20260301T100000Z\r\nDURATION:PT1H\r\n")),
            state(late + "DTSTART:20260301T100000Z\r\nDURATION:PT1H\r\n"));
}

TEST(Merge, TakesDatesAsWhole) {
  EXPECT_EQ(ulo::mergedTodo(state(early + "DTSTART:20270424T100000Z\r\n"),
                            state(late + "DUE;VALUE=DATE:20270301\r\n")),
            state(late + "DUE;VALUE=DATE:20270301\r\n"));
  EXPECT_EQ(ulo::mergedTodo(state(early + "DTSTART:20270424T100000Z\r\nDURATION:PT1H\r\n"),
                            state(late + "DTSTART;VALUE=DATE:20270301\r\n")),
            state(late + "DTSTART;VALUE=DATE:20270301\r\n"));
  EXPECT_EQ(
      ulo::mergedTodo(state(early + "DTSTART:20270424T100000Z\r\nDURATION:PT1H\r\n"), state(late)),
      state(late + "DTSTART:20270424T100000Z\r\nDURATION:PT1H\r\n"));
}

TEST(Merge, JoinsCategoriesInOneLine) {
  EXPECT_EQ(ulo::mergedTodo(state(early + "CATEGORIES:home,a\\,b\r\nCATEGORIES:garden\r\n"),
                            state(late + "CATEGORIES:work,home\r\n")),
            state(late + "CATEGORIES:work,home,a\\,b,garden\r\n"));
}

TEST(Merge, KeepsHigherSequence) {
  EXPECT_EQ(ulo::mergedTodo(state(early + "SEQUENCE:7\r\n"), state(late + "SEQUENCE:2\r\n")),
            state(late + "SEQUENCE:7\r\n"));
  EXPECT_EQ(ulo::mergedTodo(state(early + "SEQUENCE:7\r\n"), state(late)),
            state(late + "SEQUENCE:7\r\n"));
  EXPECT_EQ(ulo::mergedTodo(state(early), state(late + "SEQUENCE:2\r\n")),
            state(late + "SEQUENCE:2\r\n"));
}

TEST(Merge, KeepsFirstAlarmOfLaterStateAndFurtherOnesOfBoth) {
  const auto alarm = [](const std::string& trigger) {
    return "BEGIN:VALARM\r\nTRIGGER:" + trigger + "\r\nEND:VALARM\r\n";
  };
  EXPECT_EQ(
      ulo::mergedTodo(state(early + alarm("-PT1H") + alarm("-PT2H")), state(late + alarm("-PT5M"))),
      state(late + alarm("-PT5M") + alarm("-PT2H")));
  EXPECT_EQ(ulo::mergedTodo(state(early + alarm("-PT1H")), state(late)),
            state(late + alarm("-PT1H")));
}

QByteArray zoneHere(const QByteArray& offset, const QByteArray& name = "Here") {
  return "BEGIN:VTIMEZONE\r\nTZID:" + name +
         "\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:" + offset +
         "\r\nTZOFFSETTO:" + offset + "\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
}

TEST(Merge, KeepsDifferentZonesOfOneName) {
  const QByteArray due = "DUE;TZID=Here:20270301T120000\r\n";
  const QByteArray override = "UID:a\r\nRECURRENCE-ID;TZID=Here:20270308T120000\r\n";
  const auto text = [&](const QByteArray& zone, const std::string& lines, const QByteArray& more) {
    return calendar(zone + todo("UID:a\r\n" + lines + due.toStdString()) +
                    todo(override.toStdString() + more.toStdString()));
  };
  const QByteArray first = text(zoneHere("+0100"), late, "");
  // Without a use of the other zone, it is left out. The override is the same one.
  EXPECT_EQ(ulo::mergedTodo(first, text(zoneHere("-0800"), early, "")), first);
  const QByteArray other = text(zoneHere("-0800"), early, due);
  const QByteArray merged = ulo::mergedTodo(first, other);
  EXPECT_EQ(merged.toStdString(),
            calendar(zoneHere("+0100") + todo("UID:a\r\n" + late + due.toStdString()) +
                     todo(override.toStdString() + "DUE;TZID=Here 2:20270301T120000\r\n") +
                     zoneHere("-0800", "Here 2"))
                .toStdString());
  EXPECT_EQ(ulo::mergedTodo(merged, other), merged);
}

TEST(Merge, RecognizesOverrideWhoseZoneWasRenamed) {
  const std::string due = "DUE;TZID=Here:20270301T120000\r\n";
  const QByteArray first = calendar(zoneHere("+0100") + todo("UID:a\r\n" + late + due));
  const QByteArray other =
      calendar(zoneHere("-0800") + todo("UID:a\r\n" + early + due) +
               todo("UID:a\r\nRECURRENCE-ID;TZID=Here:20270308T120000\r\nSUMMARY:b\r\n"));
  const QByteArray merged = ulo::mergedTodo(first, other);
  EXPECT_TRUE(merged.contains("RECURRENCE-ID;TZID=Here 2:")) << merged.toStdString();
  EXPECT_EQ(ulo::mergedTodo(merged, other), merged);
}

TEST(Merge, AddsOverridesAndTheirZones) {
  const QByteArray zone = zoneHere("+0100");
  const QByteArray exception =
      todo("UID:a\r\nRECURRENCE-ID:20260102\r\nDUE;TZID=Here:20260103T100000\r\n");
  const QByteArray merged =
      ulo::mergedTodo(calendar(zone + todo("UID:a\r\n" + early) + exception), state(late));
  EXPECT_TRUE(merged.contains(exception)) << merged.toStdString();
  EXPECT_TRUE(merged.contains(zone)) << merged.toStdString();
  EXPECT_EQ(merged.count("BEGIN:VCALENDAR"), 1);
  EXPECT_EQ(TASK_ENG_Ical(merged).count(), 1);
  EXPECT_EQ(ulo::mergedTodo(merged, state(late)), merged);
}

}  // namespace
