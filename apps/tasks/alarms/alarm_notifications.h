// Desktop notifications for alarms.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "private_bus.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

namespace tasks {

// Shows alarms through the notification server of the session (Desktop Notifications Specification
// 1.2). A notification stays until the user closes it or the object is destroyed. Never blocks on
// the server. Logs one line if there is no server or no bus.
class AlarmNotifications : public QObject {
  Q_OBJECT

public:
  explicit AlarmNotifications(QObject* parent);
  ~AlarmNotifications() override;

  // Shows a notification for a stored task. Replaces an earlier one for the same task.
  void show(const ZTASK_ENG_Task& task);
  // Closes the notification of a task, if there is one.
  void withdraw(unsigned int uid);

Q_SIGNALS:
  // Emitted when the user wants to see the task.
  void opened(unsigned int uid);
  // Emitted when the user marks the task as done.
  void completed(unsigned int uid);
  // Emitted when there is no notification server, or it refuses the notification of a task.
  void notShown(unsigned int uid);

private Q_SLOTS:
  void actionInvoked(const QDBusMessage& signal);
  void notificationClosed(const QDBusMessage& signal);
  void serverChanged();

private:
  // The notification of a task.
  struct Shown {
    std::uint32_t id = 0;                   // 0 if the server has none
    std::uint64_t call = 0;                 // the pending call; 0 if there is none
    std::optional<ZTASK_ENG_Task> waiting;  // to be shown after that call
    bool isWithdrawn = false;
  };
  using Answer = std::function<void(unsigned int uid, const QDBusMessage& reply)>;

  bool connectToBus();
  void ask(unsigned int uid, const QDBusMessage& question, const Answer& answered);
  void notify(const ZTASK_ENG_Task& task, bool hasMarkup);
  void notified(unsigned int uid, const QDBusMessage& reply);
  void close(std::uint32_t id);
  void fail(unsigned int uid, const QString& why);
  // Returns the task of a signal of the server, whose first argument is a notification ID.
  [[nodiscard]] std::optional<unsigned int> taskOf(const QDBusMessage& signal) const;

  std::unique_ptr<ulo::PrivateBus> bus_;
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  QString server_;  // its unique name on the bus, once it has replied
  std::unordered_map<unsigned int, Shown> shown_;
  std::uint64_t calls_ = 0;
  bool isLogged_ = false;
};

}  // namespace tasks
