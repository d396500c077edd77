// Steps that operations of the store are made of. What they log carries the place of the
// operation.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "database.h"
#include "log_place.h"
#include "task_scripts.h"

// Makes the table of tasks with its indexes: all of them or none. A code of the store.
int createTaskTable();
// Makes the table of categories with its index, and, in a second step, its first rows.
int createCategoryTable(LogPlace place = LogPlace::current());

// Says that there is no memory for parameters; gives the code for it.
int noParameterBlock(LogPlace place = LogPlace::current());
// The store's code for a change that the database refused.
inline int changeFailed(int databaseResult) {
  return databaseResult == DB_FULL ? TASK_ENG_MEMORY_FULL : TASK_ENG_DATABASE_FAILURE;
}

// Finds a category by its name, whether the store is open or not. TASK_ENG_NOT_FOUND,
// TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE, and `uid` as it was.
int findCategory(const QString& name, unsigned int& uid, LogPlace place = LogPlace::current());
// Finds the name of a category, "None" when there is no such UID. TASK_ENG_NOT_OPEN,
// TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE, and `name` as it was.
int findCategoryName(bool open, unsigned int uid, QString& name,
                     LogPlace place = LogPlace::current());

// Writes length + 1 units: each with its bytes exchanged, then 0. Nothing for a null text.
void toExchangedUnits(const QString& text, unsigned short* units,
                      LogPlace place = LogPlace::current());

// Binds a text; a null one as the null value.
void bindText(ParameterBlock& block, int index, const QString& text);
// Binds a task's values in the order of the table. Between these two come the summary and the
// uuid. From parameter `first` on: priority, status and note.
void bindPriorityToNote(ParameterBlock& block, int first, const ZTASK_ENG_Task& task);
// From parameter `first` on: alarm, due date, end, category and revision.
void bindAlarmToRevision(ParameterBlock& block, int first, const ZTASK_ENG_Task& task,
                         unsigned int categoryUid);
// Binds what the filter compares with; nothing for all tasks.
void bindFilter(ParameterBlock& block, int index, ZTASK_ENG_Model::TASK_CATEGORY category);
// The index that has the tasks in that order.
inline const char* sortIndex(ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  return sort == ZTASK_ENG_Model::TASK_SORT_DUE ? "task_index_due" : "task_index_priority";
}

// Makes tasks of the rows of one result, whose columns are those of `Columns`.
template <typename Columns> class TaskReader {
public:
  TaskReader(bool open, const ResultRows& rows, LogPlace place = LogPlace::current())
      : open_(open), rows_(rows), place_(place) {}

  // Sets every field of `task` to the current row.
  void read(unsigned int uid, ZTASK_ENG_Task& task) const {
    task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, uid);
    task.setPriority(rows_.integer(Columns::priority));
    task.setStatus(rows_.integer(Columns::status));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, rows_.unicode(Columns::note));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, rows_.unicode(Columns::summary));
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, rows_.unicode(Columns::uuid));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, date(Columns::alarm));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, date(Columns::due));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_END, date(Columns::end));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, date(Columns::revision));
    QString category;
    findCategoryName(open_, rows_.uid(Columns::category), category, place_);
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category);
  }

  void append(QValueList<ZTASK_ENG_Task>& tasks) const {
    ZTASK_ENG_Task task(empty_);
    read(rows_.uid(Columns::uid), task);
    tasks.append(task);
  }

private:
  // Most dates of most tasks are none, and asking for the local time of one takes a while.
  [[nodiscard]] QDateTime date(int column) const {
    const int seconds = rows_.integer(column);
    return seconds == ZTASK_ENG_Task::noDateSeconds ? noDate_
                                                    : UTIL_TimeConversion::fromUTC(seconds);
  }

  bool open_;
  const ResultRows& rows_;
  LogPlace place_;
  const ZTASK_ENG_Task empty_;
  const QDateTime noDate_ = empty_.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE);
};

// Appends the tasks before the first row whose flag is `endMark`, or all.
void appendMarkedTasks(bool open, ResultRows& rows, bool endMark, QValueList<ZTASK_ENG_Task>& tasks,
                       LogPlace place = LogPlace::current());
