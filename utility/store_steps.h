// Steps of store operations. They log the source location of the operation.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "database.h"
#include "log_place.h"
#include "task_scripts.h"

#include <utility>

// Creates the task table with its indexes, or nothing. Returns a code of the store.
int createTaskTable();
// Creates the category table with its index and, in a second step, its first rows.
int createCategoryTable(LogPlace place = LogPlace::current());

// Logs that memory is exhausted and returns the code for it.
int noMemory(LogPlace place = LogPlace::current());
// Converts the database's result of a failed change to a code of the store.
inline int changeFailed(int databaseResult) {
  return databaseResult == DB_FULL ? TASK_ENG_MEMORY_FULL : TASK_ENG_DATABASE_FAILURE;
}

// Finds a category by its name, whether or not the store is open. Fails with TASK_ENG_NOT_FOUND,
// TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE and leaves `uid` unchanged.
int findCategory(const QString& name, unsigned int& uid, LogPlace place = LogPlace::current());
// Finds the name of a category; "None" if the UID is unknown. Fails with TASK_ENG_NOT_OPEN,
// TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE and leaves `name` unchanged.
int findCategoryName(bool open, unsigned int uid, QString& name,
                     LogPlace place = LogPlace::current());

// Writes length + 1 units: each with its bytes exchanged, then 0. Writes nothing for a null text.
void toExchangedUnits(const QString& text, unsigned short* units,
                      LogPlace place = LogPlace::current());

// Binds a text; a null text as null.
void bindText(ParameterBlock& block, int index, const QString& text);
// These two bind the values of a task in the order of the table; the summary and the uuid come in
// between. From parameter `first` on: priority, status and note.
void bindPriorityToNote(ParameterBlock& block, int first, const ZTASK_ENG_Task& task);
// From parameter `first` on: alarm, due date, end, category and revision.
void bindAlarmToRevision(ParameterBlock& block, int first, const ZTASK_ENG_Task& task,
                         unsigned int categoryUid);
// Binds the filter operand, if the filter has one.
void bindFilter(ParameterBlock& block, int index, ZTASK_ENG_Model::TASK_CATEGORY category);
// The index with this order.
inline const char* sortIndex(ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  return sort == ZTASK_ENG_Model::TASK_SORT_DUE ? "task_index_due" : "task_index_priority";
}

// Removes the items appended to a list during its lifetime, except those before the last keep().
template <typename Value> class Growth {
public:
  explicit Growth(QValueList<Value>& list) : list_(list), count_(list.count()) {}
  Growth(const Growth&) = delete;
  Growth& operator=(const Growth&) = delete;
  ~Growth() { list_.truncate(count_); }
  void keep() { count_ = list_.count(); }

private:
  QValueList<Value>& list_;
  uint count_;
};

// Converts the rows of a result, which has the columns `Columns`, to tasks.
template <typename Columns> class TaskReader {
public:
  TaskReader(bool open, const ResultRows& rows, LogPlace place = LogPlace::current())
      : open_(open), rows_(rows), place_(place) {}

  // Looks up the name of the current row's category.
  [[nodiscard]] QString category() const {
    QString name;
    findCategoryName(open_, rows_.uid(Columns::category), name, place_);
    return name;
  }

  // Sets every field of `task` to the current row. Looks up the category last.
  void read(unsigned int uid, ZTASK_ENG_Task& task) const {
    readColumns(uid, task);
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category());
  }

  void append(QValueList<ZTASK_ENG_Task>& tasks) const {
    ZTASK_ENG_Task task;
    read(rows_.uid(Columns::uid), task);
    tasks.append(std::move(task));
  }
  // The same for a row whose category has been looked up.
  void append(QValueList<ZTASK_ENG_Task>& tasks, const QString& category) const {
    tasks.append(task(category));
  }
  [[nodiscard]] ZTASK_ENG_Task task(const QString& category) const {
    ZTASK_ENG_Task task;
    readColumns(rows_.uid(Columns::uid), task);
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category);
    return task;
  }

private:
  void readColumns(unsigned int uid, ZTASK_ENG_Task& task) const {
    task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, uid);
    task.setPriority(rows_.integer(Columns::priority));
    task.setStatus(rows_.integer(Columns::status));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, rows_.unicode(Columns::note));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, rows_.unicode(Columns::summary));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, rows_.unicode(Columns::uuid));
    task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_ALARM, rows_.integer(Columns::alarm));
    task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_DUE, rows_.integer(Columns::due));
    task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_END, rows_.integer(Columns::end));
    task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_REVISION, rows_.integer(Columns::revision));
  }

  bool open_;
  const ResultRows& rows_;
  LogPlace place_;
};

// Appends the tasks up to the first row whose flag is `endMark`, or all.
void appendMarkedTasks(bool open, ResultRows& rows, bool endMark, QValueList<ZTASK_ENG_Task>& tasks,
                       LogPlace place = LogPlace::current());
