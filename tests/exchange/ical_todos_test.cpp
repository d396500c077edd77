// Reading and writing the to-dos of a calendar one after the other.
#include "ical_text.h"
#include "ical_todos.h"
#include "ical_writer.h"
#include "test_clock.h"
#include "utc_zone.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;

QByteArray todoWith(const QByteArray& uid, const QByteArray& lines = {}) {
  return "BEGIN:VTODO\r\nUID:" + uid + "\r\n" + lines + "END:VTODO\r\n";
}
QByteArray zoneAt(const QByteArray& id, const QByteArray& offset = "+0300") {
  return "BEGIN:VTIMEZONE\r\nTZID:" + id +
         "\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:" + offset +
         "\r\nTZOFFSETTO:" + offset + "\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
}
QByteArray dueIn(const QByteArray& name) {
  return "DUE;TZID=" + name + ":20261201T100000\r\n";
}
const QByteArray recurrence = "RECURRENCE-ID:20261202T100000Z\r\n";
const QByteArray anEvent = "BEGIN:VEVENT\r\nUID:e\r\nSUMMARY:e\r\nEND:VEVENT\r\n";

// Expects that the to-dos of a text are those of TASK_ENG_Ical.
void expectSame(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  ulo::IcalTodos todos(text);
  ASSERT_EQ(todos.count(), static_cast<std::size_t>(calendar.count()));
  TASK_ENG_Ical::Todo each;
  for (int i = 0; i < calendar.count(); ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(todos.next(each));
    EXPECT_EQ(taskText(each.task), taskText(calendar.task(i)));
    EXPECT_EQ(each.text.toStdString(), calendar.text(i).toStdString());
    EXPECT_EQ(each.repeats, calendar.repeats(i));
    EXPECT_EQ(todos.uuid(static_cast<std::size_t>(i)), each.task.getString(Task::TASK_FIELD_UUID));
  }
  EXPECT_FALSE(todos.next(each));
  const TASK_ENG_Ical::Report& report = calendar.report();
  EXPECT_EQ(todos.report().failure, report.failure);
  EXPECT_EQ(todos.report().todos, report.todos);
  EXPECT_EQ(todos.report().otherComponents, report.otherComponents);
  EXPECT_EQ(todos.report().problemCount, report.problemCount);
  ASSERT_EQ(todos.report().problems.size(), report.problems.size());
  for (std::size_t i = 0; i < report.problems.size(); ++i) {
    EXPECT_EQ(todos.report().problems[i].line, report.problems[i].line);
    EXPECT_EQ(todos.report().problems[i].text, report.problems[i].text);
  }
}

TEST(IcalTodos, ReadsOneAfterTheOther) {
  expectSame(calendarOf(todoWith("1", "SUMMARY:a\r\n") + anEvent +
                        todoWith("2", "RRULE:FREQ=DAILY\r\n") + "\r\n" + todoWith("")));
  expectSame("\r\n" + calendarOf(todoWith("1", "STATUS:odd\r\n")) + "\r\n" +
             calendarOf(anEvent + todoWith("1", "DUE:never\r\n")));
}

TEST(IcalTodos, FindsZoneAfterItsUsers) {
  const QByteArray text = calendarOf(todoWith("1", dueIn("A")) + todoWith("2", dueIn("B")) +
                                     zoneAt("B") + zoneAt("A", "-0500"));
  expectSame(text);
  ulo::IcalTodos todos(text);
  TASK_ENG_Ical::Todo first;
  ASSERT_TRUE(todos.next(first));
  EXPECT_EQ(first.task.getInstant(Task::TASK_FIELD_DUE).toSecsSinceEpoch(),
            QDateTime(QDate(2026, 12, 1), QTime(15, 0), ulo::utcZone).toSecsSinceEpoch());
  EXPECT_EQ(first.text.toStdString(),
            calendarOf(todoWith("1", dueIn("A")) + zoneAt("A", "-0500")).toStdString());
}

TEST(IcalTodos, FindsOverridesAnywhere) {
  const QByteArray text =
      calendarOf(todoWith("2", recurrence + "X-A:1\r\n") + todoWith("1") +
                 todoWith("2", "RRULE:FREQ=DAILY\r\n") + todoWith("2", "X-SAME:1\r\n") +
                 todoWith("3", recurrence) + todoWith("2", recurrence + "X-A:2\r\n"));
  expectSame(text);
  EXPECT_EQ(ulo::IcalTodos(text).count(), 4U);
  // In another calendar it does not belong to the to-do.
  expectSame(calendarOf(todoWith("1")) + calendarOf(todoWith("2") + todoWith("1", recurrence)) +
             calendarOf(todoWith("1", recurrence) + todoWith("1")));
}

TEST(IcalTodos, KnowsUuidsAsRecordsHaveThem) {
  expectSame(calendarOf("BEGIN:VTODO\r\nU\r\n ID;X-A=\"1:2\":a\\,b\r\nUID:other\r\nEND:VTODO\r\n"
                        "BEGIN:VTODO\r\nUID:\r\nUID:second\r\nEND:VTODO\r\n"
                        "BEGIN:VTODO\r\nBEGIN:VALARM\r\nUID:alarm\r\nEND:VALARM\r\nEND:VTODO\r\n"
                        "BEGIN:VTODO\r\nUID:\xFF\r\nEND:VTODO\r\n"));
}

TEST(IcalTodos, ReadsNothingFromBadTexts) {
  for (const QByteArray& text :
       {QByteArray(), QByteArray("BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n"), calendarOf(anEvent),
        calendarOf(todoWith("1")).chopped(20), calendarOf("BEGIN:VTODO\r\nUID:1\r\n")})
    expectSame(text);
}

// A to-do that is much larger than all others together.
TEST(IcalTodos, ReadsLargeTodo) {
  const QByteArray large = "DESCRIPTION:" + QByteArray(5 << 20, 'n') + "\r\n";
  expectSame(calendarOf(todoWith("1") + todoWith("2", large) + todoWith("3")));
}

class IcalWriting : public testing::Test {
protected:
  void SetUp() override {
    setEngineNow(QDateTime(QDate(2026, 11, 20), QTime(12, 0), ulo::utcZone));
  }
  void TearDown() override { setEngineNow(QDateTime()); }

  // Expects the text of a calendar to which the first to-do of each text is appended.
  static void expectAppended(const std::vector<QByteArray>& texts) {
    Task task;
    task.setString(Task::TASK_FIELD_UUID, "unread");
    TASK_ENG_Ical calendar;
    ulo::IcalWriter writer;
    QByteArray parts = writer.begin();
    for (const QByteArray& text : texts) {
      const TASK_ENG_Ical single(text);
      if (single.count() > 0)
        calendar.append(single, 0);
      else
        calendar.append(task);
      parts += writer.add(text, task);
    }
    EXPECT_EQ((parts + writer.end()).toStdString(), calendar.text().toStdString());
  }
};

TEST_F(IcalWriting, EqualsCalendarThatIsBuiltWhole) {
  expectAppended({});
  expectAppended({calendarOf(todoWith("1"))});
  expectAppended({calendarOf(zoneAt("A") + zoneAt("B") + todoWith("1", dueIn("A"))),
                  calendarOf(todoWith("2", dueIn("A") + "DTSTART;TZID=B:20261130T100000\r\n") +
                             zoneAt("A", "+0100") + zoneAt("B") + todoWith("2", recurrence)),
                  "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VTODO\nUID:3\nEND:VTODO\nEND:VCALENDAR\n"});
}

TEST_F(IcalWriting, WritesDifferentZonesOfOneName) {
  std::vector<QByteArray> texts;
  ulo::IcalWriter writer;
  QByteArray parts = writer.begin();
  for (const char* offset : {"+0100", "-0800", "+0100", "-0800", "+0200"}) {
    texts.push_back(calendarOf(zoneAt("A", offset) + todoWith("1", dueIn("A"))));
    parts += writer.add(texts.back(), Task());
  }
  expectAppended(texts);
  const TASK_ENG_Ical calendar(parts + writer.end());
  ASSERT_EQ(calendar.count(), 5);
  for (int i = 0; i < calendar.count(); ++i)
    EXPECT_EQ(
        dateText(calendar.task(i), Task::TASK_FIELD_DUE),
        dateText(TASK_ENG_Ical(texts[static_cast<std::size_t>(i)]).task(0), Task::TASK_FIELD_DUE));
  EXPECT_EQ(calendar.text().count("BEGIN:VTIMEZONE"), 3);
}

TEST_F(IcalWriting, WritesFieldsOfTextThatCannotBeRead) {
  expectAppended({calendarOf(todoWith("1")), "no calendar", calendarOf(anEvent)});
}

}  // namespace
