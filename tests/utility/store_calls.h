// A store on a platform of stand-ins, which record its calls.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "call_record.h"
#include "call_steps.h"
#include "store_subclass.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

using Task = ZTASK_ENG_Task;

// The two ways in which the database fails that the store tells apart.
inline constexpr int diskFull = DB_FULL;
inline constexpr int otherFailure = DB_IO;
// The store's code for a change that failed like this.
inline int codeOfFailedChange(int databaseCode) {
  return databaseCode == diskFull ? TASK_ENG_MEMORY_FULL : TASK_ENG_DATABASE_FAILURE;
}

// The test's clock shows noon UTC of this day, in seconds since 1970.
inline constexpr int noon = 1141560000;
inline constexpr int lastSecondOfToday = 1141599599;  // 23:59:59 in Berlin
inline constexpr int noDate = Task::noDateSeconds;

// Statuses, as they are stored.
inline constexpr int completed = 0;
inline constexpr int incomplete = 1;

// Outcomes of statements. Most scripts return a flag with each row, which means something else in
// each of them.
inline calls::Outcome tablesPresent(bool tasks, bool categories) {
  return calls::returns({{int{tasks}, int{categories}}});  // check_tables
}
inline calls::Outcome flag(bool value) {
  return calls::returns({{int{value}}});
}
inline constexpr int workUid = 7;
inline calls::Outcome foundCategory(int uid) {
  return calls::returns({{int{false}, uid}});  // category_uid_by_name
}
inline const calls::Outcome foundWork = foundCategory(workUid);
inline const calls::Outcome unknownCategory = flag(true);  // category_uid_by_name
inline calls::Row listed(const calls::Field& category) {
  return {category, int{true}};
}
// all_categories; the last row is not a category.
inline calls::Outcome categories(std::vector<calls::Row> rows) {
  rows.push_back({calls::null, int{false}});
  return calls::returns(std::move(rows));
}

// A row of the task table as the scripts return it.
struct TaskRow {
  int priority = 0;
  int status = 0;
  calls::Field note = calls::null;
  calls::Field summary = calls::null;
  calls::Field uuid = calls::null;
  int alarm = 0;
  int due = 0;
  int end = 0;
  int revision = 0;
  int category = 0;
  int uid = 0;

  // With a flag, as most scripts have it.
  [[nodiscard]] calls::Row flagged(bool flag) const {
    return {priority, status, note,     summary,  uuid, alarm,
            due,      end,    revision, category, uid,  int{flag}};
  }
  // As all_tasks has it.
  [[nodiscard]] calls::Row plain() const {
    return {uid, priority, status, note, summary, uuid, alarm, due, end, revision, category};
  }
};

// Looks up the UID of a category. If there is no such category, a log line precedes freedRows().
inline calls::Steps lookedUpCategory(const calls::Value& name) {
  return calls::withParameters({name}, calls::queried("category_uid_by_name"));
}

// The values of StoreCalls::milk(), as they are bound.
inline constexpr int milkPriority = 3;
inline constexpr int milkStatus = 2;
inline const calls::Value milkNote = calls::exchanged(u"");
inline const calls::Value milkSummary = calls::exchanged(u"你a");
inline const calls::Value milkUuid = calls::exchanged(u"u");
inline constexpr int milkAlarm = 11;
inline constexpr int milkDue = 22;
inline constexpr int milkRevision = 44;

class StoreCalls : public testing::Test {
protected:
  void SetUp() override { setEngineNow(QDateTime::fromSecsSinceEpoch(noon)); }
  void TearDown() override {
    store_.reset();
    EXPECT_EQ(calls::held(), 0);
    setEngineNow(QDateTime());
  }
  // An open store. From now on the stand-ins follow `plan`.
  Store& open(const calls::Plan& plan = {}) {
    calls::begin({.outcomes = {{"check_tables", tablesPresent(true, true)},
                               {"all_categories", categories({listed(calls::null)})}}});
    store_ = std::make_unique<Store>();
    calls::begin(plan);
    return *store_;
  }
  // A store whose database could not be opened.
  Store& closed() {
    calls::begin({.openCode = otherFailure});
    store_ = std::make_unique<Store>();
    calls::begin({});
    return *store_;
  }

  // A task in the category "work", without an end date.
  static Task milk() {
    Task task;
    task.setPriority(milkPriority);
    task.setStatus(milkStatus);
    task.setString(Task::TASK_FIELD_CATEGORY, "work");
    task.setString(Task::TASK_FIELD_NOTE, "");
    task.setString(Task::TASK_FIELD_SUMMARY, QString::fromUtf8("你a"));
    task.setString(Task::TASK_FIELD_UUID, "u");
    task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime::fromSecsSinceEpoch(milkAlarm));
    task.setDateTime(Task::TASK_FIELD_DUE, QDateTime::fromSecsSinceEpoch(milkDue));
    task.setDateTime(Task::TASK_FIELD_REVISION, QDateTime::fromSecsSinceEpoch(milkRevision));
    return task;
  }

  std::unique_ptr<Store> store_;
};
