// Import of calendar files.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Model.h"
#include "take_in_ical.h"

#include <QStringList>
#include <QTimer>

#include <variant>
#include <vector>

namespace tasks {

struct ImportResult {
  unsigned int imported = 0;    // tasks that were added
  unsigned int updated = 0;     // tasks that were stored already and have changed
  unsigned int present = 0;     // tasks that were stored already, in this state or a later one
  QStringList unread;           // paths of files that hold no to-do or can't be read
  bool libraryMissing = false;  // vCalendar files are among the unread ones for this reason
  bool storeFull = false;       // the import stopped for this reason
  bool failed = false;          // the store failed for another reason, which is in the log
  unsigned int lastUid = ZTASK_ENG_Task::notStored;  // of the last task of the files
};

// The largest file that is read, in bytes: far more than a whole task list.
inline constexpr qint64 largestImport = 64LL * 1024 * 1024;

// Stores the to-dos of calendar files in their order, in small slices on the event loop. Recognizes
// iCalendar 2.0 by the text, not by the name of the file; such a to-do updates the task with its
// UID if there is one, and keeps its text. Other texts are read as vCalendar, up to their first
// zero byte. Longer summaries and notes are truncated at a whole letter to the limits of
// ZTASK_ENG_Task; a to-do without a status needs action. Each to-do is stored whole or not at all.
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
  // Emitted when `done` of `all` to-dos have been taken in.
  void progressed(unsigned int done, unsigned int all);
  // Emitted when everything has been stored, or after a failure.
  void ended(const tasks::ImportResult& result);

private:
  using Todo = std::variant<ZTASK_ENG_Task, TASK_ENG_Ical::Todo>;
  // Each transaction waits for the disk, and looks for the UIDs of its to-dos in the whole store.
  static constexpr std::size_t mostAtOnce = 50;

  void appendTodos(const QString& path);
  void appendVcalendar(const QByteArray& text);
  void storeSome();
  bool storeNext();
  // Stores the next `count` to-dos in one transaction and adds them to `result`. Returns a result
  // of the store; unless it is TASK_ENG_OK, nothing was stored.
  int store(std::size_t count, ImportResult& result);
  void end();

  ZTASK_ENG_Model& store_;
  std::vector<Todo> waiting_;
  std::size_t next_ = 0;           // the next one to store
  std::size_t most_ = mostAtOnce;  // to-dos in one transaction
  ImportResult result_;
  bool isUnderWay_ = false;
  QTimer work_;
};

}  // namespace tasks
