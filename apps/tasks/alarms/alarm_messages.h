// Alarms in the window of the application, for systems without a notification server.
#pragma once

#include "ZPopup.h"
#include "ZTASK_ENG_Task.h"

#include <QPointer>

#include <deque>

namespace tasks {

// The message of an alarm. Enter and Escape close it, the right key opens the task. It may appear
// while the user types: at first, it ignores keys.
class AlarmMessage : public ZPopup {
  Q_OBJECT

public:
  AlarmMessage(const ZTASK_ENG_Task& task, QWidget* window);

  [[nodiscard]] bool takesKeys() const { return takesKeys_; }

Q_SIGNALS:
  void opened();

protected:
  void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
  void openTask();

private:
  bool takesKeys_ = false;
};

// Shows alarms one after the other.
class AlarmMessages : public QObject {
  Q_OBJECT

public:
  // The messages cover `window`.
  explicit AlarmMessages(QWidget* window);

  // Shows a stored task once the messages before it are closed.
  void show(const ZTASK_ENG_Task& task);
  // Closes the message of a task, or removes it from those that wait.
  void withdraw(unsigned int uid);

Q_SIGNALS:
  // Emitted when the user wants to see the task.
  void opened(unsigned int uid);

private:
  void showNext();

  QWidget* window_;
  std::deque<ZTASK_ENG_Task> waiting_;  // the first one is shown
  QPointer<AlarmMessage> message_;
};

}  // namespace tasks
