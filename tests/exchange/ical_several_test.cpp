// Calendars with several to-dos, overrides and time zones.
#include "berlin_time.h"
#include "ical_text.h"
#include "test_clock.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;

QByteArray todoWithUid(const QByteArray& uid, const QByteArray& lines = {}) {
  return "BEGIN:VTODO\r\nUID:" + uid + "\r\n" + lines + "END:VTODO\r\n";
}
QByteArray overrideOf(const QByteArray& uid, const QByteArray& lines = {}) {
  return todoWithUid(uid, "RECURRENCE-ID:20261202T100000Z\r\n" + lines);
}
QByteArray zone(const QByteArray& id, const QByteArray& offset = "+0300") {
  return "BEGIN:VTIMEZONE\r\nTZID:" + id +
         "\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:" + offset +
         "\r\nTZOFFSETTO:" + offset + "\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
}
const QByteArray event = "BEGIN:VEVENT\r\nSUMMARY:e\r\nEND:VEVENT\r\n";

std::string uid(const TASK_ENG_Ical& calendar, int todo) {
  return calendar.task(todo).getString(Task::TASK_FIELD_UUID).toStdString();
}

TEST(IcalSeveral, CountsComponents) {
  const TASK_ENG_Ical calendar(
      calendarOf(zone("A") + event + todoWithUid("1") + event + todoWithUid("2")));
  EXPECT_EQ(calendar.count(), 2);
  EXPECT_EQ(calendar.report().todos, 2);
  EXPECT_EQ(calendar.report().otherComponents, 2);
  EXPECT_EQ(calendar.report().failure, TASK_ENG_Ical::none);
  EXPECT_EQ(uid(calendar, 1), "2");
}

TEST(IcalSeveral, OverridesBelongToTheirTodo) {
  const TASK_ENG_Ical calendar(calendarOf(
      overrideOf("2", "X-A:1\r\n") + todoWithUid("1") + todoWithUid("2") + overrideOf("3") +
      overrideOf("2", "X-A:2\r\n") + overrideOf("") + todoWithUid("")));
  ASSERT_EQ(calendar.count(), 5);
  EXPECT_EQ(uid(calendar, 0), "1");
  EXPECT_EQ(uid(calendar, 1), "2");
  EXPECT_EQ(uid(calendar, 2), "3") << "an override without its to-do";
  EXPECT_EQ(
      calendar.text(1).toStdString(),
      calendarOf(overrideOf("2", "X-A:1\r\n") + todoWithUid("2") + overrideOf("2", "X-A:2\r\n"))
          .toStdString());
}

TEST(IcalSeveral, TodosWithOneUidAreDifferentOnes) {
  const TASK_ENG_Ical calendar(
      calendarOf(todoWithUid("1", "X-A:1\r\n") + todoWithUid("1", "X-A:2\r\n")));
  EXPECT_EQ(calendar.count(), 2);
}

TEST(IcalSeveral, TextOfOneTodoHasItsTimeZones) {
  const QByteArray text =
      "\xEF\xBB\xBF"
      "begin:vcalendar\nVersion:2.0\nX-WR-CALNAME:\n  list\n" +
      zone("A") + zone("B, \"C\"") + event + "\n" +
      todoWithUid("1", "DUE;TZID=A:20261201T100000\r\n") +
      todoWithUid("2", "DTSTART;VALUE=DATE-TIME\r\n ;TZID=\"B, ^'C^'\":20261201T100000\r\n") +
      "X-LATE:1\nend:vcalendar\nafter\n";
  const TASK_ENG_Ical calendar(text);
  ASSERT_EQ(calendar.count(), 2);
  EXPECT_EQ(calendar.text(0).toStdString(),
            ("begin:vcalendar\nVersion:2.0\nX-WR-CALNAME:\n  list\n" + zone("A") +
             todoWithUid("1", "DUE;TZID=A:20261201T100000\r\n") + "X-LATE:1\nend:vcalendar\n")
                .toStdString());
  EXPECT_TRUE(calendar.text(1).contains(zone("B, \"C\"")));
  EXPECT_FALSE(calendar.text(1).contains(zone("A")));
  EXPECT_EQ(calendar.text(), text);
}

TEST(IcalSeveral, CalendarWithOneTodoIsReturnedWhole) {
  const QByteArray text =
      "\xEF\xBB\xBF\r\n" +
      calendarOf(zone("A") + todoWithUid("1", "DUE;TZID=A:20261201T100000\r\n")) + "\r\nafter";
  EXPECT_EQ(TASK_ENG_Ical(text).text(0), text);
}

TEST(IcalSeveral, ReplacesEachTodoInItsPlace) {
  const QByteArray text =
      calendarOf(todoWithUid("1") + event + todoWithUid("2") + "X-A:b\r\n" + todoWithUid("3"));
  TASK_ENG_Ical calendar(text);
  for (const int i : {2, 0}) {
    Task task = calendar.task(i);
    task.setPriority(i + 1);
    EXPECT_TRUE(calendar.replace(i, task));
    EXPECT_EQ(calendar.task(i).getPriorityValue(), i + 1);
  }
  EXPECT_EQ(calendar.text(1), calendarOf(todoWithUid("2") + "X-A:b\r\n"));
  const TASK_ENG_Ical again(calendar.text());
  EXPECT_EQ(again.task(0).getPriorityValue(), 1);
  EXPECT_EQ(again.task(1).getPriorityValue(), 0);
  EXPECT_EQ(again.task(2).getPriorityValue(), 3);
}

TEST(IcalSeveral, ReadsSeveralCalendars) {
  const QByteArray old =
      "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todoWithUid("x") + "END:VCALENDAR\r\n";
  const QByteArray text = calendarOf(zone("A") + todoWithUid("1")) + "between\r\n" + old +
                          calendarOf(todoWithUid("2", "DUE;TZID=A:20261201T100000\r\n"));
  const TASK_ENG_Ical calendar(text);
  ASSERT_EQ(calendar.count(), 2);
  EXPECT_EQ(calendar.report().otherComponents, 1);
  EXPECT_EQ(calendar.text(0), calendarOf(todoWithUid("1")));
  // A time zone counts in its own calendar.
  EXPECT_EQ(calendar.report().problemCount, 1U);
  EXPECT_EQ(calendar.text(), text);
}

TEST(IcalSeveral, AppendsTodos) {
  TASK_ENG_Ical calendar(calendarOf(todoWithUid("1") + "X-A:b\r\n") + "after");
  Task task;
  task.setString(Task::TASK_FIELD_UUID, "2");
  task.setString(Task::TASK_FIELD_SUMMARY, "new");
  calendar.append(task);
  calendar.append(TASK_ENG_Ical(calendarOf(zone("A") + zone("B") + event + todoWithUid("0") +
                                           todoWithUid("3", "DUE;TZID=A:20261201T100000\r\n") +
                                           overrideOf("3"))),
                  1);
  EXPECT_EQ(calendar.count(), 3);
  EXPECT_EQ(calendar.task(1).getString(Task::TASK_FIELD_SUMMARY), "new");
  EXPECT_EQ(dateText(calendar.task(2), Task::TASK_FIELD_DUE), "20261201T070000Z");
  const QByteArray text = calendar.text();
  EXPECT_TRUE(text.startsWith(calendarOf(todoWithUid("1") + "X-A:b\r\n").chopped(15)));
  EXPECT_TRUE(text.endsWith(zone("A") + todoWithUid("3", "DUE;TZID=A:20261201T100000\r\n") +
                            overrideOf("3") + "END:VCALENDAR\r\nafter"));
  const TASK_ENG_Ical again(text);
  ASSERT_EQ(again.count(), 3);
  EXPECT_EQ(again.text(2), calendar.text(2));
  // Changes of appended to-dos.
  task = calendar.task(2);
  task.setPriority(1);
  EXPECT_TRUE(calendar.replace(2, task));
  EXPECT_EQ(TASK_ENG_Ical(calendar.text()).task(2).getPriorityValue(), 1);
}

TEST(IcalSeveral, AppendsTimeZoneOnce) {
  TASK_ENG_Ical calendar;
  const TASK_ENG_Ical other(
      calendarOf(zone("A") + todoWithUid("1", "DUE;TZID=A:20261201T100000\r\n")));
  calendar.append(other, 0);
  calendar.append(other, 0);
  EXPECT_EQ(calendar.text().count("BEGIN:VTIMEZONE"), 1);
  EXPECT_EQ(calendar.count(), 2);
}

// Appends a to-do with these lines and zones.
void append(TASK_ENG_Ical& calendar, const QByteArray& zones, const QByteArray& lines) {
  calendar.append(TASK_ENG_Ical(calendarOf(zones + todoWithUid("u", lines))), 0);
}

TEST(IcalSeveral, DifferentTimeZonesOfOneNameGetTheirOwn) {
  const QByteArray due = "DUE;TZID=\"A, b\":20261201T100000\r\n";
  TASK_ENG_Ical calendar(calendarOf(zone("A\\, b") + todoWithUid("1", due)));
  append(
      calendar, zone("A\\, b", "+0100"),
      "DUE;X-C=d;TZID=\"A, b\":20261201T100000\r\nEXDATE;TZID=\"A,\r\n  b\":20261202T100000\r\n"
      "X-E:TZID=A, b\r\nBEGIN:VALARM\r\nTRIGGER;TZID=\"A, b\":20261130T100000\r\nEND:VALARM\r\n");
  append(calendar, zone("A\\, b").replace("\r\n", "\n").replace("STANDARD", "STAND\n ARD"), due);
  append(calendar, zone("A\\, b", "+0100"), due);
  const char* const dates[] = {"20261201T070000Z", "20261201T090000Z", "20261201T070000Z",
                               "20261201T090000Z"};
  const TASK_ENG_Ical again(calendar.text());
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(dateText(calendar.task(i), Task::TASK_FIELD_DUE), dates[i]) << i;
    EXPECT_EQ(dateText(again.task(i), Task::TASK_FIELD_DUE), dates[i]) << i;
  }
  EXPECT_EQ(dateText(again.task(1), Task::TASK_FIELD_ALARM), "20261130T090000Z");
  EXPECT_EQ(calendar.text().count("BEGIN:VTIMEZONE"), 2);
  EXPECT_EQ(
      calendar.text(1).toStdString(),
      calendarOf(zone("A\\, b 2", "+0100") +
                 todoWithUid("u", "DUE;TZID=\"A, b 2\";X-C=d:20261201T100000\r\n"
                                  "EXDATE;TZID=\"A, b 2\":20261202T100000\r\nX-E:TZID=A, b\r\n"
                                  "BEGIN:VALARM\r\nTRIGGER;TZID=\"A, b 2\":20261130T100000\r\n"
                                  "END:VALARM\r\n"))
          .toStdString());
}

TEST(IcalSeveral, NewNameOfTimeZoneIsFree) {
  const QByteArray first = "DUE;TZID=A:20261201T100000\r\n";
  const QByteArray second = "DUE;TZID=A 2:20261201T100000\r\n";
  TASK_ENG_Ical calendar;
  append(calendar, zone("A 2"), second);
  append(calendar, zone("A", "+0100"), first);
  append(calendar, zone("A", "+0200"), first);
  EXPECT_TRUE(calendar.text(2).contains("DUE;TZID=A 3:")) << calendar.text(2).toStdString();
  // Both names of a to-do change at once.
  append(calendar, zone("A", "+0400") + zone("A 2", "+0500"),
         first + "DTSTART;TZID=A 2:20261101T100000\r\n");
  EXPECT_TRUE(calendar.text(3).contains("DUE;TZID=A 4:")) << calendar.text(3).toStdString();
  EXPECT_TRUE(calendar.text(3).contains("DTSTART;TZID=A 2 2:"));
  // A zone that is there under another name.
  append(calendar, zone("A 2", "+0100"), second);
  EXPECT_TRUE(calendar.text(4).contains("DUE;TZID=A:")) << calendar.text(4).toStdString();
  // A name without a definition stays.
  append(calendar, "", first);
  EXPECT_TRUE(calendar.text(5).contains(first));
  EXPECT_EQ(calendar.text().count("BEGIN:VTIMEZONE"), 5);
}

TEST(IcalSeveral, AppendedTimeZoneIsKnownAtOnce) {
  const QByteArray line = "DUE;TZID=A:20261201T100000\r\n";
  TASK_ENG_Ical calendar(calendarOf(todoWithUid("1", line)));
  EXPECT_EQ(dateText(calendar.task(0), Task::TASK_FIELD_DUE), "20261201T090000Z");
  calendar.append(TASK_ENG_Ical(calendarOf(zone("A") + todoWithUid("2", line))), 0);
  for (const int i : {0, 1})
    EXPECT_EQ(dateText(calendar.task(i), Task::TASK_FIELD_DUE), "20261201T070000Z");
  EXPECT_EQ(TASK_ENG_Ical(calendar.text()).report().problemCount, 0U);
  EXPECT_EQ(calendar.report().problemCount, 1U) << "of the text before";
}

TEST(IcalSeveral, ReportIsThatOfTheTextBeforeEdits) {
  TASK_ENG_Ical calendar(calendarOf(todoWithUid("1", "STATUS:odd\r\nDUE:soon\r\n")));
  Task task = calendar.task(0);
  task.setStatus(0);
  EXPECT_TRUE(calendar.replace(0, task));
  EXPECT_EQ(calendar.task(0).getStatusValue(), 0);
  EXPECT_EQ(calendar.report().problemCount, 2U);
}

TEST(IcalSeveral, ReadReturnsTodosWithTheirTexts) {
  const QByteArray text =
      calendarOf(todoWithUid("1", "RDATE:20270101\r\n") + todoWithUid("2", "STATUS:odd\r\n"));
  TASK_ENG_Ical::Report report;
  const std::vector<TASK_ENG_Ical::Todo> todos = TASK_ENG_Ical::read(text, &report);
  ASSERT_EQ(todos.size(), 2U);
  EXPECT_TRUE(todos[0].repeats);
  EXPECT_FALSE(todos[1].repeats);
  EXPECT_EQ(todos[1].text, calendarOf(todoWithUid("2", "STATUS:odd\r\n")));
  EXPECT_EQ(report.todos, 2);
  EXPECT_EQ(report.problemCount, 1U);
}

TEST(IcalSeveral, ReportsWhyATextCannotBeRead) {
  const auto failure = [](const QByteArray& text) {
    TASK_ENG_Ical::Report report;
    EXPECT_TRUE(TASK_ENG_Ical::read(text, &report).empty());
    EXPECT_EQ(TASK_ENG_Ical(text).text(), text);
    return report.failure;
  };
  EXPECT_EQ(failure(""), TASK_ENG_Ical::notCalendar);
  EXPECT_EQ(failure("Dear Sir"), TASK_ENG_Ical::notCalendar);
  EXPECT_EQ(failure(todoWithUid("1")), TASK_ENG_Ical::notCalendar);
  EXPECT_EQ(failure("BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todoWithUid("1") + "END:VCALENDAR\r\n"),
            TASK_ENG_Ical::notCalendar);
  EXPECT_EQ(failure(calendarOf(event)), TASK_ENG_Ical::noTodo);
  EXPECT_EQ(failure(calendarOf(todoWithUid("1")).chopped(15)), TASK_ENG_Ical::truncated);
  EXPECT_EQ(failure(calendarOf("BEGIN:VTODO\r\n")), TASK_ENG_Ical::truncated);
  EXPECT_EQ(failure(calendarOf("BEGIN:VTODO\r\nUID:1\r\n" + todoWithUid("2"))),
            TASK_ENG_Ical::truncated);
}

TEST(IcalSeveral, NestedComponentWithoutEndEndsWithTheTodo) {
  const QByteArray text =
      calendarOf(todoWithUid("1", "BEGIN:VALARM\r\nTRIGGER:20261130T070000Z\r\n") +
                 todoWithUid("2", "END:VALARM\r\n"));
  const TASK_ENG_Ical calendar(text);
  ASSERT_EQ(calendar.count(), 2);
  EXPECT_EQ(dateText(calendar.task(0), Task::TASK_FIELD_ALARM), "20261130T070000Z");
  EXPECT_EQ(problemsOf(text), "6: the component ends with the one around it\n"
                              "11: END without BEGIN is ignored\n");
}

TEST(IcalSeveral, AppendingToAnUnreadableTextBeginsACalendar) {
  TASK_ENG_Ical calendar(QByteArray("Dear Sir"));
  calendar.append(Task());
  EXPECT_TRUE(calendar.text().startsWith("Dear Sir\r\nBEGIN:VCALENDAR\r\n"));
  EXPECT_EQ(TASK_ENG_Ical(calendar.text()).count(), 1);
}

}  // namespace
