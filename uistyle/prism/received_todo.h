#pragma once

#include "ZTASK_ENG_Task.h"

// Moves the first record of a received text to `task`, with its texts cut to the limits of the
// store. Returns false and logs the reason if the list is empty or its first record is null.
bool takeReceived(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task);
