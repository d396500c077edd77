#include "alarms/alarms.h"

#include "change_task.h"
#include "task_words.h"

namespace tasks {

namespace {

QDateTime now() {
  return QDateTime::currentDateTime();
}

}  // namespace

Alarms::Alarms(ZTASK_ENG_Model& store, QWidget* window)
    : QObject(window), store_(store), clock_(store, now, this), notifications_(this),
      messages_(window) {
  connect(&clock_, &AlarmClock::due, this, &Alarms::show);
  connect(&notifications_, &AlarmNotifications::opened, this, &Alarms::opened);
  connect(&notifications_, &AlarmNotifications::completed, this, &Alarms::complete);
  connect(&notifications_, &AlarmNotifications::notShown, this, &Alarms::showInWindow);
  connect(&messages_, &AlarmMessages::opened, this, &Alarms::opened);
}

void Alarms::look() {
  clock_.look();
  std::erase_if(told_, [this](const auto& told) {
    ZTASK_ENG_Task task;
    const int code = store_.getTask(told.first, task);
    if (code != TASK_ENG_NOT_FOUND && (code != TASK_ENG_OK || isCurrent(task, told.second)))
      return false;
    notifications_.withdraw(told.first);
    messages_.withdraw(told.first);
    return true;
  });
}

// A repeating task that was completed has another alarm.
bool Alarms::isCurrent(const ZTASK_ENG_Task& task, std::int64_t alarm) {
  return !ulo::isCompleted(task) && alarmOf(task) == alarm;
}

void Alarms::show(const ZTASK_ENG_Task& task) {
  told_[task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)] = alarmOf(task);
  notifications_.show(task);
}

// The task may have been completed since it was to be shown.
void Alarms::showInWindow(unsigned int uid) {
  ZTASK_ENG_Task task;
  if (store_.getTask(uid, task) == TASK_ENG_OK && isCurrent(task, told_[uid]))
    messages_.show(task);
}

// A notification may be used before its withdrawal arrives.
void Alarms::complete(unsigned int uid) {
  ZTASK_ENG_Task task;
  int code = store_.getTask(uid, task);
  if (code == TASK_ENG_OK && isCurrent(task, told_[uid]))
    code = ulo::setCompleted(store_, uid, true);
  if (code != TASK_ENG_OK)
    Q_EMIT notCompleted(code);
}

}  // namespace tasks
