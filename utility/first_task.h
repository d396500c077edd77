#pragma once

#include "ZTASK_ENG_Task.h"

// Moves the first record of a list to `task`, and truncates its texts to the limits for texts from
// outside. Requires: the list is not empty.
void takeFirst(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task);
