#include "alarms/alarm_clock.h"

#include "file_lock.h"
#include "module_log.h"
#include "task_dates.h"
#include "task_words.h"
#include "ulo/data_directory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>

namespace tasks {

namespace {

constexpr int pageSize = 16;

bool isAwaited(const ZTASK_ENG_Task& task) {
  return !ulo::isCompleted(task) && ulo::hasDate(task, ZTASK_ENG_Task::TASK_FIELD_ALARM);
}

}  // namespace

std::int64_t alarmOf(const ZTASK_ENG_Task& task) {
  return task.getInstant(ZTASK_ENG_Task::TASK_FIELD_ALARM).toMSecsSinceEpoch();
}

AlarmClock::AlarmClock(ZTASK_ENG_Model& store, std::function<QDateTime()> now, QObject* parent)
    : QObject(parent), store_(store), now_(std::move(now)), checked_(time()) {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &AlarmClock::check);
  connect(&reading_, &QTimer::timeout, this, &AlarmClock::readSlice);
}

void AlarmClock::look() {
  holdsLock();
  lookAt(time());
  schedule();
}

void AlarmClock::check() {
  const std::int64_t now = time();
  lookAt(now);
  tell(now);
  schedule();
}

void AlarmClock::lookAt(std::int64_t now) {
  failed_ = false;
  // Adjustments by fractions of a second do not set the clock back.
  constexpr std::int64_t leastStep = 1000;
  if (now + leastStep < checked_) {
    // Alarms that had passed are ahead again, unless they were reported.
    checked_ = now;
    entry_.reset();
    walk_.reset();
  }
  takeChanges();
}

void AlarmClock::takeChanges() {
  if (walk_)
    return;  // readSome() calls this again at its end
  ulo::NetChanges net;
  if (!entry_ || !journal_.changesSince(ZTASK_ENG_Model::identifier, *entry_, net) ||
      net.incomplete) {
    startWalk();
    return;
  }
  entry_ = net.lastEntry;
  for (const std::uint32_t uid : net.removed)
    alarms_.erase(uid);
  for (const auto* uids : {&net.added, &net.updated})
    altered_.insert(altered_.end(), uids->begin(), uids->end());
  if (!altered_.empty())
    reading_.start(0);
}

void AlarmClock::startWalk() {
  // Read before the list: changes during the walk have later entries.
  std::int64_t entry = 0;
  const bool hasJournal = journal_.lastEntry(entry);
  ulo::TaskPages walk;
  if (walk.open(store_, {}) != TASK_ENG_OK) {
    failed_ = true;
    return;
  }
  entry_ = hasJournal ? std::optional(entry) : std::nullopt;
  altered_.clear();
  std::erase_if(alarms_, [](const auto& each) { return !each.second.isOver; });
  walk_ = std::move(walk);
  reading_.start(0);
}

void AlarmClock::readSlice() {
  const auto end = std::chrono::steady_clock::now() + slice;
  while (readSome()) {
    if (std::chrono::steady_clock::now() >= end)
      return;
  }
  reading_.stop();
  schedule();
}

// Reads a few tasks. Returns false if none are left or the store fails.
bool AlarmClock::readSome() {
  if (walk_) {
    if (readPageOfWalk())
      return true;
    const bool isWhole = walk_->isAtEnd();
    walk_.reset();
    failed_ = !isWhole;
    if (!isWhole)
      entry_.reset();
    else if (entry_)
      takeChanges();
  }
  if (altered_.empty())
    return false;
  readAltered();
  return !altered_.empty();
}

bool AlarmClock::readPageOfWalk() {
  ulo::Records page;
  if (walk_->isAtEnd() || walk_->next(store_, pageSize, page) != TASK_ENG_OK)
    return false;
  for (const ZTASK_ENG_Task& task : page)
    note(task);
  return true;
}

void AlarmClock::readAltered() {
  const unsigned int uid = altered_.back();
  ZTASK_ENG_Task task;
  const int code = store_.getTask(uid, task);
  if (code == TASK_ENG_OK) {
    note(task);
  } else if (code == TASK_ENG_NOT_FOUND) {
    alarms_.erase(uid);
  } else {
    failed_ = true;
    altered_.clear();
    entry_.reset();
    return;
  }
  altered_.pop_back();
}

void AlarmClock::note(const ZTASK_ENG_Task& task) {
  const unsigned int uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  const std::int64_t alarm = alarmOf(task);
  const auto known = alarms_.find(uid);
  const bool isSame = known != alarms_.end() && known->second.time == alarm;
  if (isSame && known->second.isOver)
    return;
  if (isAwaited(task) && alarm > checked_)
    alarms_.insert_or_assign(uid, Alarm{alarm, false});
  else if (known != alarms_.end() && !(isSame && isAwaited(task)))
    alarms_.erase(known);
}

void AlarmClock::tell(std::int64_t now) {
  std::vector<std::pair<std::int64_t, unsigned int>> come;
  for (auto& [uid, alarm] : alarms_) {
    if (!alarm.isOver && alarm.time <= now)
      come.emplace_back(alarm.time, uid);
  }
  const bool tells = holdsLock();
  std::sort(come.begin(), come.end());
  for (const auto& [alarm, uid] : come) {
    if (!tells)
      alarms_[uid].isOver = true;
    else if (!tellOf(uid))
      failed_ = true;
  }
  // Tasks that have not been read yet may have an alarm that came in the meantime.
  if (!isReading() && !failed_)
    checked_ = std::max(checked_, now);
}

// Reads the task again, because it may have changed. Returns false if the store fails.
bool AlarmClock::tellOf(unsigned int uid) {
  const auto known = alarms_.find(uid);
  if (known == alarms_.end() || known->second.isOver)
    return true;
  ZTASK_ENG_Task task;
  const int code = store_.getTask(uid, task);
  if (code == TASK_ENG_NOT_FOUND) {
    alarms_.erase(known);
  } else if (code == TASK_ENG_OK && isAwaited(task) && alarmOf(task) == known->second.time) {
    known->second.isOver = true;
    Q_EMIT due(task);
  } else if (code == TASK_ENG_OK) {
    alarms_.erase(known);
    note(task);
  }
  return code == TASK_ENG_OK || code == TASK_ENG_NOT_FOUND;
}

bool AlarmClock::holdsLock() {
  if (lock_.isOpen())
    return true;
  const std::string path = ulo::dataDirectory() + '/' + lockName;
  ulo::Descriptor file(
      open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file.isOpen()) {
    ULO_LOG_ERROR("%s can't be opened: %s", path.c_str(), std::strerror(errno));
    return true;
  }
  if (!ulo::lockWithin(file.get(), std::chrono::milliseconds(0)))
    return false;
  lock_ = std::move(file);
  return true;
}

void AlarmClock::schedule() {
  std::int64_t wait = longestWait.count();
  const std::int64_t now = time();
  if (!failed_) {
    for (const auto& [uid, alarm] : alarms_) {
      if (!alarm.isOver)
        wait = std::min(wait, std::max<std::int64_t>(alarm.time - now, 0));
    }
  }
  timer_.start(std::chrono::milliseconds(wait));
}

}  // namespace tasks
