// Reports due alarms of tasks.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "task_pages.h"
#include "ulo/change_journal.h"
#include "ulo/descriptor.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tasks {

// The time of an alarm in milliseconds since 1970.
[[nodiscard]] std::int64_t alarmOf(const ZTASK_ENG_Task& task);

// Reports each alarm once when its time comes, unless the task is completed by then. Does not
// report alarms from before the object was created. An alarm that is set to a later time is
// reported again at that time. After a suspension, reports the alarms that came in the meantime.
//
// If several instances of the application run, only one reports: it holds a lock on the file
// `lockName` in the data directory. When it exits, the next one that checks takes over. If the file
// cannot be created, every instance reports.
class AlarmClock : public QObject {
  Q_OBJECT

public:
  static constexpr char lockName[] = "tasks-alarms.lock";
  // The longest interval between two checks, because nothing reports that the clock was set or the
  // system was suspended.
  static constexpr std::chrono::milliseconds longestWait{30'000};
  // How long, roughly, reading tasks may block the event loop.
  static constexpr std::chrono::milliseconds slice{5};

  // `now` returns the time of day.
  AlarmClock(ZTASK_ENG_Model& store, std::function<QDateTime()> now, QObject* parent);

  // Whether tasks remain to be read, a few at a time on the event loop.
  [[nodiscard]] bool isReading() const { return walk_.has_value() || !altered_.empty(); }

public Q_SLOTS:
  // Checks the changes in the store; the first time, all tasks. Reports nothing before it returns.
  void look();

Q_SIGNALS:
  // Emitted when the alarm of this task, as it is stored now, has come.
  void due(const ZTASK_ENG_Task& task);

private:
  struct Alarm {
    std::int64_t time;  // milliseconds since 1970
    bool isOver;        // reported, by this instance or another one
  };

  void check();
  void lookAt(std::int64_t now);
  void takeChanges();
  void startWalk();
  void readSlice();
  bool readSome();
  bool readPageOfWalk();
  void readAltered();
  void note(const ZTASK_ENG_Task& task);
  void tell(std::int64_t now);
  bool tellOf(unsigned int uid);
  bool holdsLock();
  void schedule();
  [[nodiscard]] std::int64_t time() const { return now_().toMSecsSinceEpoch(); }

  ZTASK_ENG_Model& store_;
  std::function<QDateTime()> now_;
  ulo::ChangeJournal journal_;
  // The last journal entry that has been processed; none if all tasks have to be read.
  std::optional<std::int64_t> entry_;
  std::optional<ulo::TaskPages> walk_;  // over all tasks
  std::vector<std::uint32_t> altered_;
  std::unordered_map<unsigned int, Alarm> alarms_;  // later than checked_, or over
  std::int64_t checked_;                            // alarms until then have been reported
  bool failed_ = false;                             // the store failed and is tried again later
  ulo::Descriptor lock_;
  QTimer timer_;
  QTimer reading_;
};

}  // namespace tasks
