// How the list was looked at the last time.
#pragma once

#include "task_pages.h"

namespace tasks {

// All tasks by due date if nothing is remembered.
[[nodiscard]] ulo::ListOrder readListOrder();
void writeListOrder(const ulo::ListOrder& order);

}  // namespace tasks
