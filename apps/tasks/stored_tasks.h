// What the application does with stored tasks beyond single operations of the store.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QString>

namespace tasks {

using Uids = QValueList<unsigned int>;
using Records = QValueList<ZTASK_ENG_Task>;

// Which tasks are listed, and in which order.
struct ListOrder {
  ZTASK_ENG_Model::TASK_CATEGORY view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  ZTASK_ENG_Model::TASK_SORT_FIELD sort = ZTASK_ENG_Model::TASK_SORT_DUE;

  bool operator==(const ListOrder&) const = default;
};

// What getTask gives as the category of a task whose category was removed.
inline constexpr QLatin1String vanishedCategory("None");

// Sets `page` to the tasks of `uids`, a list that getAllIDs gave for `order`, from place `from` on:
// up to `count` of them, fewer where the store is no longer as the list has it, none when the task
// at `from` is no longer listed. A code of getTask or getTasks.
int readPage(ZTASK_ENG_Model& store, const Uids& uids, unsigned int from, int count,
             const ListOrder& order, Records& page);

// Stores a task over the one with its UID. A category that there isn't yet is made; one that has
// vanished becomes none. A code of updateTask or addCategory; TASK_ENG_NOT_FOUND when the task is
// not stored.
int replaceTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task);

// Checks a task off, or takes that back. A code of getTask or of replaceTask.
int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed);

}  // namespace tasks
