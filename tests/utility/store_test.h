// What tests of the store on the real database share.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "change_journal.h"
#include "log_capture.h"
#include "raw_database.h"
#include "temporary_directory.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

using Task = ZTASK_ENG_Task;

constexpr int ok = 0;
constexpr int memoryFull = 1;
constexpr int badParameter = 2;
constexpr int notFound = 3;
constexpr int databaseFailure = 6;
constexpr int notOpen = 7;
constexpr int exists = 8;

// A store with what subclasses may use.
class Store : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};

class StoreTest : public testing::Test {
protected:
  // The clock stands at noon of a winter day in Berlin.
  void SetUp() override { setEngineNow(now()); }
  void TearDown() override { setEngineNow(QDateTime()); }

  static QDateTime now() { return {QDate(2006, 3, 5), QTime(12, 0)}; }
  static int seconds(const QDateTime& dateTime) {
    return static_cast<int>(dateTime.toSecsSinceEpoch());
  }

  // The store, opened at the first use and again after close().
  Store& store() {
    if (!store_)
      store_ = std::make_unique<Store>();
    return *store_;
  }
  void close() { store_.reset(); }
  // A database complete but closed.
  void prepare() {
    store();
    close();
  }
  RawDatabase raw() const { return RawDatabase(directory_.path()); }
  std::vector<std::string> sql(const std::string& text) const { return raw().run(text); }

  // The store's lines while `work` ran, each without its line number.
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
  // A task of those fields that lists go by.
  static Task task(const QString& summary, int priority, int status,
                   const QDateTime& due = Task::noDate()) {
    Task result = task(summary);
    result.setPriority(priority);
    result.setStatus(status);
    result.setDateTime(Task::TASK_FIELD_DUE, due);
    return result;
  }
  unsigned int add(Task& task) {
    EXPECT_EQ(store().addTask(task), ok);
    return task.getUINT32(Task::TASK_FIELD_UID);
  }
  unsigned int add(Task&& task) { return add(task); }
  unsigned int addCategory(const QString& name) {
    QString text = name;
    unsigned int uid = 0;
    EXPECT_EQ(store().addCategory(text, uid), ok);
    return uid;
  }
  Task get(unsigned int uid) {
    Task task;
    EXPECT_EQ(store().getTask(uid, task), ok);
    return task;
  }
  int code(unsigned int uid) {
    Task task;
    return store().getTask(uid, task);
  }
  std::vector<unsigned int> uids() {
    QValueList<unsigned int> list;
    EXPECT_EQ(store().getAllIDs(list), ok);
    return {list.begin(), list.end()};
  }
  std::vector<std::string> categories() {
    QValueList<QString> names;
    EXPECT_EQ(store().getAllCategories(names), ok);
    std::vector<std::string> result;
    for (const QString& name : names)
      result.push_back(name.isNull() ? "(null)" : name.toStdString());
    return result;
  }
  int count() {
    int result = -1;
    EXPECT_EQ(store().getCount(result), ok);
    return result;
  }

  // What was reported since the last call, each as "UID TYPE".
  std::vector<std::string> reports() {
    ulo::ChangeJournal journal(directory_.path().string());
    std::vector<ulo::Change> changes;
    EXPECT_TRUE(journal.entriesSince(lastReport_, changes));
    std::vector<std::string> result;
    for (const ulo::Change& change : changes) {
      EXPECT_EQ(change.source, "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}");
      result.push_back(std::to_string(change.uid) + " " +
                       std::to_string(static_cast<int>(change.type)));
      lastReport_ = change.entry;
    }
    return result;
  }
  // Everything that is stored, for comparing.
  std::vector<std::string> everything() const {
    RawDatabase database(directory_.path());
    std::vector<std::string> rows = database.run("SELECT * FROM task_table_task");
    for (const std::string& row : database.run("SELECT * FROM task_table_category"))
      rows.push_back(row);
    return rows;
  }

  DataDirectory directory_;

private:
  std::int64_t lastReport_ = 0;
  // What is logged outside of logOf goes here and not to the test's output.
  LogCapture log_;
  std::unique_ptr<Store> store_;
};

inline std::vector<unsigned int> uidsOf(const QValueList<Task>& tasks) {
  std::vector<unsigned int> result;
  for (const Task& task : tasks)
    result.push_back(task.getUINT32(Task::TASK_FIELD_UID));
  return result;
}

// A line of the store's source, as logOf gives it.
inline std::string line(const std::string& text) {
  return "(utility/ZTASK_ENG_Model.cpp)" + text;
}

MATCHER_P(HasLine, text, "") {
  return arg.find(line(text)) != std::string::npos;
}

// Whether every field of two records is the same, texts unit by unit, null and empty apart.
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
