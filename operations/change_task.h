// Reading and changing a task as one step that no other program can interrupt.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Model.h"

#include <QString>

#include <functional>
#include <optional>

namespace ulo {

// The category that getTask returns for a task whose category was removed. Do not store it: addTask
// would create a category of this name.
inline constexpr QLatin1String vanishedCategory("None");

struct ChangeReport {
  // The task as it is stored now.
  ZTASK_ENG_Task task;
  // The category of the task had been removed; the task is stored without one.
  bool categoryVanished = false;
  // Set if the change completed a repeating task: `moved` if it now has its next date and needs
  // action again; `lastDate` or `notComputed` if it was completed.
  std::optional<TASK_ENG_Ical::NextDate> next;
};

// Reads the task, applies `change` and stores it, in one write transaction: no other program can
// write in between, so no change of another program is overwritten unread. A category that does not
// exist is added.
//
// If the task has a calendar text (stored_text.h), the change follows it. A repeating task that
// becomes completed moves to its next date instead, together with its text; the last date completes
// it. If `change` sets another due date but leaves the alarm, an alarm that the text defines
// relative to the due date moves along.
//
// Returns a result of the store. TASK_ENG_NOT_FOUND means that the task is not stored (any more).
// Unless it is TASK_ENG_OK, nothing was stored and `report` is unchanged. An exception of `change`
// passes through, and nothing is stored.
int changeTask(ZTASK_ENG_Model& store, unsigned int uid,
               const std::function<void(ZTASK_ENG_Task&)>& change, ChangeReport* report = nullptr);

// Sets the status to completed, or to needs action. Returns a result of changeTask.
int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed,
                 ChangeReport* report = nullptr);

// The steps of changeTask, for other changes. Require a write transaction.

// Reads the task with its category; getTask of the store may return it without. Returns a result of
// the store.
int readTask(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& task);
// Stores `report.task`, which was read in the same transaction. Adds its category unless it exists.
// Returns a result of the store.
int storeTask(ZTASK_ENG_Model& store, ChangeReport& report);

// Removes the task and sets `removed` to its last state. Returns a result of the store; unless it
// is TASK_ENG_OK, nothing was removed.
int removeTask(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& removed);

// Sets the time of the last change to now.
void setChangedNow(ZTASK_ENG_Task& task);

// Adds the category unless it exists. The null name is that of tasks without a category. Returns a
// result of the store.
int ensureCategory(ZTASK_ENG_Model& store, const QString& name);

// Adds the task and, unless it exists, its category. Fails, unlike the store's own operation, if
// the category cannot be added. Returns a result of the store; unless it is TASK_ENG_OK, nothing
// was stored.
int addTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task);

}  // namespace ulo
