// The store of tasks and categories.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "qt2.h"
#include "ulo/export.h"

#include <QString>

class SVC_CT_ChangeReporter;

// What the operations of the store return.
enum ZTASK_ENG_Result : int {
  TASK_ENG_OK = 0,
  TASK_ENG_MEMORY_FULL = 1,       // the store or the disk is full, or memory ran out
  TASK_ENG_BAD_PARAMETER = 2,     // invalid argument
  TASK_ENG_NOT_FOUND = 3,         // no such task or category
  TASK_ENG_DATABASE_FAILURE = 6,  // the database reported a failure
  TASK_ENG_NOT_OPEN = 7,          // the constructor could not open the database
  TASK_ENG_EXISTS = 8,            // the category already exists
};

// Create one object for each user of the data, and use it only in the thread that created it. An
// object caches no data: every operation reads the database, which programs share. Unless stated
// otherwise, an operation that fails leaves the store unchanged.
//
// An operation logs the reason if the database failed, memory ran out, or no task has the requested
// UID or no category the requested name. It logs nothing if the store is not open (the constructor
// has logged that); if a category exists or its UID is negative; if a range ends before it starts;
// and if a range, a category or the whole store contains no task.
//
// Texts, including category names, are sequences of 16-bit units up to the first unit 0. They are
// stored unit by unit: a leading byte order mark and an unpaired surrogate are preserved, and null
// is distinct from empty. Dates are stored as 32-bit seconds since 1970 UTC, "no date" as
// ZTASK_ENG_Task::noDate(). Each task that is added, updated or removed is reported once to the
// change reporter. Results are appended to the caller's list, which is never cleared and stays
// unchanged on failure.
//
// Besides the codes listed with it, each operation that reads or writes the database returns
// TASK_ENG_DATABASE_FAILURE if the database fails and TASK_ENG_NOT_OPEN if it is not open. An
// operation that writes waits for other programs and threads that write, currently up to 10 seconds
// for each of its steps, and then returns TASK_ENG_DATABASE_FAILURE.
//
// No operation throws. If memory is exhausted, it returns TASK_ENG_MEMORY_FULL, or
// TASK_ENG_DATABASE_FAILURE if the database lacks the memory; getTaskWritePath returns false.
//
// Some operations return TASK_ENG_OK although a step has failed: addTask, if it cannot add the
// category (the task is then read with category "None"); operations that read tasks, if they cannot
// read the name of a category, which is then null; and the constructor and removeAll, which do not
// check that their transactions begin and end. To detect this, compare DB_FailureCount (ulodb2.h)
// before and after.
//
// To store several changes as one, call DB_Open(1) and DB_BeginWrite (ulodb2.h), then the
// operations, and at the end DB_EndWrite and DB_Close. removeAll, and the constructor if it creates
// the tables, begin and end transactions themselves and must not be called in between. Do not group
// with DB_BeginTransaction: removeTasksWithCategoryId and removeCategory roll such a transaction
// back if tasks cannot be removed.
class ULO_EXPORT ZTASK_ENG_Model {
public:
  // The engine's UUID in the form of QUuid::toString(). It identifies the engine to the change
  // reporter and to the application lock.
  static constexpr char identifier[] = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";

  // Which tasks a list contains. Any other value means completed.
  enum TASK_CATEGORY : int {
    TASK_CATEGORY_ALL = 0,
    TASK_CATEGORY_DUE = 1,         // due until the end of the local day, with any status; if the
                                   // day's last hour occurs twice, until the second one ends
    TASK_CATEGORY_INCOMPLETE = 2,  // getStatusValue() is 1. A task with a value other than 0 and 1
                                   // (accepted, sent, none, ...) is only in ALL and DUE
    TASK_CATEGORY_COMPLETED = 3,   // getStatusValue() is 0
  };

  // How a list is sorted. Due dates ascend, and tasks without one come last. Priorities ascend by
  // getPriorityValue(): 0 (none), then 1 (highest) to 9. Tasks that are equal in both are sorted by
  // descending UID, so the newest comes first. Any other value means priority.
  enum TASK_SORT_FIELD : int {
    TASK_SORT_DUE = 0,       // due date, then priority, then UID
    TASK_SORT_PRIORITY = 1,  // priority, then due date, then UID
  };

  // Opens the store; like DB_Open, this can wait for other programs, currently up to 30 seconds. If
  // its tables are missing, creates them with the null category and five named ones. On failure,
  // every operation except getTaskWritePath returns an error. To find out whether the store is
  // open, call getCount(count).
  ZTASK_ENG_Model();
  ZTASK_ENG_Model(const ZTASK_ENG_Model&) = delete;
  ZTASK_ENG_Model& operator=(const ZTASK_ENG_Model&) = delete;
  // Not virtual: do not delete a derived object through a pointer to this class. Closes the log
  // ports of the whole process.
  ~ZTASK_ENG_Model();

  // Sets `path` to the directory "tasks" in $ULO_APP_WRITE_PATH, and creates it if it is missing.
  // If the variable is not set, the directory is "tasks" in the current directory. Returns false
  // and leaves `path` unchanged if it cannot be created.
  bool getTaskWritePath(QString& path);

  // Single tasks.

  // Stores a new task as given and sets its uid, and its uuid if that was null. Does not set the
  // revision (TASK_FIELD_REVISION): set it to the current time if the task is new. Creates the
  // category if it does not exist. On failure, only the uuid may have been set. Can fail with
  // TASK_ENG_MEMORY_FULL.
  int addTask(ZTASK_ENG_Task& task);
  // Reads a task. If its category was removed, its category is "None", and updateTask fails unless
  // a category of that name exists; see below. Fails with TASK_ENG_NOT_FOUND if no task has this
  // UID, and leaves `task` unchanged.
  int getTask(unsigned int uid, ZTASK_ENG_Task& task);
  // Overwrites the stored task that has the uid of `task`, except for its uuid, which never
  // changes. Before that, sets these fields of `task`, which stay set on failure: the revision to
  // now; the end date to now if getStatusValue() is 0 and no end date is set, or to no date if
  // getStatusValue() is 1; the uuid to a new one if it was null. That uuid is not stored: use the
  // one that getTask returns. Can fail with TASK_ENG_MEMORY_FULL. Fails with TASK_ENG_NOT_FOUND if
  // the task or its category does not exist.
  int updateTask(ZTASK_ENG_Task& task);
  // Removes a task. Fails with TASK_ENG_NOT_FOUND if no task has this UID. Returns
  // TASK_ENG_MEMORY_FULL if memory is exhausted, but TASK_ENG_DATABASE_FAILURE if the disk is full.
  int removeTask(unsigned int uid);
  // Removes tasks one by one. If one cannot be removed, returns TASK_ENG_DATABASE_FAILURE, whatever
  // the reason; the tasks before it stay removed. Fails with TASK_ENG_BAD_PARAMETER if the list is
  // empty, and with TASK_ENG_NOT_OPEN if the store is not open.
  int removeTasks(QValueList<unsigned int>& uids);

  // Categories. Names are stored and compared byte for byte in UTF-8. An unpaired surrogate, which
  // has no UTF-8 form, is stored as the three bytes of its code, so that distinct names stay
  // distinct.
  //
  // A task without a category has the category with the null name, the null category, which the
  // constructor adds if it is missing. It differs from the category with the empty name and from
  // "none", an ordinary category that a new store contains. A task whose category was removed is
  // read with the category "None", which need not exist: updateTask then fails with
  // TASK_ENG_NOT_FOUND, and addTask creates a category of that name. Set TASK_FIELD_CATEGORY of
  // such a task to null before you store it.

  // Adds a category and sets `uid` to its UID. Can fail with TASK_ENG_MEMORY_FULL. Fails with
  // TASK_ENG_EXISTS if the category exists, and leaves `uid` unchanged.
  int addCategory(QString& name, unsigned int& uid);
  // Renames each category called oldName, converted to lower case, to newName, converted to lower
  // case. Does not change the arguments. A category whose name contains a capital letter is never
  // found, and neither is the null category. Returns TASK_ENG_OK if no category is found. Does not
  // check whether newName exists: if it does, there are then several categories of that name. Tasks
  // stay in their category. Can fail with TASK_ENG_MEMORY_FULL.
  int renameCategory(QString& oldName, QString& newName);
  // Removes the first category of that name, if any. If `withTasks` is set, first removes its
  // tasks, which stay removed even if the category then cannot be removed. Otherwise its tasks read
  // as category "None". Returns TASK_ENG_MEMORY_FULL if memory is exhausted, or if the tasks cannot
  // be removed because the disk is full; but TASK_ENG_DATABASE_FAILURE if the category itself
  // cannot be removed because the disk is full.
  int removeCategory(QString& name, bool withTasks);
  // Removes all tasks of a category, if it has any. Can fail with TASK_ENG_MEMORY_FULL.
  int removeTasksWithCategoryId(int categoryUid);
  // Appends the names of all categories in UID order; the name of the null category is null.
  int getAllCategories(QValueList<QString>& names);

  // Counts and lists of UIDs.

  // Sets `count` to the number of all tasks.
  int getCount(int& count);
  // Sets `count` to the number of tasks that match the filter. A task due in the last second of the
  // day counts as due. Sets `count` to 0 if it fails with TASK_ENG_NOT_OPEN. Can fail with
  // TASK_ENG_MEMORY_FULL.
  int getCount(int& count, TASK_CATEGORY category);
  // Appends the UIDs of all tasks in ascending order.
  int getAllIDs(QValueList<unsigned int>& ids);
  // Appends the UIDs of the tasks that match the filter, in sort order. A task due in the last
  // second of the day is not yet due. Can fail with TASK_ENG_MEMORY_FULL.
  int getAllIDs(QValueList<unsigned int>& ids, TASK_CATEGORY category, TASK_SORT_FIELD sort);

  // Whole tasks.

  // Appends the tasks dated from `from` to `to`, both inclusive, in seconds since 1970 UTC, sorted
  // by date. The date is the due date for TASK_FIELD_DUE, otherwise the end date. A task without it
  // is dated ZTASK_ENG_Task::noDateSeconds, so it is included if `to` is that or later: pass
  // noDateSeconds - 1 or less to leave it out. A range that lies outside 32 bits contains no task.
  // Can fail with TASK_ENG_MEMORY_FULL. Fails with TASK_ENG_BAD_PARAMETER if `from` is later than
  // `to`, and with TASK_ENG_NOT_FOUND if the range contains no task. Returns
  // TASK_ENG_DATABASE_FAILURE, not TASK_ENG_NOT_OPEN, if the store is not open.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task::TASK_FIELD_T field, long from,
               long to);
  // Appends the tasks of a category. Can fail with TASK_ENG_MEMORY_FULL. Fails with
  // TASK_ENG_NOT_FOUND if the category does not exist or has no tasks. Returns
  // TASK_ENG_DATABASE_FAILURE, not TASK_ENG_NOT_OPEN, if the store is not open.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& category);
  // Appends up to `count` tasks that match the filter, in sort order, from `start` on. `start` is
  // the first of them if it matches. It must exist in the store with the same due date, priority
  // and uid. A task due in the last second of the day is not yet due, as in getAllIDs.
  //
  // For the first page, read the first UID of getAllIDs, with the same filter and order, with
  // getTask. For the next page, pass the last task of this one with `count` one higher, and drop
  // the first result.
  //
  // Can fail with TASK_ENG_MEMORY_FULL. Fails with TASK_ENG_BAD_PARAMETER if `count` is not
  // positive, and with TASK_ENG_NOT_FOUND if `start` has changed or no task from there on matches.
  int getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& start, int count,
               TASK_CATEGORY category, TASK_SORT_FIELD sort);
  // Appends the tasks that contain `text` in their category name, note, summary or uuid,
  // case-sensitively. An empty text matches every field that is not empty. Succeeds if no task
  // matches; fails with TASK_ENG_NOT_FOUND if the store contains no task.
  int getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& text);
  // Appends the tasks that have the due date, end date, priority value and status value of
  // `example` and contain its note and summary, case-insensitively. No-date, 0, -1 and empty match
  // everything, so an example cannot search for tasks without a date, with priority 0 or with
  // status -1. `tasks` must be empty: tasks that are already in it are removed unless they match.
  // Succeeds if no task matches; fails with TASK_ENG_NOT_FOUND if the store contains no task.
  int getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& example);

protected:
  // Removes all tasks at once and reports the removals as one batch. Can fail with
  // TASK_ENG_MEMORY_FULL.
  int removeAll();
  // Remembers the mode of the current synchronization.
  void setSyncMode(int mode) { syncMode_ = mode; }

private:
  int checkTables();
  void report(unsigned int uid, int changeType) noexcept;

  bool open_ = true;
  QString reserved_;
  int reporterHandle_ = -1;
  SVC_CT_ChangeReporter* reporter_ = nullptr;
  int syncMode_ = 0;
};
