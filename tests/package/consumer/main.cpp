#include <ZTASK_ENG_Model.h>
#include <cstdio>

int main() {
  ZTASK_ENG_Model store;
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "Buy milk");
  task.setStatus(1);
  const int code = store.addTask(task);
  std::printf("code %d, UID %u\n", code, task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
  return code;
}
