// Tasks on their way out.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QTimer>

#include <chrono>
#include <unordered_set>
#include <vector>

namespace tasks {

// Puts the removal of tasks off for as long as the user may take it back. Until then the store has
// them as they were: a task that comes back is the same one, and a program that dies removes
// nothing. The removal itself goes on between other events.
class PendingRemoval : public QObject {
  Q_OBJECT

public:
  PendingRemoval(ZTASK_ENG_Model& store, std::chrono::milliseconds patience,
                 QObject* parent = nullptr);

  // Tasks of an earlier call can no longer be taken back.
  void begin(const std::vector<unsigned int>& uids);
  // What can be taken back stays.
  void undo();
  // A task that is to be removed stays after all.
  void keep(unsigned int uid);
  // Deletes everything that is scheduled without waiting for the undo period, in slices on the
  // event loop. None of it can be restored any longer.
  void hasten();
  // Removes everything now.
  void finish();

  // How many can be taken back.
  [[nodiscard]] std::size_t undoable() const { return undoable_.size(); }
  // Whether nothing is scheduled or being deleted.
  [[nodiscard]] bool isIdle() const { return undoable_.empty() && due_.empty(); }
  // All that is to be removed.
  [[nodiscard]] std::unordered_set<unsigned int> uids() const;

Q_SIGNALS:
  // What can be taken back is another one, or all that was to be removed is.
  void changed();
  // The store refused to remove a task, with this code; the task and those behind it stay.
  void failed(int code);

private:
  void commit();
  void removeSome();
  bool removeNext();

  ZTASK_ENG_Model& store_;
  std::vector<unsigned int> undoable_;
  std::vector<unsigned int> due_;  // from the last to the first
  QTimer patience_;
  QTimer work_;
};

}  // namespace tasks
