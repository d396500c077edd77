// The store for a SyncML engine: to-dos as vCalendar 1.0 text, addressed by UID.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "ulo/export.h"

#include <QString>

#include <string>
#include <vector>

// What the operations of TASK_ENG_SyncML itself return.
enum TASK_SyncML_Result : int {
  TASK_SYNCML_OK = 0,
  TASK_SYNCML_NOTFOUND = 1,    // no such task, or the category of the item does not exist
  TASK_SYNCML_NOMEMORY = 2,    // the store or the disk is full, or memory ran out
  TASK_SYNCML_TOOLARGE = 3,    // the item is larger than the synchronization engine accepts
  TASK_SYNCML_BADPARAM = 4,    // the store rejected an argument; no operation returns this today
  TASK_SYNCML_OTHERERROR = 5,  // any other failure, also a text without a readable to-do and a
                               // store that did not open; see the log
};

// A separate store object, to be used in the thread that created it. Items are passed as text,
// through an open descriptor, which the caller owns, or in a string. Each operation returns
// TASK_SYNCML_OTHERERROR if the store is not open; other failures of the store are mapped to the
// codes above. No operation throws.
//
// Reading and writing text uses the vObject library, whose parser state is global: while getEvent,
// addEvent or updateEvent runs, no other thread of the process may read or write calendar text,
// whether with this class, ZVtodoParser or a screen.
//
// At the end of a synchronization run, changes are broadcast once, as the message `dataChanged` on
// `channel`. Changes made outside a run are broadcast at the end of the next one.
//
// Operations inherited from ZTASK_ENG_Model return codes of ZTASK_ENG_Result, in which the same
// numbers have other meanings, and their changes do not count for the broadcast.
class ULO_EXPORT TASK_ENG_SyncML : public ZTASK_ENG_Model {
public:
  static constexpr char channel[] = "ULO_PIM_TASK_ENG_CHANNEL";
  static constexpr char dataChanged[] = "TASK_ENG_dataChanged";

  TASK_ENG_SyncML();
  ~TASK_ENG_SyncML();

  // Writes the text of a task to `fd`, at its current position. Sets `size` to the length of the
  // text in bytes if the result is TASK_SYNCML_OK or TASK_SYNCML_TOOLARGE. Returns
  // TASK_SYNCML_NOTFOUND if no task has this UID.
  //
  // TASK_SYNCML_OK means that the whole text was produced and written to `fd` as far as `fd`
  // accepted it. Short writes are continued, and a non-blocking descriptor is waited for. If `fd`
  // rejects the bytes (a full disk, a closed pipe), that is only logged: the owner of `fd` has to
  // detect its errors. With any other code, the text was not written completely.
  //
  // If the text is longer than `maxSize` (bytes), the operation returns TASK_SYNCML_TOOLARGE and
  // writes nothing to `fd`. The text is then in the file /tmp/UID.vtodo (mode 0600), which the
  // caller deletes; the next request for the same UID replaces it. Any number of processes and
  // stores may request the same UID at the same time: while one of them uses the file, or if the
  // file belongs to another user, the others use files with random names, which are deleted in any
  // case. A caller that needs the file and does not find it calls again.
  int getEvent(int fd, int& size, int maxSize, unsigned int uid);
  // Appends the text of a task, of any length, to `text`. Appends nothing unless it returns
  // TASK_SYNCML_OK. Returns TASK_SYNCML_NOTFOUND if no task has this UID.
  int getEvent(std::string& text, unsigned int uid);

  // Adds the first to-do of the text in `fd`, which is read from its start and must be seekable.
  // Sets `uid` to the UID of the new task, and leaves it unchanged on failure. `size` is only
  // logged. Summary and note are truncated to summaryLimit and noteLimit. Adds the category of the
  // to-do if it does not exist. Does not set the time of change. Returns
  // TASK_SYNCML_OTHERERROR if the text contains no readable to-do or `fd` cannot be read.
  int addEvent(int fd, int size, unsigned int& uid);
  // The same for a text in memory, which ends at its first zero byte.
  int addEvent(const std::string& text, unsigned int& uid);

  // Overwrites a task with the first to-do of the text. The task keeps its uuid and loses what the
  // text does not contain. Truncates like addEvent and fails in the same cases. Returns
  // TASK_SYNCML_NOTFOUND if no task has this UID, and, unlike addEvent, if the category of the
  // to-do does not exist.
  int updateEvent(int fd, int size, unsigned int uid);
  int updateEvent(const std::string& text, unsigned int uid);

  // Returns TASK_SYNCML_NOTFOUND if no task has this UID, and TASK_SYNCML_OTHERERROR if the disk is
  // full.
  int removeEvent(unsigned int uid);
  // Removes all tasks. Hides the function of ZTASK_ENG_Model, which returns other codes.
  int removeAll();

  // Appends the UIDs of all tasks in ascending order. Leaves `ids` unchanged on failure. Hides the
  // functions of ZTASK_ENG_Model, which return other codes.
  int getAllIDs(std::vector<unsigned int>& ids);

  // Begins a run. The store remembers `mode`.
  void beginSync(int mode);
  // Ends the run and broadcasts its changes. Does nothing outside a run. If memory is exhausted,
  // the end of this object's next run broadcasts them.
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
