// Shows alarms of tasks as notifications, or in the window if there is no notification server.
#pragma once

#include "alarms/alarm_clock.h"
#include "alarms/alarm_messages.h"
#include "alarms/alarm_notifications.h"

#include <QObject>

#include <cstdint>
#include <unordered_map>

namespace tasks {

// Shows alarms while the object exists. A notification or message is withdrawn when its task is
// completed or removed or gets another alarm, and when the object is destroyed.
class Alarms : public QObject {
  Q_OBJECT

public:
  Alarms(ZTASK_ENG_Model& store, QWidget* window);

public Q_SLOTS:
  // Checks the changes in the store; the first time, all tasks.
  void look();

Q_SIGNALS:
  // Emitted when the user wants to see the task.
  void opened(unsigned int uid);
  // Emitted when a task that the user completed could not be stored. `code` is a result of
  // ulo::setCompleted.
  void notCompleted(int code);

private:
  static bool isCurrent(const ZTASK_ENG_Task& task, std::int64_t alarm);
  void show(const ZTASK_ENG_Task& task);
  void showInWindow(unsigned int uid);
  void complete(unsigned int uid);

  ZTASK_ENG_Model& store_;
  AlarmClock clock_;
  AlarmNotifications notifications_;
  AlarmMessages messages_;
  std::unordered_map<unsigned int, std::int64_t> told_;  // UIDs and alarms
};

}  // namespace tasks
