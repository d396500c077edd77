// How the list was looked at the last time.
#pragma once

#include "stored_tasks.h"

namespace tasks {

// All tasks by due date where nothing is remembered.
[[nodiscard]] ListOrder readListOrder();
void writeListOrder(const ListOrder& order);

}  // namespace tasks
