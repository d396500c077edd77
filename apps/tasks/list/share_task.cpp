#include "list/share_task.h"

#include "TASK_UI_DetailView.h"

namespace tasks {

void shareTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, ShareBy way) {
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  view.setEngine(&store);
  view.openView(&task);
  if (way == ShareBy::bluetooth)
    view.sendToBluetooth();
  else
    view.sendToMessage();
}

}  // namespace tasks
