// The store for a SyncML engine: to-dos as vCalendar 1.0 text, addressed by UID.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "ulo/export.h"

#include <QString>

#include <string>
#include <vector>

// What the operations return. Nothing throws.
enum TASK_SyncML_Result : int {
  TASK_SYNCML_OK = 0,
  TASK_SYNCML_NOTFOUND = 1,    // no such task, or the category of the item does not exist
  TASK_SYNCML_NOMEMORY = 2,    // the store is full, or memory ran out
  TASK_SYNCML_TOOLARGE = 3,    // the item is larger than the synchronization engine accepts
  TASK_SYNCML_BADPARAM = 4,    // invalid argument
  TASK_SYNCML_OTHERERROR = 5,  // any other failure, also a store that did not open; see the log
};

// A separate store object, to be used in one thread. Items are passed as text, through an open
// descriptor or in a string. Each operation returns TASK_SYNCML_OTHERERROR if the store is not
// open; other failures of the store are mapped to the codes above.
//
// At the end of a synchronization run, changes are broadcast once, as the message `dataChanged` on
// `channel`. Changes made outside a run are broadcast at the end of the next one.
class ULO_EXPORT TASK_ENG_SyncML : public ZTASK_ENG_Model {
public:
  static constexpr char channel[] = "ULO_PIM_TASK_ENG_CHANNEL";
  static constexpr char dataChanged[] = "TASK_ENG_dataChanged";

  TASK_ENG_SyncML();
  ~TASK_ENG_SyncML();

  // Writes the text of a task to `fd`, at its current position. Sets `size` to the length in bytes.
  //
  // TASK_SYNCML_OK means that the whole text was read and passed to `fd`. Short writes are
  // continued, and a non-blocking descriptor is waited for. If `fd` rejects the bytes (a full disk,
  // a closed pipe), the operation logs that but still returns TASK_SYNCML_OK: the owner of `fd` has
  // to detect its errors. With any other code, the text was not written completely.
  //
  // If the text is longer than `maxSize`, the operation returns TASK_SYNCML_TOOLARGE, writes
  // nothing, and leaves the text in the file UID.vtodo under /tmp. Every text goes through that
  // file. Any number of processes and stores may use the same UID at the same time: while one of
  // them uses the file, the others use files with random names, which are always deleted.
  int getEvent(int fd, int& size, int maxSize, unsigned int uid);
  // Appends the text of a task to `text`. Appends nothing unless it returns TASK_SYNCML_OK.
  int getEvent(std::string& text, unsigned int uid);

  // Adds the first to-do of the text in `fd`, which is read from its start and must be seekable.
  // Sets `uid` to the UID of the new task. `size` is only logged. The summary is truncated to 512
  // characters, the note to 4002.
  int addEvent(int fd, int size, unsigned int& uid);
  int addEvent(const std::string& text, unsigned int& uid);

  // Overwrites a task with the first to-do of the text. The task keeps its uuid.
  int updateEvent(int fd, int size, unsigned int uid);
  int updateEvent(const std::string& text, unsigned int uid);

  int removeEvent(unsigned int uid);
  // Removes all tasks.
  int removeAll();

  // Appends the UIDs of all tasks. Leaves `ids` unchanged on failure.
  int getAllIDs(std::vector<unsigned int>& ids);

  // Begins a run. The store remembers `mode`.
  void beginSync(int mode);
  // Ends the run and broadcasts its changes. Does nothing outside a run.
  void endSync();

private:
  friend class TASK_UI_SDAction;    // shows a text without storing it
  friend struct SyncAdaptorAccess;  // for the tests

  [[nodiscard]] QString outboundName(unsigned int uid) const;
  bool fileToTask(int fd, ZTASK_ENG_Task& task);
  bool stringToTask(const std::string& text, ZTASK_ENG_Task& task);
  // Adds the task, or overwrites the task with this UID.
  int store(ZTASK_ENG_Task& task, unsigned int& uid, bool traced);
  // Records a successful change. Returns the code that corresponds to `storeCode`.
  int changeMade(int storeCode);

  QString tmpDir = QStringLiteral("/tmp");
  bool addMode = true;
  bool inSync = false;
  bool changed = false;
};
