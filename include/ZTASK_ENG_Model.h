// The store of tasks and categories.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "export.h"
#include "qt2.h"

#include <QString>

class SVC_CT_ChangeReporter;

// What the operations of the store return.
enum ZTASK_ENG_Result : int {
  TASK_ENG_OK = 0,
  TASK_ENG_MEMORY_FULL = 1,       // the store is full, or memory for parameters was short
  TASK_ENG_BAD_PARAMETER = 2,     // an argument makes no sense
  TASK_ENG_NOT_FOUND = 3,         // no such task or category
  TASK_ENG_DATABASE_FAILURE = 6,  // the database refused
  TASK_ENG_NOT_OPEN = 7,          // the database could not be opened when the object was made
  TASK_ENG_EXISTS = 8,            // the category is there already
};

// Every user of the data makes an object of its own and uses it in the thread that made it. No
// object keeps anything of what is stored: each operation asks the database, which programs share.
// An operation that fails leaves the store as it was unless it says otherwise. It logs why if the
// database failed, memory was short, or no task has the UID or no category the name asked for. It
// logs nothing if the store is not open, which the constructor logged; if a category exists, or its
// UID is negative; if a range ends before it starts; and if a range, a category or the whole store
// holds no task.
//
// Texts, names of categories among them, are 16-bit units up to the first unit 0, kept unit by
// unit, null and empty told apart: a byte order mark at the beginning and half of a surrogate pair
// come back as they were given.
// Dates are kept in seconds since 1970 UTC, 32 bits of them, no-date as ZTASK_ENG_Task::noDate().
// Each task that is added, updated or removed is reported once to the change reporter.
// Lists that take results are appended to, never cleared, and stay as they were on failure.
//
// Besides the codes named with it, each operation that looks at the database gives
// TASK_ENG_DATABASE_FAILURE when the database refuses and TASK_ENG_NOT_OPEN on an object whose
// database is not open.
class ULO_EXPORT ZTASK_ENG_Model {
public:
  // The engine's UUID, as QUuid::toString() writes it: names the engine to the change reporter and
  // to the application lock.
  static constexpr char identifier[] = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";

  // Which tasks a list shows. Any other value is taken as completed.
  enum TASK_CATEGORY : int {
    TASK_CATEGORY_ALL = 0,
    TASK_CATEGORY_DUE = 1,         // due until the end of the local day, whatever the status; if
                                   // clocks show the day's last hour twice, until the second end
    TASK_CATEGORY_INCOMPLETE = 2,  // status 1
    TASK_CATEGORY_COMPLETED = 3,   // status 0
  };

  // How a list is sorted; full ties put the newest first. Any other value is taken as priority.
  enum TASK_SORT_FIELD : int {
    TASK_SORT_DUE = 0,       // due date, then priority, then UID from the highest
    TASK_SORT_PRIORITY = 1,  // priority, then due date, then UID from the highest
  };

  // Opens the store, and makes its tables with the null category and five named ones when they
  // are missing. On failure every operation but getTaskWritePath gives an error.
  ZTASK_ENG_Model();
  ZTASK_ENG_Model(const ZTASK_ENG_Model&) = delete;
  ZTASK_ENG_Model& operator=(const ZTASK_ENG_Model&) = delete;
  // Not virtual: objects are destroyed as what they were made as. Closes the log ports of the
  // whole process.
  ~ZTASK_ENG_Model();

  // Sets `path` to the directory "tasks" in $ULO_APP_WRITE_PATH, which is created when missing.
  // False, and `path` as it was, when it can't be.
  bool getTaskWritePath(QString& path);

  // Single tasks.

  // Stores a new task as it is and sets its uid, and its uuid if that was null. A category that
  // does not exist is created, and stays even if the task then can't be stored.
  // TASK_ENG_MEMORY_FULL.
  int addTask(ZTASK_ENG_Task& task);
  // Reads a task. TASK_ENG_NOT_FOUND, and `task` as it was. The category "None" stands for one
  // that was removed.
  int getTask(unsigned int uid, ZTASK_ENG_Task& task);
  // Stores `task` over the one with its uid, but never changes the stored uuid. Before that it
  // sets the record's revision to now; its end to now if status is 0 and there is none; its end
  // to no date if status is 1; its uuid if that was null. They stay set on failure.
  // TASK_ENG_MEMORY_FULL; TASK_ENG_NOT_FOUND when the task, or a category of that name, does not
  // exist.
  int updateTask(ZTASK_ENG_Task& task);
  // TASK_ENG_NOT_FOUND; TASK_ENG_MEMORY_FULL only if memory was short, not if the store is full.
  int removeTask(unsigned int uid);
  // Removes tasks one by one until one can't be: TASK_ENG_DATABASE_FAILURE, whatever the reason,
  // and those before it stay removed. TASK_ENG_BAD_PARAMETER for an empty list.
  int removeTasks(QValueList<unsigned int>& uids);

  // Categories. Names are stored and compared byte for byte in UTF-8; null is a name too. Half of a
  // surrogate pair, which has no UTF-8, is kept as the three bytes that its code would have, so
  // that no two names become one.

  // Adds a category and sets `uid` to its UID. TASK_ENG_MEMORY_FULL; TASK_ENG_EXISTS, and `uid`
  // as it was.
  int addCategory(QString& name, unsigned int& uid);
  // Renames the categories that are called like oldName in lower case to newName in lower case;
  // there may be none. Their tasks stay theirs. TASK_ENG_MEMORY_FULL.
  int renameCategory(QString& oldName, QString& newName);
  // Removes the first category of that name, if any; before that its tasks if `withTasks`.
  // Otherwise they read as of category "None". TASK_ENG_MEMORY_FULL if memory was short or the
  // tasks cannot be removed from a full store, but not if the category then cannot be: the tasks
  // stay removed.
  int removeCategory(QString& name, bool withTasks);
  // Removes all tasks of a category; there may be none. TASK_ENG_MEMORY_FULL.
  int removeTasksWithCategoryId(int categoryUid);
  // The names in the order of the categories' UIDs; a null text for the null category.
  int getAllCategories(QValueList<QString>& names);

  // Counts and lists of UIDs.

  // The number of all tasks.
  int getCount(int& count);
  // The number of tasks that the filter shows; a task due at the very last second of the day
  // counts as due. `count` is 0 with TASK_ENG_NOT_OPEN. TASK_ENG_MEMORY_FULL.
  int getCount(int& count, TASK_CATEGORY category);
  // The UIDs of all tasks from the lowest.
  int getAllIDs(QValueList<unsigned int>& ids);
  // The UIDs that the filter shows, sorted; a task due at the very last second of the day is not
  // yet due. TASK_ENG_MEMORY_FULL.
  int getAllIDs(QValueList<unsigned int>& ids, TASK_CATEGORY category, TASK_SORT_FIELD sort);

  // Whole tasks. A store that is not open gives TASK_ENG_DATABASE_FAILURE in the first two.

  // Tasks dated from `from` to `to`, both included, in seconds since 1970 UTC: by due date for
  // TASK_FIELD_DUE, else by end date; sorted by that date. A task without that date is dated
  // ZTASK_ENG_Task::noDateSeconds. No task is in a range beyond 32 bits. TASK_ENG_MEMORY_FULL;
  // TASK_ENG_BAD_PARAMETER when `from` is later than `to`; TASK_ENG_NOT_FOUND when there is none.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task::TASK_FIELD_T field, long from,
               long to);
  // Tasks of a category. TASK_ENG_MEMORY_FULL; TASK_ENG_NOT_FOUND when there is no such category
  // or it has no tasks.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& category);
  // Up to `count` tasks that the filter shows, sorted, from the task `start` on, which must be
  // stored with the same due date, priority and uid. TASK_ENG_MEMORY_FULL; TASK_ENG_BAD_PARAMETER
  // when `count` is not positive; TASK_ENG_NOT_FOUND when `start` is not stored like that or
  // nothing from there on passes the filter.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& start, int count,
               TASK_CATEGORY category, TASK_SORT_FIELD sort);
  // Tasks with `text` in their category's name, note, summary or uuid, case as given; an empty
  // text is in every field that is not empty. There may be none. TASK_ENG_NOT_FOUND when the
  // store holds no task.
  int getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& text);
  // Tasks with the example's due date, end date, priority value and status value, and with its
  // note and summary in theirs, in any case; no-date, 0, -1 and empty ask for nothing. There may
  // be none. `tasks` is to be empty. TASK_ENG_NOT_FOUND when the store holds no task.
  int getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& example);

protected:
  // Removes every task at once; the removals are reported as one batch. TASK_ENG_MEMORY_FULL.
  int removeAll();
  // Keeps the mode of the synchronisation that runs.
  void setSyncMode(int mode) { syncMode_ = mode; }

private:
  int checkTables();
  int getAllTasks(QValueList<ZTASK_ENG_Task>& tasks);
  void report(unsigned int uid, int changeType);

  bool open_ = true;
  QString reserved_;
  int reporterHandle_ = -1;
  SVC_CT_ChangeReporter* reporter_ = nullptr;
  int syncMode_ = 0;
};
