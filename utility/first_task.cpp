#include "first_task.h"

namespace {

void cutTo(ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field, int limit) {
  if (const QString text = task.getString(field); text.length() > limit)
    task.setString(field, text.left(limit));
}

}  // namespace

void takeFirst(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task) {
  task = *tasks.first();
  cutTo(task, ZTASK_ENG_Task::TASK_FIELD_SUMMARY, ZTASK_ENG_Task::summaryLimit);
  cutTo(task, ZTASK_ENG_Task::TASK_FIELD_NOTE, ZTASK_ENG_Task::noteLimit);
  tasks.removeFirst();
}
