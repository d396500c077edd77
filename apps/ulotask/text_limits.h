#pragma once

#include "ZTASK_ENG_Task.h"

#include <string>
#include <vector>

namespace ulotask {

// Cuts the summary and the note to what the store takes from outside (ZTASK_ENG_Task::summaryLimit
// and noteLimit). Gives a sentence for each text that was cut.
std::vector<std::string> cutToLimits(ZTASK_ENG_Task& task);

}  // namespace ulotask
