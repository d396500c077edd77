// Alarms of tasks, as notifications.
#pragma once

#include "alarms/alarm_clock.h"
#include "alarms/alarm_notifications.h"

#include <QObject>

#include <unordered_set>

namespace tasks {

// While it lives, an alarm that comes is shown. It is withdrawn when its task is completed or gone,
// and when the object is destroyed.
class Alarms : public QObject {
  Q_OBJECT

public:
  Alarms(ZTASK_ENG_Model& store, QObject* parent);

public Q_SLOTS:
  // Looks at what changed in the store; the first time at everything.
  void look();

Q_SIGNALS:
  // The user wants to see the task.
  void opened(unsigned int uid);
  // The task that the user completed could not be stored; a code of setCompleted.
  void notCompleted(int code);

private:
  void show(const ZTASK_ENG_Task& task);
  void complete(unsigned int uid);

  ZTASK_ENG_Model& store_;
  AlarmClock clock_;
  AlarmNotifications notifications_;
  std::unordered_set<unsigned int> told_;
};

}  // namespace tasks
