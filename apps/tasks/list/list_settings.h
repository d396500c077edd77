// The view and the order that the user chose last.
#pragma once

#include "task_pages.h"

namespace tasks {

// All tasks by due date if nothing is remembered.
[[nodiscard]] ulo::ListOrder readListOrder();
void writeListOrder(const ulo::ListOrder& order);

}  // namespace tasks
