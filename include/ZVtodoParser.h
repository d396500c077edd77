// Tasks to vCalendar 1.0 text and back.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "export.h"
#include "qt2.h"

#include <QString>

// Reads and writes through the vObject library, which every object opens when it is made and
// closes when it goes. Without the library nothing is read or written; that is logged. Used by
// one thread of the process at a time: the library's parser is global. Its parser would print its
// steps if the environment variable YYDEBUG is set; they are dropped, and the variable stays.
//
// Text from outside is never handed to the library as it came when the library would not read
// it right; what had to be left out or written in another form is logged.
class ULO_EXPORT ZVtodoParser {
public:
  ZVtodoParser();
  ZVtodoParser(const ZVtodoParser&) = delete;
  ZVtodoParser& operator=(const ZVtodoParser&) = delete;
  ~ZVtodoParser();

  // The file holds a VTODO in a VCALENDAR.
  bool isVtodo(const QString& fileName);

  // Clears the list and appends a new record for each VTODO of the calendars in the text (up to
  // its first zero byte) or in the file, in the order of the text. The records are the caller's,
  // or the list's when it deletes its items. Text that cannot be read leaves the list empty.
  //
  // Read are STATUS, SUMMARY, DESCRIPTION (the note), CATEGORIES, DUE, COMPLETED (the end),
  // PRIORITY, and of a DALARM that has a value of its own the RUNTIME (the alarm). A property
  // without a value leaves its field as it is in a new record.
  void readVtodo(const QCString& text, QList<ZTASK_ENG_Task>& tasks);
  void readVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);

  // Writes one calendar with a VTODO for each task. The file is created, or replaced; when it
  // cannot be opened nothing is written, and that is logged. The category is written as CATEGORY,
  // which is not read.
  void writeVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);
  // The same for one task. A null task leaves the file as it is.
  void writeVtodo(const QString& fileName, ZTASK_ENG_Task* task);
};
