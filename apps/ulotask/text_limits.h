#pragma once

#include "ZTASK_ENG_Task.h"

#include <optional>
#include <string>
#include <vector>

namespace ulotask {

// Cuts a text of the task to what the store takes from outside (ZTASK_ENG_Task::summaryLimit and
// noteLimit), or one unit before where the limit would split a surrogate pair; other fields have no
// limit. Returns a sentence if it was cut.
std::optional<std::string> cutToLimit(ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field);

// Does so with all texts of the task.
std::vector<std::string> cutToLimits(ZTASK_ENG_Task& task);

}  // namespace ulotask
