// The fixture of tests that use the store on the real database.
#pragma once

#include "SVC_CT_ChangeReporter.h"
#include "ZTASK_ENG_Model.h"
#include "log_capture.h"
#include "raw_database.h"
#include "store_subclass.h"
#include "temporary_directory.h"
#include "test_clock.h"
#include "ulo/change_journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

using Task = ZTASK_ENG_Task;

// Short names of result codes, for the tests of other components.
constexpr int ok = TASK_ENG_OK;
constexpr int notFound = TASK_ENG_NOT_FOUND;
constexpr int databaseFailure = TASK_ENG_DATABASE_FAILURE;

class StoreTest : public testing::Test {
protected:
  using Filter = ZTASK_ENG_Model::TASK_CATEGORY;
  static constexpr Filter allTasks = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  static constexpr Filter dueTasks = ZTASK_ENG_Model::TASK_CATEGORY_DUE;
  static constexpr Filter incompleteTasks = ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE;
  static constexpr Filter completedTasks = ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED;
  using Sort = ZTASK_ENG_Model::TASK_SORT_FIELD;
  static constexpr Sort byDueDate = ZTASK_ENG_Model::TASK_SORT_DUE;
  static constexpr Sort byPriority = ZTASK_ENG_Model::TASK_SORT_PRIORITY;

  // The clock shows noon of a winter day in Berlin.
  void SetUp() override { setEngineNow(now()); }
  void TearDown() override { setEngineNow(QDateTime()); }

  static QDateTime now() { return {QDate(2006, 3, 5), QTime(12, 0)}; }
  static int seconds(const QDateTime& dateTime) {
    return static_cast<int>(dateTime.toSecsSinceEpoch());
  }

  // Opens the store on first use, and again after close().
  Store& store() {
    if (!store_)
      store_ = std::make_unique<Store>();
    return *store_;
  }
  void close() { store_.reset(); }
  // Creates a complete database and closes it.
  void prepare() {
    store();
    close();
  }
  RawDatabase raw() const { return RawDatabase(directory_.path()); }
  std::vector<std::string> sql(const std::string& text) const { return raw().run(text); }

  // Returns what the store logs while `work` runs, without line numbers.
  template <typename Work> std::string logOf(Work work) {
    LogCapture inner;
    work();
    return inner.withoutLines();
  }

  static Task task(const QString& summary) {
    Task result;
    result.setString(Task::TASK_FIELD_SUMMARY, summary);
    result.setString(Task::TASK_FIELD_NOTE, "note");
    return result;
  }
  // A task with the fields by which lists are filtered and sorted.
  static Task task(const QString& summary, int priority, int status,
                   const QDateTime& due = Task::noDate()) {
    Task result = task(summary);
    result.setPriority(priority);
    result.setStatus(status);
    result.setDateTime(Task::TASK_FIELD_DUE, due);
    return result;
  }
  unsigned int add(Task& task) {
    EXPECT_EQ(store().addTask(task), TASK_ENG_OK);
    return task.getUINT32(Task::TASK_FIELD_UID);
  }
  unsigned int add(Task&& task) { return add(task); }
  unsigned int addCategory(const QString& name) {
    QString text = name;
    unsigned int uid = 0;
    EXPECT_EQ(store().addCategory(text, uid), TASK_ENG_OK);
    return uid;
  }
  Task get(unsigned int uid) {
    Task task;
    EXPECT_EQ(store().getTask(uid, task), TASK_ENG_OK);
    return task;
  }
  int code(unsigned int uid) {
    Task task;
    return store().getTask(uid, task);
  }
  std::vector<unsigned int> uids() {
    QValueList<unsigned int> list;
    EXPECT_EQ(store().getAllIDs(list), TASK_ENG_OK);
    return {list.begin(), list.end()};
  }
  std::vector<std::string> categories() {
    QValueList<QString> names;
    EXPECT_EQ(store().getAllCategories(names), TASK_ENG_OK);
    std::vector<std::string> result;
    for (const QString& name : names)
      result.push_back(name.isNull() ? "(null)" : name.toStdString());
    return result;
  }
  int count() {
    int result = -1;
    EXPECT_EQ(store().getCount(result), TASK_ENG_OK);
    return result;
  }

  // The changes reported since the last call, each as the functions below write it.
  std::vector<std::string> reports() {
    ulo::ChangeJournal journal(directory_.path().string());
    std::vector<ulo::Change> changes;
    EXPECT_TRUE(journal.entriesSince(lastReport_, changes));
    std::vector<std::string> result;
    for (const ulo::Change& change : changes) {
      EXPECT_EQ(change.source, "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}");
      result.push_back(StoreTest::change(change.uid, static_cast<int>(change.type)));
      lastReport_ = change.entry;
    }
    return result;
  }
  static std::string addition(unsigned int uid) { return change(uid, SVC_CT_ADDED); }
  static std::string update(unsigned int uid) { return change(uid, SVC_CT_UPDATED); }
  static std::string removal(unsigned int uid) { return change(uid, SVC_CT_REMOVED); }
  // All stored rows, for comparison.
  std::vector<std::string> everything() const {
    RawDatabase database(directory_.path());
    std::vector<std::string> rows = database.run("SELECT * FROM task_table_task");
    for (const std::string& row : database.run("SELECT * FROM task_table_category"))
      rows.push_back(row);
    return rows;
  }

  DataDirectory directory_;

private:
  static std::string change(unsigned int uid, int type) {
    return std::to_string(uid) + " " + std::to_string(type);
  }

  std::int64_t lastReport_ = 0;
  // Keeps what is logged outside of logOf out of the test's output.
  LogCapture log_;
  std::unique_ptr<Store> store_;
};

inline std::vector<unsigned int> uidsOf(const QValueList<Task>& tasks) {
  std::vector<unsigned int> result;
  for (const Task& task : tasks)
    result.push_back(task.getUINT32(Task::TASK_FIELD_UID));
  return result;
}

// A line logged by the store's source, as logOf returns it.
inline std::string line(const std::string& text) {
  return "(utility/ZTASK_ENG_Model.cpp)" + text;
}

MATCHER_P(HasLine, text, "") {
  return arg.find(line(text)) != std::string::npos;
}

// Matches a record whose fields are all equal. A null text differs from an empty one.
MATCHER_P(IsSameTask, other, "") {
  constexpr Task::TASK_FIELD_T texts[] = {Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_NOTE,
                                          Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_UUID};
  constexpr Task::TASK_FIELD_T dates[] = {Task::TASK_FIELD_ALARM, Task::TASK_FIELD_DUE,
                                          Task::TASK_FIELD_END, Task::TASK_FIELD_REVISION};
  bool same = arg.getUINT32(Task::TASK_FIELD_UID) == other.getUINT32(Task::TASK_FIELD_UID) &&
              arg.getPriorityValue() == other.getPriorityValue() &&
              arg.getStatusValue() == other.getStatusValue();
  for (const Task::TASK_FIELD_T field : texts) {
    const QString left = arg.getString(field);
    const QString right = other.getString(field);
    if (left.isNull() != right.isNull() || left != right) {
      *result_listener << "text " << field << " is " << left.toStdString();
      same = false;
    }
  }
  for (const Task::TASK_FIELD_T field : dates) {
    if (arg.getDateTime(field) != other.getDateTime(field)) {
      *result_listener << "date " << field << " is "
                       << arg.getDateTime(field).toString(Qt::ISODate).toStdString();
      same = false;
    }
  }
  return same;
}
