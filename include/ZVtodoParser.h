// Converts tasks to and from vCalendar 1.0 text.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "export.h"
#include "qt2.h"

#include <QString>

struct VObject;

// Reads and writes with the vObject library, which each object opens when it is created and closes
// when it is destroyed. If the library is missing, nothing is read or written, and that is logged.
// Only one thread of the process may use this class at a time because the library's parser is
// global. The trace that the parser prints if the environment variable YYDEBUG is set is discarded;
// the variable stays set.
//
// Text from outside that the library would misread is repaired before it is passed on. Each repair
// and each omission is logged.
class ULO_EXPORT ZVtodoParser {
public:
  ZVtodoParser();
  ZVtodoParser(const ZVtodoParser&) = delete;
  ZVtodoParser& operator=(const ZVtodoParser&) = delete;
  ~ZVtodoParser();

  // Returns whether the file contains a VTODO in a VCALENDAR.
  bool isVtodo(const QString& fileName);

  // Clears the list and appends a new record for each VTODO of the calendars in the text (up to its
  // first zero byte) or in the file, in text order. The caller owns the records, or the list if it
  // deletes its items. If the text cannot be read, the list stays empty.
  //
  // Reads STATUS, SUMMARY, DESCRIPTION (the note), CATEGORIES, DUE, COMPLETED (the end date),
  // PRIORITY, and the RUNTIME (the alarm) of a DALARM that also has a value itself. A property
  // without a value leaves its field as in a new record.
  void readVtodo(const QCString& text, QList<ZTASK_ENG_Task>& tasks);
  void readVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);

  // Writes a calendar with a VTODO for each task. Creates or replaces the file; if it cannot be
  // opened, writes nothing and logs that. The category is written as CATEGORY, which is not read
  // back.
  void writeVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks);
  // The same for one task. If the task is null, leaves the file unchanged.
  void writeVtodo(const QString& fileName, ZTASK_ENG_Task* task);

private:
  friend struct ZVtodoParserAccess;  // for the tests

  // Returns the calendar object, which must be released with cleanVObject.
  VObject* buildVCalendar(QList<ZTASK_ENG_Task>& tasks);
  // Returns false if there is no memory for the record.
  bool appendTaskRec(VObject* todo, QList<ZTASK_ENG_Task>& tasks);
  // Returns a new record, or null on failure.
  ZTASK_ENG_Task* toTaskRec(VObject* todo);
  int getStatusValue(const QCString& text);
  int getPriorityValue(const QCString& text);
  // Decodes a value in the character set that the property declares.
  QString decodeCharset(VObject* property, const QCString& value);
};
