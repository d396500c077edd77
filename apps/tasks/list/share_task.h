// Gives a task to other people.
#pragma once

#include "ZTASK_ENG_Model.h"

namespace tasks {

enum class ShareBy { bluetooth, message };

// As the detail view of the task does. Dialogs tell of what goes wrong on the way to a device.
void shareTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, ShareBy way);

}  // namespace tasks
