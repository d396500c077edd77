#include <QDateTime>
#include <ZTASK_ENG_Model.h>
#include <cstdio>
#include <ulo/log_sink.h>

int main() {
  ulo::openLogSink("program");
  ZTASK_ENG_Model store;
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "Buy milk");
  task.setStatus(1);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::currentDateTime());
  const int code = store.addTask(task);
  std::printf("code %d, UID %u\n", code, task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
  return code;
}
