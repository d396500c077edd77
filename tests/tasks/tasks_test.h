// Base of the tests of the application's parts: with its own store and without a display.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "gui_test.h"
#include "store_test.h"

#include <QSettings>

#include <functional>
#include <optional>

class Tasks : public testing::Test {
protected:
  Tasks() {
    // The settings are the test's own, too.
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                       QString::fromStdString((directory_.path() / "config").string()));
  }

  // The fields of a task; others are those of a new record with status 1.
  struct Given {
    QString summary;
    std::optional<QDateTime> due = std::nullopt;
    int priority = 0;
    int status = 1;
    QString category = {};
  };

  // Stores a task. Returns its UID.
  unsigned int add(const Given& given) {
    Task task;
    task.setString(Task::TASK_FIELD_SUMMARY, given.summary);
    if (given.due)
      task.setDateTime(Task::TASK_FIELD_DUE, *given.due);
    task.setPriority(given.priority);
    task.setStatus(given.status);
    task.setString(Task::TASK_FIELD_CATEGORY, given.category);
    EXPECT_EQ(store_.addTask(task), ok);
    return task.getUINT32(Task::TASK_FIELD_UID);
  }
  unsigned int add(const char* summary) { return add({.summary = QString::fromUtf8(summary)}); }

  Task stored(unsigned int uid) {
    Task task;
    EXPECT_EQ(store_.getTask(uid, task), ok);
    return task;
  }
  bool isStored(unsigned int uid) {
    Task task;
    return store_.getTask(uid, task) == ok;
  }
  // The UIDs of all tasks from the lowest.
  std::vector<unsigned int> allUids() {
    QValueList<unsigned int> uids;
    EXPECT_EQ(store_.getAllIDs(uids), ok);
    return {uids.begin(), uids.end()};
  }

  // Processes events until the condition holds. Returns false after two minutes: an emulated
  // processor reads tens of thousands of tasks in about one.
  static bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 120'000);
  }

  DataDirectory directory_;
  LogCapture log_;
  ZTASK_ENG_Model store_;
  RawDatabase raw_{directory_.path()};
};
