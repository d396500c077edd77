// Takes a to-do that another device pushed to this one.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QObject>

class ULO_EXPORT TASK_UI_VTodo : public QObject {
  Q_OBJECT

public:
  // A new object, for one call of addVTodo, which deletes it.
  static TASK_UI_VTodo* getInstance();

  // Stores the first to-do of a vCalendar 1.0 text and shows it. The text ends at its first zero
  // byte; without one the last byte is not read. The user must pass the application lock first.
  // The summary is cut to 512 characters, the note to 4002.
  // 1: refused by the lock, or no to-do in the text. 0: stored and shown; also, with a line in the
  // log alone, when the store took it not. The object is gone in any case.
  unsigned int addVTodo(QArray<char>& data);

private:
  TASK_UI_VTodo();
  ~TASK_UI_VTodo() override;
};
