// The log texts in this file are contracts: see docs/compatibility.md.
#include "TASK_UI_VTodo.h"

#include "TASK_UI_DetailView.h"
#include "ZTASK_ENG_Model.h"
#include "ZVtodoParser.h"
#include "first_task.h"
#include "lock_check.h"
#include "module_log.h"
#include "received_todo.h"

bool takeReceived(QList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& task) {
  if (tasks.isEmpty()) {
    ULO_LOG_ERROR("Task shareby bluetooth fail for Task_Sync's error : the vtodo is in wrong "
                  "format or is empty!");
    return false;
  }
  if (tasks.first() == nullptr) {
    ULO_LOG_ERROR("Task shareby bluetooth fail for Task_Sync's error : the task pointer is empty!");
    return false;
  }
  takeFirst(tasks, task);
  return true;
}

TASK_UI_VTodo::TASK_UI_VTodo() = default;
TASK_UI_VTodo::~TASK_UI_VTodo() = default;

TASK_UI_VTodo* TASK_UI_VTodo::getInstance() {
  return new TASK_UI_VTodo;
}

unsigned int TASK_UI_VTodo::addVTodo(QArray<char>& data) {
  if (appLockCheck() == 0) {
    delete this;
    ULO_LOG_ERROR("for applock");
    return 1;
  }
  const QCString text(data.data(), data.size());
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  parser.readVtodo(text, tasks);
  ZTASK_ENG_Task task;
  if (!takeReceived(tasks, task)) {
    delete this;
    return 1;
  }

  ZTASK_ENG_Model store;
  const int code = store.addTask(task);
  ULO_LOG_ERROR("after add to db the vtodo is %s", data.data());
  if (code != TASK_ENG_OK) {
    delete this;
    ULO_LOG_ERROR("add to task db error, ret = %d", code);
    return 0;
  }
  auto* view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task);
  view->show();
  delete this;
  return 0;
}
