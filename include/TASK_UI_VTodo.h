// Receives a to-do that another device sent to this one.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QObject>

class ULO_EXPORT TASK_UI_VTodo : public QObject {
  Q_OBJECT

public:
  // Returns a new object for one call of addVTodo, which deletes it.
  static TASK_UI_VTodo* getInstance();

  // Stores the first to-do of a vCalendar 1.0 text and shows it. The text ends at its first zero
  // byte; if it has none, the last byte is not read. The user must pass the application lock first.
  // Summary and note are truncated to ZTASK_ENG_Task::summaryLimit and noteLimit. Must be called in
  // the main thread, while no other thread reads or writes calendar text (see ZVtodoParser).
  //
  // Returns 1 if the lock denied access or the text contains no to-do, otherwise 0. If the store
  // rejects the to-do, that is only logged, and the result is still 0. The object is deleted in
  // every case.
  unsigned int addVTodo(QArray<char>& data);

private:
  TASK_UI_VTodo();
  ~TASK_UI_VTodo() override;
};
