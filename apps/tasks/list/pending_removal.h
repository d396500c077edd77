// Deferred deletion with undo.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QTimer>

#include <chrono>
#include <unordered_set>
#include <vector>

namespace tasks {

// Deletes tasks only after the undo period has passed. Until then they remain in the store
// unchanged, so that undo restores the same task with the same UID, and a crash deletes nothing.
// The deletion runs in small slices on the event loop.
class PendingRemoval : public QObject {
  Q_OBJECT

public:
  PendingRemoval(ZTASK_ENG_Model& store, std::chrono::milliseconds patience,
                 QObject* parent = nullptr);

  // Schedules `uids` for deletion. Tasks scheduled earlier can no longer be restored.
  void begin(const std::vector<unsigned int>& uids);
  // Restores the tasks of the last begin().
  void undo();
  // Restores a single task, even one that can no longer be undone.
  void keep(unsigned int uid);
  // Deletes everything that is scheduled without waiting for the undo period, in slices on the
  // event loop. None of it can be restored any longer.
  void hasten();
  // Deletes everything that is scheduled before it returns.
  void finish();

  // The number of tasks that undo() would restore.
  [[nodiscard]] std::size_t undoable() const { return undoable_.size(); }
  // Whether nothing is scheduled or being deleted.
  [[nodiscard]] bool isIdle() const { return undoable_.empty() && due_.empty(); }
  // All scheduled tasks.
  [[nodiscard]] std::unordered_set<unsigned int> uids() const;

Q_SIGNALS:
  // Emitted when the set of undoable tasks changes or the deletion has finished.
  void changed();
  // Emitted when the store fails to delete a task. The task and all following ones are kept.
  void failed(int code);

private:
  void commit();
  void removeSome();
  bool removeNext();

  ZTASK_ENG_Model& store_;
  std::vector<unsigned int> undoable_;
  std::vector<unsigned int> due_;  // last one first
  QTimer patience_;
  QTimer work_;
};

}  // namespace tasks
