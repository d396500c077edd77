// Changes of tasks that have a calendar text.

#include "change_task.h"
#include "ical_text.h"
#include "store_test.h"
#include "stored_text.h"
#include "task_dates.h"
#include "utc_zone.h"
#include "write_transaction.h"

namespace {

using Field = Task::TASK_FIELD_T;
constexpr Field due = Task::TASK_FIELD_DUE;
constexpr Field alarm = Task::TASK_FIELD_ALARM;

QDateTime utc(int month, int day, int hour, int minute = 0) {
  return {QDate(2006, month, day), QTime(hour, minute), ulo::utcZone};
}

class ChangeText : public StoreTest {
protected:
  // Adds the first to-do of a text.
  unsigned int addText(const QByteArray& text) {
    store();
    TASK_ENG_Ical::Todo todo = TASK_ENG_Ical::read(text).at(0);
    ulo::WriteTransaction transaction;
    EXPECT_EQ(store().addTask(todo.task), ok);
    const unsigned int uid = todo.task.getUINT32(Task::TASK_FIELD_UID);
    EXPECT_EQ(ulo::storeText(uid, todo.text), ok);
    EXPECT_EQ(transaction.commit(), 0);
    return uid;
  }
  QByteArray storedText(unsigned int uid) {
    QByteArray text;
    EXPECT_EQ(ulo::readText(uid, text), ok);
    return text;
  }
  QDateTime date(unsigned int uid, Field field) { return get(uid).getDateTime(field).toUTC(); }
  void edit(unsigned int uid, const std::function<void(Task&)>& change) {
    EXPECT_EQ(ulo::changeTask(store(), uid, change), ok);
  }
  ulo::ChangeReport complete(unsigned int uid) {
    ulo::ChangeReport report;
    EXPECT_EQ(ulo::setCompleted(store(), uid, true, &report), ok);
    EXPECT_EQ(report.task.getStatusValue(), get(uid).getStatusValue());
    return report;
  }
};

std::string hourBefore(const std::string& trigger = "TRIGGER:-PT1H") {
  return "BEGIN:VALARM\r\nACTION:DISPLAY\r\n" + trigger + "\r\nEND:VALARM\r\n";
}

QByteArray weekly(const std::string& more = {}) {
  return icalendar(icalTodo("UID:weekly\r\nSUMMARY:Water plants\r\nDTSTART:20060306T090000Z\r\n"
                            "DUE:20060306T100000Z\r\nRRULE:FREQ=WEEKLY" +
                            more + "\r\nX-ROOM:kitchen\r\n" + hourBefore()));
}

TEST_F(ChangeText, CompletedTaskMovesToNextDate) {
  const unsigned int uid = addText(weekly());
  const ulo::ChangeReport report = complete(uid);
  EXPECT_EQ(report.next, TASK_ENG_Ical::moved);
  EXPECT_EQ(get(uid).getStatusValue(), 1);
  EXPECT_FALSE(ulo::hasDate(get(uid), Task::TASK_FIELD_END));
  EXPECT_EQ(date(uid, due), utc(3, 13, 10));
  EXPECT_EQ(date(uid, alarm), utc(3, 13, 8));
  const QByteArray text = storedText(uid);
  EXPECT_TRUE(text.contains("DTSTART:20060313T090000Z")) << text.toStdString();
  EXPECT_TRUE(text.contains("X-ROOM:kitchen"));
  EXPECT_TRUE(text.contains("TRIGGER:-PT1H"));
  complete(uid);
  EXPECT_EQ(date(uid, due), utc(3, 20, 10));
}

TEST_F(ChangeText, LastDateCompletesTask) {
  const unsigned int uid = addText(weekly(";COUNT=2"));
  EXPECT_EQ(complete(uid).next, TASK_ENG_Ical::moved);
  EXPECT_EQ(complete(uid).next, TASK_ENG_Ical::lastDate);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
  EXPECT_EQ(date(uid, due), utc(3, 13, 10));
  EXPECT_TRUE(storedText(uid).contains("RRULE"));
}

TEST_F(ChangeText, RuleThatCannotBeComputedCompletesTask) {
  const QByteArray text = weekly().replace("FREQ=WEEKLY", "FREQ=FORTNIGHTLY");
  const unsigned int uid = addText(text);
  EXPECT_EQ(complete(uid).next, TASK_ENG_Ical::notComputed);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
  EXPECT_EQ(storedText(uid), text);
}

TEST_F(ChangeText, TaskThatDoesNotRepeatIsCompleted) {
  const unsigned int uid = addText(icalendar(icalTodo("UID:once\r\nSUMMARY:a\r\n")));
  EXPECT_EQ(complete(uid).next, std::nullopt);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
}

TEST_F(ChangeText, OnlyCompletionMovesTask) {
  const unsigned int uid = addText(weekly());
  const QByteArray before = storedText(uid);
  edit(uid, [](Task& task) { task.setStatus(2); });
  edit(uid, [](Task& task) { task.setString(Task::TASK_FIELD_SUMMARY, "changed"); });
  EXPECT_EQ(date(uid, due), utc(3, 6, 10));
  EXPECT_EQ(storedText(uid), before);
}

TEST_F(ChangeText, CompletedTaskStaysWhenEdited) {
  const unsigned int uid = addText(weekly("\r\nSTATUS:COMPLETED\r\nCOMPLETED:20060306T100000Z"));
  ulo::ChangeReport report;
  EXPECT_EQ(ulo::changeTask(
                store(), uid, [](Task& task) { task.setPriority(1); }, &report),
            ok);
  EXPECT_EQ(report.next, std::nullopt);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
  EXPECT_EQ(date(uid, due), utc(3, 6, 10));
}

TEST_F(ChangeText, ChangesOfSameEditMoveAlong) {
  const unsigned int uid = addText(weekly());
  edit(uid, [](Task& task) {
    task.setString(Task::TASK_FIELD_SUMMARY, "Water all plants");
    task.setStatus(0);
  });
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_SUMMARY), "Water all plants");
  EXPECT_EQ(date(uid, due), utc(3, 13, 10));
  // The stored text keeps what an import compares with.
  EXPECT_TRUE(storedText(uid).contains("SUMMARY:Water plants\r\n"));
  QByteArray text;
  EXPECT_EQ(ulo::currentText(get(uid), text), ok);
  EXPECT_TRUE(text.contains("SUMMARY:Water all plants"));
}

// The text is stored in the transaction of the record.
TEST_F(ChangeText, MovesNeitherTaskNorTextIfOneIsRefused) {
  const unsigned int uid = addText(weekly());
  const QByteArray before = storedText(uid);
  sql("CREATE TRIGGER refusal BEFORE UPDATE ON ulo_texts "
      "BEGIN SELECT RAISE(ABORT, 'refused'); END");
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), databaseFailure);
  EXPECT_EQ(date(uid, due), utc(3, 6, 10));
  sql("DROP TRIGGER refusal");
  sql("CREATE TRIGGER refusal BEFORE UPDATE ON task_table_task "
      "BEGIN SELECT RAISE(ABORT, 'refused'); END");
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), databaseFailure);
  EXPECT_EQ(storedText(uid), before);
}

TEST_F(ChangeText, RelativeAlarmMovesWithDueDate) {
  const unsigned int uid =
      addText(icalendar(icalTodo("UID:a\r\nDUE:20060306T100000Z\r\n" + hourBefore())));
  edit(uid, [](Task& task) { task.setDateTime(due, utc(3, 7, 12)); });
  EXPECT_EQ(date(uid, alarm), utc(3, 7, 11));
  QByteArray text;
  EXPECT_EQ(ulo::currentText(get(uid), text), ok);
  EXPECT_TRUE(text.contains("TRIGGER:-PT1H")) << text.toStdString();
  // From the present due date, not from that of the text.
  edit(uid, [](Task& task) { task.setDateTime(due, utc(3, 8, 12)); });
  EXPECT_EQ(date(uid, alarm), utc(3, 8, 11));
}

TEST_F(ChangeText, RelativeAlarmGetsTimeWithFirstDueDate) {
  const unsigned int uid = addText(icalendar(icalTodo("UID:a\r\n" + hourBefore())));
  edit(uid, [](Task& task) { task.setDateTime(due, utc(3, 7, 12)); });
  EXPECT_EQ(date(uid, alarm), utc(3, 7, 11));
  QByteArray text;
  EXPECT_EQ(ulo::currentText(get(uid), text), ok);
  EXPECT_TRUE(text.contains("TRIGGER:-PT1H")) << text.toStdString();
}

TEST_F(ChangeText, OtherAlarmsStay) {
  const std::string absolute = hourBefore("TRIGGER;VALUE=DATE-TIME:20060306T090000Z");
  const unsigned int fixed =
      addText(icalendar(icalTodo("UID:a\r\nDUE:20060306T100000Z\r\n" + absolute)));
  const unsigned int relative =
      addText(icalendar(icalTodo("UID:b\r\nDUE:20060306T100000Z\r\n" + hourBefore())));
  edit(fixed, [](Task& task) { task.setDateTime(due, utc(3, 7, 12)); });
  EXPECT_EQ(date(fixed, alarm), utc(3, 6, 9));
  edit(relative, [](Task& task) {
    task.setDateTime(due, utc(3, 7, 12));
    task.setDateTime(alarm, utc(3, 7, 8));
  });
  EXPECT_EQ(date(relative, alarm), utc(3, 7, 8));
  // Now the alarm has a time of its own.
  edit(relative, [](Task& task) { task.setDateTime(due, utc(3, 9, 12)); });
  EXPECT_EQ(date(relative, alarm), utc(3, 7, 8));
  edit(relative, [](Task& task) { task.setDateTime(due, Task::noDate()); });
  EXPECT_EQ(date(relative, alarm), utc(3, 7, 8));
}

TEST_F(ChangeText, RepetitionIsDescribed) {
  const unsigned int uid = addText(weekly(";INTERVAL=2"));
  ulo::Repetition repetition;
  EXPECT_EQ(ulo::readRepetition(uid, repetition), ok);
  EXPECT_EQ(repetition.unit, ulo::Repetition::Unit::week);
  EXPECT_EQ(repetition.interval, 2);
  EXPECT_EQ(ulo::readRepetition(add(task("a")), repetition), ok);
  EXPECT_EQ(repetition.unit, ulo::Repetition::Unit::none);
}

}  // namespace
