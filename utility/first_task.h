#pragma once

#include "ZTASK_ENG_Task.h"

// Hands over the first record of a list, its texts cut to what the store takes from outside.
// Requires: the list has one.
void takeFirst(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task);
