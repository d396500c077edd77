#pragma once

#include "ZTASK_ENG_Task.h"

// Copies the first record of a list to `task`, truncates its texts to the limits for texts from
// outside, and removes it from the list. Truncation can split a letter, which is a contract.
// Requires: the list is not empty.
void takeFirst(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task);
