#include "take_in_ical.h"

#include "change_task.h"
#include "ical_text.h"
#include "store_test.h"
#include "stored_text.h"
#include "task_dates.h"
#include "utc_zone.h"
#include "write_transaction.h"

namespace {

using ulo::Taken;
using Field = Task::TASK_FIELD_T;

class TakeInIcal : public StoreTest {
protected:
  // Takes in all to-dos of a text in one transaction and returns what was done with the last one.
  ulo::TakenIn import(const QByteArray& text,
                      ulo::IcalIntake::Known known = ulo::IcalIntake::Known::update) {
    store();
    ulo::TakenIn taken;
    ulo::WriteTransaction transaction;
    ulo::IcalIntake intake(store(), known);
    std::vector<QString> uuids;
    const std::vector<TASK_ENG_Ical::Todo> todos = TASK_ENG_Ical::read(text);
    for (const TASK_ENG_Ical::Todo& todo : todos)
      uuids.push_back(todo.task.getString(Task::TASK_FIELD_UUID));
    EXPECT_EQ(intake.find(uuids), ok);
    for (const TASK_ENG_Ical::Todo& todo : todos)
      EXPECT_EQ(intake.take(todo, taken), ok);
    EXPECT_EQ(transaction.commit(), 0);
    return taken;
  }

  std::string storedText(unsigned int uid) {
    QByteArray text;
    EXPECT_EQ(ulo::readText(uid, text), ok);
    return text.toStdString();
  }
  std::string exported(unsigned int uid) {
    QByteArray text;
    EXPECT_EQ(ulo::currentText(get(uid), text), ok);
    return text.toStdString();
  }
  std::string text(unsigned int uid, Field field) {
    return get(uid).getString(field).toStdString();
  }
  static std::string dayOf(const Task& task, Field field) {
    return task.getDateTime(field).toString(QStringLiteral("yyyy-MM-dd")).toStdString();
  }
  void edit(unsigned int uid, const std::function<void(Task&)>& change) {
    EXPECT_EQ(ulo::changeTask(store(), uid, change), ok);
  }
};

const QByteArray milk = icalendar(icalTodo("UID:milk-1\r\nSUMMARY:Buy milk\r\n"
                                           "LAST-MODIFIED:20060101T100000Z\r\nPRIORITY:3\r\n"
                                           "X-COLOR:blue\r\n"));

QByteArray changed(QByteArray text, const char* from, const char* to) {
  EXPECT_TRUE(text.contains(from)) << from;
  return text.replace(from, to);
}
// A later state of `milk` with a changed line.
QByteArray laterMilk(const char* from, const char* to) {
  return changed(changed(milk, from, to), "20060101T100000Z", "20060102T100000Z");
}

TEST_F(TakeInIcal, AddsUnknownTodoWithItsText) {
  const ulo::TakenIn taken = import(milk);
  EXPECT_EQ(taken.how, Taken::added);
  const Task task = get(taken.uid);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_UUID), "milk-1");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "Buy milk");
  EXPECT_EQ(task.getPriorityValue(), 3);
  EXPECT_EQ(task.getStatusValue(), 1);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_REVISION).toUTC(),
            QDateTime(QDate(2006, 1, 1), QTime(10, 0), ulo::utcZone));
  EXPECT_EQ(storedText(taken.uid), milk.toStdString());
  EXPECT_EQ(exported(taken.uid), milk.toStdString());
}

TEST_F(TakeInIcal, SetsTimeOfChangeIfTextHasNone) {
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  const ulo::TakenIn taken = import(changed(milk, "LAST-MODIFIED:20060101T100000Z\r\n", ""));
  EXPECT_GE(get(taken.uid).getDateTime(Task::TASK_FIELD_REVISION), before);
}

TEST_F(TakeInIcal, SameTextChangesNothing) {
  const unsigned int uid = import(milk).uid;
  const std::vector<std::string> before = everything();
  reports();
  const ulo::TakenIn taken = import(milk);
  EXPECT_EQ(taken.how, Taken::unchanged);
  EXPECT_EQ(taken.uid, uid);
  EXPECT_EQ(everything(), before);
  EXPECT_TRUE(reports().empty());
}

// A text without LAST-MODIFIED, whose completion the store dates itself.
TEST_F(TakeInIcal, SameTextChangesNothingAfterUpdate) {
  const QByteArray plain = changed(milk, "LAST-MODIFIED:20060101T100000Z\r\n", "");
  import(plain);
  const QByteArray done = changed(plain, "PRIORITY:3\r\n", "STATUS:COMPLETED\r\n");
  EXPECT_EQ(import(done).how, Taken::updated);
  const std::vector<std::string> before = everything();
  EXPECT_EQ(import(done).how, Taken::unchanged);
  EXPECT_EQ(everything(), before);
}

TEST_F(TakeInIcal, ExportedTaskIsUnchanged) {
  const unsigned int uid = add(task("of this store", 4, 4, now().addDays(1)));
  EXPECT_EQ(import(QByteArray::fromStdString(exported(uid))).how, Taken::unchanged);
  EXPECT_EQ(storedText(uid), "");
}

TEST_F(TakeInIcal, KnownTodoUpdatesItsTask) {
  const unsigned int uid = import(milk).uid;
  const QByteArray later = laterMilk("SUMMARY:Buy milk", "SUMMARY:Buy oat milk");
  const ulo::TakenIn taken = import(later);
  EXPECT_EQ(taken.how, Taken::updated);
  EXPECT_EQ(taken.uid, uid);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(text(uid, Task::TASK_FIELD_SUMMARY), "Buy oat milk");
  EXPECT_EQ(storedText(uid), later.toStdString());
  EXPECT_EQ(exported(uid), later.toStdString());
}

TEST_F(TakeInIcal, KeepsChangesOfOtherFieldsMadeHere) {
  const unsigned int uid = import(milk).uid;
  edit(uid, [](Task& task) {
    task.setPriority(7);
    task.setStatus(7);  // no word of iCalendar
    task.setString(Task::TASK_FIELD_NOTE, "from here");
  });
  import(laterMilk("SUMMARY:Buy milk", "SUMMARY:Buy oat milk"));
  EXPECT_EQ(text(uid, Task::TASK_FIELD_SUMMARY), "Buy oat milk");
  EXPECT_EQ(text(uid, Task::TASK_FIELD_NOTE), "from here");
  EXPECT_EQ(get(uid).getPriorityValue(), 7);
  EXPECT_EQ(get(uid).getStatusValue(), 7);
}

TEST_F(TakeInIcal, TakesOverEachFieldOfFile) {
  const unsigned int uid = import(milk).uid;
  import(changed(laterMilk("PRIORITY:3\r\n",
                           "PRIORITY:9\r\nDESCRIPTION:two liters\r\nCATEGORIES:shop\r\n"
                           "DUE:20060401T100000Z\r\nSTATUS:COMPLETED\r\n"
                           "COMPLETED:20060301T100000Z\r\n"
                           "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT1H\r\nEND:VALARM\r\n"),
                 "X-COLOR:blue\r\n", ""));
  const Task stored = get(uid);
  const auto utc = [&](Field field) { return stored.getDateTime(field).toUTC(); };
  EXPECT_EQ(stored.getPriorityValue(), 9);
  EXPECT_EQ(stored.getStatusValue(), 0);
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_NOTE), "two liters");
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_CATEGORY), "shop");
  EXPECT_EQ(utc(Task::TASK_FIELD_DUE), QDateTime(QDate(2006, 4, 1), QTime(10, 0), ulo::utcZone));
  EXPECT_EQ(utc(Task::TASK_FIELD_ALARM), QDateTime(QDate(2006, 4, 1), QTime(9, 0), ulo::utcZone));
  EXPECT_EQ(utc(Task::TASK_FIELD_END), QDateTime(QDate(2006, 3, 1), QTime(10, 0), ulo::utcZone));
}

TEST_F(TakeInIcal, UpdatesTextOfChangedForeignLine) {
  const unsigned int uid = import(milk).uid;
  reports();
  const QByteArray later = laterMilk("X-COLOR:blue", "X-COLOR:red");
  EXPECT_EQ(import(later).how, Taken::updated);
  EXPECT_EQ(exported(uid), later.toStdString());
  // Programs that follow the journal see the change.
  EXPECT_EQ(reports(), std::vector<std::string>{update(uid)});
}

TEST_F(TakeInIcal, SameTextKeepsLaterChangesMadeHere) {
  const unsigned int uid = import(milk).uid;
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
  EXPECT_EQ(import(milk).how, Taken::unchanged);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
}

TEST_F(TakeInIcal, OlderTextChangesNothing) {
  const QByteArray later = laterMilk("SUMMARY:Buy milk", "SUMMARY:Buy oat milk");
  const unsigned int uid = import(later).uid;
  const std::vector<std::string> before = everything();
  EXPECT_EQ(import(milk).how, Taken::older);
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(storedText(uid), later.toStdString());
}

TEST_F(TakeInIcal, SameTextDoesNotMoveRepeatingTaskBack) {
  for (const char* modified : {"", "LAST-MODIFIED:20060101T100000Z\r\n"}) {
    const QByteArray plants =
        icalendar(icalTodo(std::string("UID:plants") + (modified[0] == 0 ? "" : "2") +
                           "\r\nSUMMARY:Water the plants\r\nDUE;VALUE=DATE:20060102\r\n"
                           "RRULE:FREQ=WEEKLY\r\n" +
                           modified));
    const unsigned int uid = import(plants).uid;
    EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
    const std::vector<std::string> moved = everything();
    EXPECT_EQ(import(plants).how, Taken::older);
    EXPECT_EQ(everything(), moved);
  }
}

// A to-do that repeats every week, with an alarm, as another program wrote it.
const QByteArray plants = icalendar(
    icalTodo("UID:plants\r\nSUMMARY:Water the plants\r\nPRIORITY:3\r\n"
             "LAST-MODIFIED:20060101T100000Z\r\nDTSTART;VALUE=DATE:20060102\r\n"
             "DUE;VALUE=DATE:20060102\r\nRRULE:FREQ=WEEKLY\r\n"
             "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER;RELATED=END:PT1H\r\nEND:VALARM\r\n"));
// A state that is later than any change here.
QByteArray laterPlants(const char* from, const char* to) {
  return changed(changed(plants, from, to), "20060101T100000Z", "20370101T100000Z");
}

TEST_F(TakeInIcal, CompletionOfRepeatingTaskKeepsChangesMadeHere) {
  const unsigned int uid = import(plants).uid;
  edit(uid, [](Task& task) {
    task.setPriority(7);
    task.setStatus(3);
  });
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
  import(laterPlants("SUMMARY:Water the plants", "SUMMARY:Water all plants"));
  EXPECT_EQ(text(uid, Task::TASK_FIELD_SUMMARY), "Water all plants");
  EXPECT_EQ(get(uid).getPriorityValue(), 7);
  EXPECT_EQ(get(uid).getStatusValue(), 1);
}

TEST_F(TakeInIcal, FileThatDoesNotKnowOfCompletionDoesNotMoveTaskBack) {
  const unsigned int uid = import(plants).uid;
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
  const Task moved = get(uid);
  EXPECT_EQ(dayOf(moved, Task::TASK_FIELD_DUE), "2006-01-16");
  EXPECT_EQ(import(laterPlants("PRIORITY:3", "PRIORITY:4")).how, Taken::updated);
  EXPECT_EQ(get(uid).getPriorityValue(), 4);
  for (const Field field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_ALARM})
    EXPECT_EQ(get(uid).getDateTime(field), moved.getDateTime(field));
  EXPECT_THAT(exported(uid), testing::HasSubstr("DTSTART;VALUE=DATE:20060116\r\n"));
}

TEST_F(TakeInIcal, FileIsMovedOnByAThousandDates) {
  for (const bool isNear : {true, false}) {
    const QByteArray daily =
        icalendar(icalTodo("UID:daily\r\nSUMMARY:a\r\nLAST-MODIFIED:20060101T100000Z\r\n"
                           "DUE;VALUE=DATE:20060101\r\nRRULE:FREQ=DAILY\r\n"));
    const unsigned int uid = import(daily).uid;
    const QDate before = QDate(2006, 1, 1).addDays(isNear ? 999 : 1000);
    edit(uid, [&](Task& task) { task.setDateTime(Task::TASK_FIELD_DUE, before.startOfDay()); });
    EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
    import(changed(daily, "LAST-MODIFIED:2006", "LAST-MODIFIED:2037"));
    EXPECT_EQ(dayOf(get(uid), Task::TASK_FIELD_DUE),
              isNear ? before.addDays(1).toString(Qt::ISODate).toStdString() : "2006-01-01");
    Task removed;
    EXPECT_EQ(ulo::removeTask(store(), uid, removed), ok);
  }
}

TEST_F(TakeInIcal, DateThatChangedInFileMovesRepeatingTask) {
  for (const char* date : {"20060103", "20060206"}) {
    const unsigned int uid = import(plants).uid;
    EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
    import(changed(laterPlants("DTSTART;VALUE=DATE:20060102", "X-OLD:1"), "20060102", date));
    EXPECT_EQ(dayOf(get(uid), Task::TASK_FIELD_DUE).erase(4, 1).erase(6, 1), date);
    Task removed;
    EXPECT_EQ(ulo::removeTask(store(), uid, removed), ok);
  }
}

TEST_F(TakeInIcal, AddsKnownTodoAgainWithAnotherUid) {
  import(milk);
  const ulo::TakenIn taken = import(milk, ulo::IcalIntake::Known::addAgain);
  EXPECT_EQ(taken.how, Taken::added);
  EXPECT_EQ(count(), 2);
  const std::string uuid = text(taken.uid, Task::TASK_FIELD_UUID);
  EXPECT_NE(uuid, "milk-1");
  EXPECT_EQ(exported(taken.uid),
            changed(milk, "UID:milk-1", ("UID:" + uuid).c_str()).toStdString());
  EXPECT_EQ(import(QByteArray::fromStdString(exported(taken.uid))).how, Taken::unchanged);
}

TEST_F(TakeInIcal, AddsTodoWithoutUidEachTime) {
  const QByteArray plain = changed(milk, "UID:milk-1\r\n", "");
  const unsigned int first = import(plain).uid;
  EXPECT_EQ(import(plain).how, Taken::added);
  EXPECT_EQ(count(), 2);
  const std::string uuid = text(first, Task::TASK_FIELD_UUID);
  EXPECT_FALSE(uuid.empty());
  EXPECT_EQ(import(QByteArray::fromStdString(exported(first))).how, Taken::unchanged);
}

TEST_F(TakeInIcal, TakesLastOfSeveralTodosWithOneUid) {
  const QByteArray twice = icalendar(icalTodo("UID:same\r\nSUMMARY:first\r\n")) +
                           icalendar(icalTodo("UID:same\r\nSUMMARY:second\r\n"));
  const ulo::TakenIn taken = import(twice);
  EXPECT_EQ(taken.how, Taken::added);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(text(taken.uid, Task::TASK_FIELD_SUMMARY), "second");
  const std::vector<std::string> before = everything();
  EXPECT_EQ(import(twice).how, Taken::unchanged);
  EXPECT_EQ(everything(), before);
}

TEST_F(TakeInIcal, ShortensRecordAndKeepsTextWhole) {
  const std::string summary(600, 's');
  const QByteArray longText = icalendar(icalTodo("UID:long\r\nSUMMARY:" + summary + "\r\n"));
  const ulo::TakenIn taken = import(longText);
  ASSERT_EQ(taken.shortened.size(), 1U);
  EXPECT_EQ(taken.shortened[0].kept, Task::summaryLimit);
  EXPECT_EQ(text(taken.uid, Task::TASK_FIELD_SUMMARY), std::string(Task::summaryLimit, 's'));
  EXPECT_EQ(exported(taken.uid), longText.toStdString());
  EXPECT_EQ(import(longText).how, Taken::unchanged);
  // A change of another field keeps the long text.
  edit(taken.uid, [](Task& task) { task.setPriority(1); });
  EXPECT_EQ(TASK_ENG_Ical(QByteArray::fromStdString(exported(taken.uid)))
                .task(0)
                .getString(Task::TASK_FIELD_SUMMARY)
                .toStdString(),
            summary);
}

TEST_F(TakeInIcal, DiscardedImportLeavesNeitherTaskNorText) {
  store();
  {
    const ulo::WriteTransaction transaction;
    ulo::IcalIntake intake(store());
    ulo::TakenIn taken;
    EXPECT_EQ(intake.find({}), ok);
    EXPECT_EQ(intake.take(TASK_ENG_Ical::read(milk).at(0), taken), ok);
  }
  EXPECT_EQ(count(), 0);
  EXPECT_TRUE(sql("SELECT name FROM sqlite_schema WHERE name = 'ulo_texts'").empty());
}

TEST_F(TakeInIcal, FailsWithTaskThatIsRefused) {
  store();
  sql("CREATE TRIGGER refuse BEFORE INSERT ON task_table_task BEGIN SELECT RAISE(ABORT, "
      "'refused'); END");
  const ulo::WriteTransaction transaction;
  ulo::IcalIntake intake(store());
  ulo::TakenIn taken;
  EXPECT_EQ(intake.take(TASK_ENG_Ical::read(milk).at(0), taken), databaseFailure);
}

}  // namespace
