// What the application does with stored tasks beyond single operations of the store.
#pragma once

#include "ZTASK_ENG_Model.h"

namespace tasks {

using Uids = QValueList<unsigned int>;
using Records = QValueList<ZTASK_ENG_Task>;

// Which tasks are listed, and in which order.
struct ListOrder {
  ZTASK_ENG_Model::TASK_CATEGORY view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  ZTASK_ENG_Model::TASK_SORT_FIELD sort = ZTASK_ENG_Model::TASK_SORT_DUE;

  bool operator==(const ListOrder&) const = default;
};

// Sets `page` to the tasks of `uids`, a list that getAllIDs gave for `order`, from place `from` on:
// up to `count` of them, fewer where the store is no longer as the list has it, none when the task
// at `from` is no longer listed. A code of getTask or getTasks.
int readPage(ZTASK_ENG_Model& store, const Uids& uids, unsigned int from, int count,
             const ListOrder& order, Records& page);

// Completes a task, or takes that back. A code of ulo::changeTask.
int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed);

}  // namespace tasks
