#include "ZTASK_ENG_Task.h"

#include "UTIL_TimeConversion.h"
#include "environment_variable.h"
#include "test_clock.h"

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>

namespace {

using Task = ZTASK_ENG_Task;
using Field = Task::TASK_FIELD_T;

constexpr Field textFields[] = {Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_NOTE,
                                Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_UUID};
constexpr Field dateFields[] = {Task::TASK_FIELD_ALARM, Task::TASK_FIELD_DUE, Task::TASK_FIELD_END,
                                Task::TASK_FIELD_REVISION};
// Values just outside the fields of each type, and the extreme ones.
constexpr Field notTextFields[] = {Field(INT_MIN),         Field(-1), Task::TASK_FIELD_UID,
                                   Task::TASK_FIELD_ALARM, Field(9),  Field(INT_MAX)};
constexpr Field notDateFields[] = {Field(INT_MIN),        Field(-1), Task::TASK_FIELD_UID,
                                   Task::TASK_FIELD_UUID, Field(9),  Field(INT_MAX)};

const QDateTime moment(QDate(2006, 3, 5), QTime(12, 34, 56, 789));

TEST(TaskRecord, FieldNumbersAreFixed) {
  EXPECT_EQ(Task::TASK_FIELD_UID, 0);
  EXPECT_EQ(Task::TASK_FIELD_CATEGORY, 1);
  EXPECT_EQ(Task::TASK_FIELD_NOTE, 2);
  EXPECT_EQ(Task::TASK_FIELD_SUMMARY, 3);
  EXPECT_EQ(Task::TASK_FIELD_UUID, 4);
  EXPECT_EQ(Task::TASK_FIELD_ALARM, 5);
  EXPECT_EQ(Task::TASK_FIELD_DUE, 6);
  EXPECT_EQ(Task::TASK_FIELD_END, 7);
  EXPECT_EQ(Task::TASK_FIELD_REVISION, 8);
  EXPECT_FALSE(std::is_polymorphic_v<Task>);
}

TEST(TaskRecord, StartsUnset) {
  const Task task;
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), 4294967295U);
  EXPECT_EQ(task.getPriorityValue(), 0);
  EXPECT_EQ(task.getStatusValue(), -1);
  EXPECT_EQ(task.getPriority(), 5);
  EXPECT_EQ(task.getStatus(), 1);
  for (const Field field : textFields)
    EXPECT_TRUE(task.getString(field).isNull()) << field;
  for (const Field field : dateFields) {
    EXPECT_EQ(task.getDateTime(field), QDateTime::fromSecsSinceEpoch(2147483647)) << field;
    EXPECT_EQ(task.getDateTime(field).timeSpec(), Qt::LocalTime) << field;
  }
}

TEST(TaskRecord, KeepsTextsSeparate) {
  Task task;
  for (const Field field : textFields)
    task.setString(field, QString::number(field));
  for (const Field field : textFields)
    EXPECT_EQ(task.getString(field), QString::number(field));
  task.setString(Task::TASK_FIELD_NOTE, QString(""));
  EXPECT_FALSE(task.getString(Task::TASK_FIELD_NOTE).isNull());
  task.setString(Task::TASK_FIELD_NOTE, QString());
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_NOTE).isNull());
}

TEST(TaskRecord, KeepsDatesSeparate) {
  Task task;
  for (const Field field : dateFields)
    task.setDateTime(field, moment.addDays(field));
  for (const Field field : dateFields)
    EXPECT_EQ(task.getDateTime(field), moment.addDays(field));
}

TEST(TaskRecord, ShowsSecondsAsLocalTime) {
  const EnvironmentVariable zone("TZ", "Asia/Almaty");
  Task task;
  for (const Field field : dateFields)
    task.setSeconds(field, 1141560000 + field);
  for (const Field field : dateFields) {
    EXPECT_EQ(task.getDateTime(field), UTIL_TimeConversion::fromUTC(1141560000 + field)) << field;
    EXPECT_EQ(task.getDateTime(field).timeSpec(), Qt::LocalTime) << field;
    EXPECT_EQ(task.getInstant(field), task.getDateTime(field)) << field;
    EXPECT_EQ(task.getInstant(field).timeSpec(), Qt::UTC) << field;
  }
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_ALARM).time(), QTime(18, 0, 5));
  task.setSeconds(Task::TASK_FIELD_DUE, Task::noDateSeconds);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE), Task::noDate());
  // An hour that the clock shows twice.
  for (const int seconds : {1709227800, 1709231400}) {
    task.setSeconds(Task::TASK_FIELD_END, seconds);
    EXPECT_EQ(UTIL_TimeConversion::toUTC(task.getDateTime(Task::TASK_FIELD_END)), seconds);
  }
}

TEST(TaskRecord, KeepsInstantsWhenZoneChanges) {
  Task task;
  const EnvironmentVariable zone("TZ", "Europe/Berlin");
  task.setSeconds(Task::TASK_FIELD_DUE, 1141560000);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE).time(), QTime(13, 0));
  const EnvironmentVariable east("TZ", "Asia/Shanghai");
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE).time(), QTime(20, 0));
}

TEST(TaskRecord, ReturnsDateTimesAsTheyWereSetAfterSeconds) {
  const QDateTime utc = moment.toUTC();
  for (const Field field : dateFields) {
    Task task;
    task.setSeconds(field, 1);
    task.setDateTime(field, utc);
    EXPECT_EQ(task.getDateTime(field).timeSpec(), Qt::UTC) << field;
    EXPECT_EQ(task.getDateTime(field), utc) << field;
    EXPECT_EQ(task.getInstant(field), utc) << field;
    task.setDateTime(field, QDateTime(QDate(2006, 2, 30), QTime(1, 0)));
    EXPECT_FALSE(task.getDateTime(field).isValid()) << field;
    EXPECT_FALSE(task.getInstant(field).isValid()) << field;
    const Task copy = task;
    EXPECT_FALSE(copy.getDateTime(field).isValid()) << field;
    for (const Field other : dateFields) {
      if (other != field) {
        EXPECT_EQ(copy.getDateTime(other), Task::noDate()) << other;
      }
    }
  }
}

TEST(TaskRecord, ReturnsDefaultsForFieldsOfOtherTypes) {
  setEngineNow(moment);
  Task task;
  for (const Field field : notTextFields) {
    EXPECT_TRUE(task.getString(field).isEmpty()) << field;
    EXPECT_FALSE(task.getString(field).isNull()) << field;
  }
  for (const Field field : notDateFields) {
    EXPECT_EQ(task.getDateTime(field), moment) << field;
    EXPECT_EQ(task.getInstant(field), moment) << field;
  }
  for (int field = -1; field <= 9; ++field) {
    if (field != Task::TASK_FIELD_UID) {
      EXPECT_EQ(task.getUINT32(Field(field)), 0U) << field;
    }
  }
  setEngineNow(QDateTime());
}

TEST(TaskRecord, IgnoresSettersForFieldsOfOtherTypes) {
  Task task;
  for (const Field field : notTextFields)
    task.setString(field, "x");
  for (const Field field : notDateFields) {
    task.setDateTime(field, moment);
    task.setSeconds(field, 1);
  }
  for (int field = -1; field <= 9; ++field) {
    if (field != Task::TASK_FIELD_UID)
      task.setUINT32(Field(field), 7);
  }
  for (const Field field : textFields)
    EXPECT_TRUE(task.getString(field).isNull()) << field;
  for (const Field field : dateFields)
    EXPECT_EQ(task.getDateTime(field), Task::noDate()) << field;
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);

  task.setUINT32(Task::TASK_FIELD_UID, 0x80000001U);
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), 0x80000001U);
}

TEST(TaskRecord, ReducesPriorityToThreeClasses) {
  constexpr struct {
    int stored;
    int folded;
  } cases[] = {{0, 5}, {1, 1}, {2, 1},  {3, 1},  {4, 1},  {5, 5},  {6, 9},       {7, 9},
               {8, 9}, {9, 9}, {10, 9}, {12, 9}, {-1, 9}, {-3, 9}, {INT_MIN, 9}, {INT_MAX, 9}};
  Task task;
  for (const auto& [stored, folded] : cases) {
    task.setPriority(stored);
    EXPECT_EQ(task.getPriorityValue(), stored);
    EXPECT_EQ(task.getPriority(), folded) << stored;
  }
}

TEST(TaskRecord, IsCompletedOnlyWithStatus0) {
  Task task;
  for (const int status : {-1, 1, 2, 7, 8, INT_MIN, INT_MAX}) {
    task.setStatus(status);
    EXPECT_EQ(task.getStatusValue(), status);
    EXPECT_EQ(task.getStatus(), 1) << status;
  }
  task.setStatus(0);
  EXPECT_EQ(task.getStatus(), 0);
}

TEST(TaskRecord, CopiesAreIndependent) {
  Task task;
  task.setUINT32(Task::TASK_FIELD_UID, 42);
  task.setPriority(3);
  task.setStatus(2);
  for (const Field field : textFields)
    task.setString(field, QString::number(field));
  for (const Field field : dateFields)
    task.setDateTime(field, moment.addDays(field));

  Task assigned;
  EXPECT_EQ(&(assigned = task), &assigned);
  Task copy(task);
  for (const Task* other : {&assigned, &copy}) {
    EXPECT_EQ(other->getUINT32(Task::TASK_FIELD_UID), 42U);
    EXPECT_EQ(other->getPriorityValue(), 3);
    EXPECT_EQ(other->getStatusValue(), 2);
    for (const Field field : textFields)
      EXPECT_EQ(other->getString(field), QString::number(field));
    for (const Field field : dateFields) {
      EXPECT_EQ(other->getDateTime(field), moment.addDays(field));
      EXPECT_EQ(other->getDateTime(field).timeSpec(), Qt::LocalTime);
    }
  }
  copy.setString(Task::TASK_FIELD_NOTE, "changed");
  copy.setDateTime(Task::TASK_FIELD_DUE, Task::noDate());
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), QString("2"));
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE), moment.addDays(Task::TASK_FIELD_DUE));
}

}  // namespace
