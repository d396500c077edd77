// The store as a SyncML engine sees it: to-dos as vCalendar 1.0 text, by their UIDs.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "export.h"

#include <QString>

#include <string>
#include <vector>

// What the operations return. Nothing throws.
enum TASK_SyncML_Result : int {
  TASK_SYNCML_OK = 0,
  TASK_SYNCML_NOTFOUND = 1,    // no task has this UID, or no category the one that the item names
  TASK_SYNCML_NOMEMORY = 2,    // the store is full, or memory was short
  TASK_SYNCML_TOOLARGE = 3,    // the item is larger than the engine takes
  TASK_SYNCML_BADPARAM = 4,    // an argument makes no sense
  TASK_SYNCML_OTHERERROR = 5,  // anything else; the log says what, or why the store did not open
};

// A store of its own, used in one thread. Items go over as text, through an open descriptor or in
// a string. Each operation gives TASK_SYNCML_OTHERERROR when the store is not open, and the code
// that a store's failure stands for.
//
// Changes that were made are broadcast once, as the message `dataChanged` on `channel`, when the
// run of a synchronisation ends; changes made outside a run with the end of the next one.
class ULO_EXPORT TASK_ENG_SyncML : public ZTASK_ENG_Model {
public:
  static constexpr char channel[] = "ULO_PIM_TASK_ENG_CHANNEL";
  static constexpr char dataChanged[] = "TASK_ENG_dataChanged";

  TASK_ENG_SyncML();
  ~TASK_ENG_SyncML();

  // Writes the text of a task to `fd`, at its position. `size` is set to the length in bytes.
  //
  // TASK_SYNCML_OK means that the whole text was read and handed to `fd`; short writes are
  // continued, and a descriptor that does not block is waited for. If `fd` refuses the bytes (a
  // full disk, a closed pipe), the log says so, but the result stays TASK_SYNCML_OK: an error of
  // `fd` is for its owner to see. With any other code the text did not go out as a whole.
  //
  // If the text is longer than `maxSize`, the operation returns TASK_SYNCML_TOOLARGE, writes
  // nothing, and leaves the text in the file UID.vtodo under /tmp. The text always goes through
  // that file. Any number of processes, and stores, may use the same UID at the same time: while
  // one of them uses the file, the others use files with random names, which never stay.
  int getEvent(int fd, int& size, int maxSize, unsigned int uid);
  // Appends the text of a task to `text`; nothing unless it returns TASK_SYNCML_OK.
  int getEvent(std::string& text, unsigned int uid);

  // Adds the first to-do of the text in `fd`, read from its start; `uid` becomes that of the new
  // task. `fd` must be able to seek. `size` is for the log. The summary is cut to 512 characters,
  // the note to 4002.
  int addEvent(int fd, int size, unsigned int& uid);
  int addEvent(const std::string& text, unsigned int& uid);

  // Stores the first to-do of the text over a task. Its uuid stays.
  int updateEvent(int fd, int size, unsigned int uid);
  int updateEvent(const std::string& text, unsigned int uid);

  int removeEvent(unsigned int uid);
  // Removes every task.
  int removeAll();

  // Appends the UID of every task; on failure `ids` is as it was.
  int getAllIDs(std::vector<unsigned int>& ids);

  // The store keeps the mode.
  void beginSync(int mode);
  // Nothing outside a run.
  void endSync();

private:
  friend class TASK_UI_SDAction;    // shows a text without storing it
  friend struct SyncAdaptorAccess;  // of the tests

  [[nodiscard]] QString outboundName(unsigned int uid) const;
  bool fileToTask(int fd, ZTASK_ENG_Task& task);
  bool stringToTask(const std::string& text, ZTASK_ENG_Task& task);
  // Adds the task or stores it over the one that has the UID.
  int store(ZTASK_ENG_Task& task, unsigned int& uid, bool traced);
  // Notes a change that succeeded; gives the code for the store's.
  int changeMade(int storeCode);

  QString tmpDir = QStringLiteral("/tmp");
  bool addMode = true;
  bool inSync = false;
  bool changed = false;
};
