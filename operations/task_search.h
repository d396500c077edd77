// The search for tasks.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <QString>

#include <functional>
#include <optional>

namespace ulo {

// What a task must have. Without conditions, every task is found.
struct TaskSearch {
  // Contained in the summary, the note, the name of the category or the uuid, with the same case.
  // An empty text is contained in every field that is not empty.
  std::optional<QString> text;
  // Compared as by ZTASK_ENG_Model::getMatchTasks.
  std::optional<ZTASK_ENG_Task> example;
};

using TaskVisitor = std::function<void(const ZTASK_ENG_Task& task)>;

// Calls `visit` with each task that meets all conditions, in the order of their due dates, then by
// priority. Finds the tasks that ZTASK_ENG_Model::getMatchTasks finds, but lets the database skip
// the others. Requires that the store is open in this thread. Returns TASK_ENG_OK, also if no task
// is found, or another code of the store.
[[nodiscard]] int searchTasks(const TaskSearch& wanted, const TaskVisitor& visit);

}  // namespace ulo
