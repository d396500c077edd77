// Sending a task to other people.
#pragma once

#include "ZTASK_ENG_Model.h"

namespace tasks {

enum class ShareBy { bluetooth, message };

// Sends a stored task. A message has it as iCalendar text if it came as such, with everything that
// the text contains; otherwise, and by Bluetooth, it goes out as the detail view sends it. Dialogs
// report problems with the device. Returns false, and sends nothing, if that takes vCalendar text
// and the vObject library is missing.
bool shareTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, ShareBy way);

}  // namespace tasks
