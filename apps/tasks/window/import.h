// To-dos of calendar files on their way into the store.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QStringList>
#include <QTimer>

#include <vector>

namespace tasks {

struct ImportResult {
  unsigned int imported = 0;  // tasks that were stored
  QStringList unread;         // paths of files that hold no to-do or can't be read
  bool storeFull = false;     // it stopped there
  bool failed = false;  // it stopped where the store refused for another reason; the log says why
  unsigned int lastUid = ZTASK_ENG_Task::notStored;  // of the last stored task
};

// The largest file that is read, in bytes: far more than a whole task list.
inline constexpr qint64 largestImport = 64LL * 1024 * 1024;

// Stores every to-do of calendar files, in their order, a few at a time between other events: those
// in vCalendar texts up to their first zero byte. Summaries and notes are cut at whole letters to
// what the store takes from outside; a to-do without a status is one to be done. Each is stored or
// not, whatever happens on the way.
class Import : public QObject {
  Q_OBJECT

public:
  explicit Import(ZTASK_ENG_Model& store, QObject* parent = nullptr);
  ~Import() override;

  // Reads all the files before the first of their to-dos is stored, behind those that are on their
  // way. What is no regular file counts as unread, so that nothing here waits.
  void add(const QStringList& paths);
  // Stores the rest now.
  void finish();

Q_SIGNALS:
  // So many of all have been stored.
  void progressed(unsigned int stored, unsigned int all);
  // All that was added is stored, or it stopped.
  void ended(const tasks::ImportResult& result);

private:
  void storeSome();
  bool storeNext();
  void end();

  ZTASK_ENG_Model& store_;
  std::vector<ZTASK_ENG_Task> waiting_;
  std::size_t next_ = 0;  // of those that wait
  ImportResult result_;
  bool isUnderWay_ = false;
  QTimer work_;
};

}  // namespace tasks
