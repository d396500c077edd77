// Alarms as notifications of the desktop.
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

// Shows alarms by the notification server of the session (Desktop Notifications Specification 1.2).
// A notification stays until the user has seen it or the object is destroyed. Nothing waits for the
// server; where there is
// none, or no bus, nothing is shown and one line is logged.
class AlarmNotifications : public QObject {
  Q_OBJECT

public:
  explicit AlarmNotifications(QObject* parent);
  ~AlarmNotifications() override;

  // Shows a stored task, in place of what is shown of it.
  void show(const ZTASK_ENG_Task& task);
  // Takes away what is shown of a task, if anything is.
  void withdraw(unsigned int uid);

Q_SIGNALS:
  // The user wants to see the task.
  void opened(unsigned int uid);
  // The user says that the task is done.
  void completed(unsigned int uid);

private Q_SLOTS:
  void actionInvoked(const QDBusMessage& signal);
  void notificationClosed(const QDBusMessage& signal);
  void serverChanged();

private:
  // The notification of a task.
  struct Shown {
    std::uint32_t id = 0;                   // 0: the server has none
    std::uint64_t call = 0;                 // the question under way; 0: none
    std::optional<ZTASK_ENG_Task> waiting;  // to be shown after it
    bool isWithdrawn = false;
  };
  using Answer = std::function<void(unsigned int uid, const QDBusMessage& reply)>;

  bool connectToBus();
  void ask(unsigned int uid, const QDBusMessage& question, const Answer& answered);
  void notify(const ZTASK_ENG_Task& task, bool hasMarkup);
  void notified(unsigned int uid, const QDBusMessage& reply);
  void close(std::uint32_t id);
  void fail(unsigned int uid, const QString& why);
  void logOnce(const QString& why);
  // The task of a server's signal, whose first argument is an id.
  [[nodiscard]] std::optional<unsigned int> taskOf(const QDBusMessage& signal) const;

  std::unique_ptr<ulo::PrivateBus> bus_;
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  QString server_;  // its own name on the bus, once it has answered
  std::unordered_map<unsigned int, Shown> shown_;
  std::uint64_t calls_ = 0;
  bool isLogged_ = false;
};

}  // namespace tasks
