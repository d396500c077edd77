// Sending a task to other people.
#pragma once

#include "ZTASK_ENG_Model.h"

namespace tasks {

enum class ShareBy { bluetooth, message };

// Sends the task as the detail view does. Dialogs report problems with the device.
void shareTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, ShareBy way);

}  // namespace tasks
