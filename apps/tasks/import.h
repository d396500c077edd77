// To-dos of calendar files on their way into the store.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QStringList>

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

// Stores every to-do of the files, in their order: those in vCalendar texts up to their first zero
// byte. All files are read before the first task is stored. Summaries and notes are cut at whole
// letters to what the store takes from outside; a to-do without a status is one to be done. What is
// no regular file counts as unread, so that nothing here waits.
[[nodiscard]] ImportResult importFiles(ZTASK_ENG_Model& store, const QStringList& paths);

}  // namespace tasks
