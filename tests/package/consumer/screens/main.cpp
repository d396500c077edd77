#include <QApplication>
#include <TASK_UI_DetailView.h>
#include <ZTASK_ENG_Model.h>
#include <cstdio>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  ZTASK_ENG_Model store;
  ZTASK_ENG_Task task;
  const int code = store.getTask(1, task);
  const TASK_UI_DetailView view(nullptr, "view", 0);
  const QString summary = task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY);
  std::printf("code %d, %s, screen %s\n", code, qPrintable(summary), qPrintable(view.objectName()));
  return code;
}
