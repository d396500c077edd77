// Alarms of tasks, on a clock that the test sets.

#include "alarms/alarm_clock.h"

#include "tasks_test.h"
#include "ulotask_process.h"
#include "window/store_changes.h"

#include <fcntl.h>
#include <sys/file.h>

using tasks::AlarmClock;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class AlarmClockTest : public Tasks {
protected:
  // One instance of the application.
  struct Instance {
    explicit Instance(AlarmClockTest& test)
        : clock(
              test.store_, [&test] { return test.now_; }, nullptr) {
      QObject::connect(&clock, &AlarmClock::due, &clock, [this](const Task& task) {
        told.push_back(task.getString(Task::TASK_FIELD_SUMMARY).toStdString());
      });
    }
    // It has read the current state of the store.
    void look() {
      clock.look();
      EXPECT_TRUE(waitFor([this] { return !clock.isReading(); }));
    }

    // Passed alarms have been reported: timers fire in the order of their times.
    void check() {
      look();
      bool checked = false;
      QTimer::singleShot(1, &application(), [&] { checked = true; });
      EXPECT_TRUE(waitFor([&] { return checked; }));
    }

    AlarmClock clock;
    std::vector<std::string> told;
  };

  static QDateTime at(int hour, int minute = 0) { return {QDate(2027, 3, 5), QTime(hour, minute)}; }

  unsigned int addAlarm(const char* summary, const QDateTime& alarm, int status = 1) {
    Task task;
    task.setString(Task::TASK_FIELD_SUMMARY, summary);
    task.setDateTime(Task::TASK_FIELD_ALARM, alarm);
    task.setStatus(status);
    EXPECT_EQ(store_.addTask(task), ok);
    return task.getUINT32(Task::TASK_FIELD_UID);
  }
  void setAlarm(unsigned int uid, const QDateTime& alarm) {
    Task task = stored(uid);
    task.setDateTime(Task::TASK_FIELD_ALARM, alarm);
    EXPECT_EQ(store_.updateTask(task), ok);
  }
  // The same without an entry in the journal.
  void setRawAlarm(unsigned int uid, const QDateTime& alarm) {
    raw_.run("update task_table_task set alarm = " + std::to_string(alarm.toSecsSinceEpoch()) +
             " where uid = " + std::to_string(uid));
    raw_.run("delete from ulo_changes where entry = (select max(entry) from ulo_changes)");
  }
  // The reports of `instance` until the alarm of another task, which is the last one, at `time`.
  std::vector<std::string> toldUntil(Instance& instance, const QDateTime& time) {
    addAlarm("the last one", time);
    now_ = time;
    instance.look();
    EXPECT_TRUE(
        waitFor([&] { return !instance.told.empty() && instance.told.back() == "the last one"; }));
    std::vector<std::string> told = std::exchange(instance.told, {});
    if (!told.empty())
      told.pop_back();
    return told;
  }

  QDateTime now_ = at(10);
};

TEST_F(AlarmClockTest, ReportsAlarmOnceWhenItComes) {
  addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  EXPECT_THAT(toldUntil(instance, at(10, 59)), IsEmpty());
  EXPECT_THAT(toldUntil(instance, at(11)), ElementsAre("a"));
  EXPECT_THAT(toldUntil(instance, at(12)), IsEmpty());
}

TEST_F(AlarmClockTest, ReportsNothingDuringLook) {
  addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  now_ = at(11);
  instance.clock.look();
  EXPECT_THAT(instance.told, IsEmpty());
  EXPECT_TRUE(waitFor([&] { return !instance.told.empty(); }));
}

TEST_F(AlarmClockTest, ReportsAlarmWithoutLook) {
  now_ = at(11).addMSecs(-1);
  addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  now_ = at(11);
  EXPECT_TRUE(waitFor([&] { return !instance.told.empty(); }));
}

TEST_F(AlarmClockTest, IgnoresEarlierAlarms) {
  addAlarm("before", at(9));
  addAlarm("just then", at(10));
  Instance instance(*this);
  EXPECT_THAT(toldUntil(instance, at(11)), IsEmpty());
}

TEST_F(AlarmClockTest, ReportsAlarmsOfSuspensionInOrder) {
  addAlarm("later", at(12));
  addAlarm("first", at(11));
  Instance instance(*this);
  instance.look();
  EXPECT_THAT(toldUntil(instance, at(20)), ElementsAre("first", "later"));
}

TEST_F(AlarmClockTest, IgnoresCompletedTasks) {
  addAlarm("done", at(11), 0);
  const unsigned int uid = addAlarm("done soon", at(11));
  Instance instance(*this);
  instance.look();
  Task task = stored(uid);
  task.setStatus(0);
  ASSERT_EQ(store_.updateTask(task), ok);
  EXPECT_THAT(toldUntil(instance, at(11)), IsEmpty());
}

TEST_F(AlarmClockTest, ReportsAlarmAgainIfSetAgain) {
  const unsigned int uid = addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  EXPECT_THAT(toldUntil(instance, at(11)), ElementsAre("a"));
  setAlarm(uid, at(12));
  EXPECT_THAT(toldUntil(instance, at(11, 30)), IsEmpty());
  EXPECT_THAT(toldUntil(instance, at(12)), ElementsAre("a"));
  Task task = stored(uid);
  task.setString(Task::TASK_FIELD_SUMMARY, "b");
  ASSERT_EQ(store_.updateTask(task), ok);
  EXPECT_THAT(toldUntil(instance, at(13)), IsEmpty());
}

// Even if nothing reported the change.
TEST_F(AlarmClockTest, ReadsTaskAgainWhenAlarmComes) {
  const unsigned int completed = addAlarm("completed", at(11));
  const unsigned int moved = addAlarm("moved", at(11));
  const unsigned int removed = addAlarm("removed", at(11));
  const unsigned int renamed = addAlarm("renamed", at(11));
  Instance instance(*this);
  instance.look();
  const auto change = [&](const std::string& how, unsigned int uid) {
    raw_.run(how + " where uid = " + std::to_string(uid));
  };
  change("update task_table_task set status = 0", completed);
  setRawAlarm(moved, at(12));
  change("delete from task_table_task", removed);
  raw_.run(
      "update task_table_task set summary = (select summary from task_table_task where uid = " +
      std::to_string(addAlarm("new", at(9))) + ") where uid = " + std::to_string(renamed));
  EXPECT_THAT(toldUntil(instance, at(11)), ElementsAre("new"));
  EXPECT_THAT(toldUntil(instance, at(12)), ElementsAre("moved"));
}

TEST_F(AlarmClockTest, ReadsOnlyTasksOfJournalAgain) {
  const unsigned int uid = addAlarm("unnamed", at(20));
  Instance instance(*this);
  instance.look();
  setRawAlarm(uid, at(11));
  addAlarm("named", at(11));
  EXPECT_THAT(toldUntil(instance, at(12)), ElementsAre("named"));
}

TEST_F(AlarmClockTest, ReadsEverythingIfJournalIsIncomplete) {
  const unsigned int uid = addAlarm("unnamed", at(20));
  Instance instance(*this);
  instance.look();
  setRawAlarm(uid, at(11));
  addAlarm("named", at(11));
  ulo::ChangeJournal journal(directory_.path().string());
  std::int64_t entry = 0;
  ASSERT_TRUE(journal.lastEntry(entry));
  ASSERT_TRUE(journal.prune(entry));
  EXPECT_THAT(toldUntil(instance, at(12)), testing::UnorderedElementsAre("named", "unnamed"));
}

TEST_F(AlarmClockTest, ForgetsRemovedTask) {
  const unsigned int uid = addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  ASSERT_EQ(store_.removeTask(uid), ok);
  EXPECT_THAT(toldUntil(instance, at(12)), IsEmpty());
}

TEST_F(AlarmClockTest, ReportsAlarmsAheadAfterClockIsSetBack) {
  addAlarm("over", at(9, 30));
  addAlarm("told", at(10, 30));
  Instance instance(*this);
  instance.look();
  EXPECT_THAT(toldUntil(instance, at(11)), ElementsAre("told"));
  now_ = at(9);
  instance.look();
  EXPECT_THAT(toldUntil(instance, at(9, 15)), IsEmpty());
  EXPECT_THAT(toldUntil(instance, at(12)), ElementsAre("over"));
}

TEST_F(AlarmClockTest, ProcessesOtherEventsWhileReading) {
  add("one of many");
  constexpr unsigned int many = 10'000;
  raw_.run(
      "insert into task_table_task (priority, status, note, summary, uuid, alarm, due, \"end\","
      " categoryUid, revision) with recursive number(n) as (select 2 union all select n + 1"
      " from number where n < " +
      std::to_string(many) +
      ") select priority, status, note, summary, uuid, alarm, due, \"end\", categoryUid,"
      " revision from task_table_task, number");
  ASSERT_EQ(allUids().size(), many);
  setRawAlarm(allUids()[many / 2], at(11));
  Instance instance(*this);
  int turns = 0;
  QTimer other;
  QObject::connect(&other, &QTimer::timeout, &other, [&] { turns += instance.clock.isReading(); });
  other.start(0);
  instance.look();
  EXPECT_GE(turns, 2);
  EXPECT_THAT(toldUntil(instance, at(11)), ElementsAre("one of many"));
}

TEST_F(AlarmClockTest, OneInstanceReportsUntilItEnds) {
  auto first = std::make_unique<Instance>(*this);
  Instance second(*this);
  first->look();
  second.look();
  addAlarm("a", at(11));
  second.look();
  EXPECT_THAT(toldUntil(*first, at(11)), ElementsAre("a"));
  // It finds that the other instance still reports.
  second.check();
  first.reset();
  EXPECT_THAT(toldUntil(second, at(12)), IsEmpty());
  addAlarm("b", at(13));
  EXPECT_THAT(toldUntil(second, at(14)), ElementsAre("b"));
}

TEST_F(AlarmClockTest, ReportsNothingWhileAnotherProcessHoldsLock) {
  const std::string path = directory_.path() / AlarmClock::lockName;
  const ulo::Descriptor other(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(other.get(), LOCK_EX), 0);
  addAlarm("a", at(11));
  Instance instance(*this);
  instance.look();
  now_ = at(11);
  instance.check();
  EXPECT_THAT(instance.told, IsEmpty());
  ASSERT_EQ(flock(other.get(), LOCK_UN), 0);
  EXPECT_THAT(toldUntil(instance, at(12)), IsEmpty());
}

TEST_F(AlarmClockTest, ReportsAlarmsStoredByOtherPrograms) {
  Instance instance(*this);
  tasks::StoreChanges changes(nullptr);
  QObject::connect(&changes, &tasks::StoreChanges::changed, &instance.clock, &AlarmClock::look);
  instance.look();
  now_ = at(10, 59);
  runUlotask({"add", "from elsewhere", "--alarm", "2027-03-05 11:00"});
  now_ = at(11);
  EXPECT_TRUE(waitFor([&] { return !instance.told.empty(); }));
  EXPECT_THAT(instance.told, ElementsAre("from elsewhere"));
}

TEST_F(AlarmClockTest, RetriesFailingStore) {
  addAlarm("a", at(11));
  Instance instance(*this);
  raw_.run("alter table task_table_task rename to elsewhere");
  instance.look();
  raw_.run("alter table elsewhere rename to task_table_task");
  EXPECT_THAT(toldUntil(instance, at(12)), ElementsAre("a"));
}

}  // namespace
