#include "change_task.h"

#include "task_words.h"
#include "ulodb2.h"
#include "write_transaction.h"

namespace ulo {
namespace {

// Stores a task that was read in the same transaction: it exists, so if the store does not find
// something, it is the category.
int update(ZTASK_ENG_Model& store, ChangeReport& report) {
  const int code = store.updateTask(report.task);
  if (code != TASK_ENG_NOT_FOUND)
    return code;
  QString category = report.task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  if (category == vanishedCategory) {
    category = QString();
    report.categoryVanished = true;
  }
  if (const int made = ensureCategory(store, category); made != TASK_ENG_OK)
    return made;
  report.task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category);
  return store.updateTask(report.task);
}

// Reads the task. getTask returns a task without its category if the database cannot read that;
// storing or restoring it would lose the category.
int readWhole(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& task) {
  const unsigned int failures = DB_FailureCount();
  const int code = store.getTask(uid, task);
  return code == TASK_ENG_OK && DB_FailureCount() != failures ? storeCode(DB_LastResult()) : code;
}

}  // namespace

int changeTask(ZTASK_ENG_Model& store, unsigned int uid,
               const std::function<void(ZTASK_ENG_Task&)>& change, ChangeReport* report) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  ChangeReport changed;
  if (const int code = readWhole(store, uid, changed.task); code != TASK_ENG_OK)
    return code;
  change(changed.task);
  if (const int code = update(store, changed); code != TASK_ENG_OK)
    return code;
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK && report != nullptr)
    *report = changed;
  return code;
}

int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed) {
  const Status status = completed ? Status::completed : Status::needsAction;
  return changeTask(store, uid, [=](ZTASK_ENG_Task& task) { task.setStatus(codeOf(status)); });
}

int removeTask(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& removed) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  ZTASK_ENG_Task task;
  if (const int code = readWhole(store, uid, task); code != TASK_ENG_OK)
    return code;
  if (const int code = store.removeTask(uid); code != TASK_ENG_OK)
    return code;
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK)
    removed = task;
  return code;
}

int ensureCategory(ZTASK_ENG_Model& store, const QString& name) {
  QString category = name;
  unsigned int uid = 0;
  const int code = store.addCategory(category, uid);
  return code == TASK_ENG_EXISTS ? static_cast<int>(TASK_ENG_OK) : code;
}

int addTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  if (const int code = ensureCategory(store, task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY));
      code != TASK_ENG_OK)
    return code;
  ZTASK_ENG_Task added = task;
  if (const int code = store.addTask(added); code != TASK_ENG_OK)
    return code;
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK)
    task = added;
  return code;
}

}  // namespace ulo
