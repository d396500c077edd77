#include "list/pending_removal.h"

#include <QElapsedTimer>

#include <utility>

namespace tasks {

PendingRemoval::PendingRemoval(ZTASK_ENG_Model& store, std::chrono::milliseconds patience,
                               QObject* parent)
    : QObject(parent), store_(store) {
  patience_.setSingleShot(true);
  patience_.setInterval(patience);
  work_.setInterval(0);
  connect(&patience_, &QTimer::timeout, this, [this] {
    commit();
    Q_EMIT changed();
  });
  connect(&work_, &QTimer::timeout, this, &PendingRemoval::removeSome);
}

void PendingRemoval::begin(const std::vector<unsigned int>& uids) {
  commit();
  undoable_ = uids;
  patience_.start();
  Q_EMIT changed();
}

void PendingRemoval::undo() {
  patience_.stop();
  undoable_.clear();
  Q_EMIT changed();
}

void PendingRemoval::keep(unsigned int uid) {
  if (std::erase(undoable_, uid) + std::erase(due_, uid) > 0)
    Q_EMIT changed();
}

void PendingRemoval::commit() {
  patience_.stop();
  due_.insert(due_.begin(), undoable_.rbegin(), undoable_.rend());
  undoable_.clear();
  if (!due_.empty())
    work_.start();
}

void PendingRemoval::hasten() {
  commit();
  Q_EMIT changed();
}

void PendingRemoval::finish() {
  commit();
  while (removeNext()) {
  }
  Q_EMIT changed();
}

std::unordered_set<unsigned int> PendingRemoval::uids() const {
  std::unordered_set<unsigned int> all(undoable_.begin(), undoable_.end());
  all.insert(due_.begin(), due_.end());
  return all;
}

void PendingRemoval::removeSome() {
  constexpr qint64 slice = 6;  // milliseconds
  QElapsedTimer timer;
  timer.start();
  while (removeNext())
    if (timer.hasExpired(slice))
      return;
  Q_EMIT changed();
}

// Returns false if nothing is left to delete.
bool PendingRemoval::removeNext() {
  if (due_.empty()) {
    work_.stop();
    return false;
  }
  const int code = store_.removeTask(due_.back());
  if (code == TASK_ENG_OK || code == TASK_ENG_NOT_FOUND) {
    due_.pop_back();
    return true;
  }
  due_.clear();
  work_.stop();
  Q_EMIT failed(code);
  Q_EMIT changed();
  return false;
}

}  // namespace tasks
