// Tells when tasks are to be remembered.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "change_journal.h"
#include "descriptor.h"
#include "task_pages.h"

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

// Tells once of each task whose alarm comes while the clock runs, unless the task is completed by
// then. Alarms from before the clock was made are not told; one that is set to another time yet to
// come is told then. After a suspension those that came meanwhile are told.
//
// Of several instances of the application one tells: it holds a lock on the file `lockName` in the
// data directory. When it ends, the next one that looks takes over. Where the file can't be made,
// each one tells.
class AlarmClock : public QObject {
  Q_OBJECT

public:
  static constexpr char lockName[] = "tasks-alarms.lock";
  // It looks at least so often: nothing tells of a clock that was set, or of a suspension.
  static constexpr std::chrono::milliseconds longestWait{30'000};
  // How long the event loop waits at most, roughly, while tasks are looked at.
  static constexpr std::chrono::milliseconds slice{5};

  // `now` gives the time of day.
  AlarmClock(ZTASK_ENG_Model& store, std::function<QDateTime()> now, QObject* parent);

  // Whether there are tasks that it still has to look at, a few at a time in the event loop.
  [[nodiscard]] bool isReading() const { return walk_.has_value() || !altered_.empty(); }

public Q_SLOTS:
  // Looks at what changed in the store, the first time at all tasks. Nothing is told before this
  // returns.
  void look();

Q_SIGNALS:
  // The alarm of this task, as it is stored now, has come.
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
  // What is behind it in the journal has not been looked at; none: everything has to be.
  std::optional<std::int64_t> entry_;
  std::optional<ulo::TaskPages> walk_;  // over all tasks
  std::vector<std::uint32_t> altered_;
  std::unordered_map<unsigned int, Alarm> alarms_;  // those after checked_ and those that are over
  std::int64_t checked_;                            // alarms until here have been told
  bool failed_ = false;                             // the store refused, it is asked again later
  ulo::Descriptor lock_;
  QTimer timer_;
  QTimer reading_;
};

}  // namespace tasks
