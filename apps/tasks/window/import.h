// Import of calendar files.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QStringList>
#include <QTimer>

#include <vector>

namespace tasks {

struct ImportResult {
  unsigned int imported = 0;  // tasks that were stored
  QStringList unread;         // paths of files that hold no to-do or can't be read
  bool storeFull = false;     // the import stopped for this reason
  bool failed = false;        // the store failed for another reason, which is in the log
  unsigned int lastUid = ZTASK_ENG_Task::notStored;  // of the last stored task
};

// The largest file that is read, in bytes: far more than a whole task list.
inline constexpr qint64 largestImport = 64LL * 1024 * 1024;

// Stores the to-dos of calendar files in their order, in small slices on the event loop. Reads
// vCalendar texts up to their first zero byte. Longer summaries and notes are truncated at a whole
// letter to the limits of ZTASK_ENG_Task; a to-do without a status needs action. Each to-do is
// stored whole or not at all.
class Import : public QObject {
  Q_OBJECT

public:
  explicit Import(ZTASK_ENG_Model& store, QObject* parent = nullptr);
  ~Import() override;

  // Reads all files before the first of their to-dos is stored, which follows those of earlier
  // calls. Anything but a regular file counts as unread, so that this never blocks.
  void add(const QStringList& paths);
  // Stores everything that is left before it returns.
  void finish();

Q_SIGNALS:
  // Emitted when `stored` of `all` tasks are saved.
  void progressed(unsigned int stored, unsigned int all);
  // Emitted when everything has been stored, or after a failure.
  void ended(const tasks::ImportResult& result);

private:
  void storeSome();
  bool storeNext();
  void end();

  ZTASK_ENG_Model& store_;
  std::vector<ZTASK_ENG_Task> waiting_;
  std::size_t next_ = 0;  // the next one to store
  ImportResult result_;
  bool isUnderWay_ = false;
  QTimer work_;
};

}  // namespace tasks
