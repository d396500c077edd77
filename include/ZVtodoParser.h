// Reads and writes tasks as vCalendar 1.0 text.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "qt2.h"
#include "ulo/export.h"

#include <QString>

// Uses the vObject library, which each object opens when it is created and closes when it is
// destroyed. Failures are only logged; if the library is missing, nothing is read or written. Only
// one thread of the process at a time may read or write calendar text, with parsers, with
// TASK_ENG_SyncML or with screens, since the library's parser state is global. If the environment
// variable YYDEBUG is set, the debug output of that parser is suppressed.
//
// Repairs text that the library would misread before passing it on, and logs everything that it
// rewrites or leaves out.
class ULO_EXPORT ZVtodoParser {
public:
  ZVtodoParser();
  ZVtodoParser(const ZVtodoParser&) = delete;
  ZVtodoParser& operator=(const ZVtodoParser&) = delete;
  ~ZVtodoParser();

  // Returns true if the file contains a VCALENDAR with a VTODO and is not truncated.
  bool isVtodo(const QString& fileName);

  // Clears the list and appends a new record for each VTODO of the calendars in the text (up to its
  // first zero byte) or file, in the order of the text. The caller owns the records, unless the
  // list deletes its items. An empty list means that the text could not be read or contains no
  // to-do.
  //
  // Reads STATUS, SUMMARY, DESCRIPTION (note), CATEGORIES, DUE, COMPLETED (end), PRIORITY, and the
  // RUNTIME (alarm) of a DALARM that also has a value. A property without a value leaves its field
  // unset.
  void readVtodo(const QCString& text, QList<ZTASK_ENG_Task>& tasks);
  void readVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);

  // Writes one calendar with a VTODO for each task, replacing an existing file. If the file cannot
  // be opened, writes nothing and logs that. To detect a failure, write to a new file and then call
  // isVtodo. The category is written as CATEGORY, which is not read back; neither is the alarm.
  void writeVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);
  // Writes one task. Leaves the file unchanged if `task` is null.
  void writeVtodo(const QString& fileName, ZTASK_ENG_Task* task);
};
