#include "stored_text.h"

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Model.h"
#include "todo_text.h"
#include "ulodb2.h"
#include "write_transaction.h"

namespace ulo {

int readText(unsigned int uid, QByteArray& text) {
  const char* bytes = nullptr;
  unsigned int size = 0;
  if (const int result = DB_GetTaskText(static_cast<int>(uid), &bytes, &size); result != DB_OK)
    return storeCode(result);
  text = QByteArray(bytes, static_cast<qsizetype>(size));
  return TASK_ENG_OK;
}

int storeText(unsigned int uid, const QByteArray& text) {
  return storeCode(DB_SetTaskText(static_cast<int>(uid), text.constData(),
                                  static_cast<unsigned int>(text.size())));
}

int currentText(const ZTASK_ENG_Task& task, QByteArray& text) {
  QByteArray stored;
  const int code = readText(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), stored);
  if (code == TASK_ENG_OK)
    text = TASK_ENG_Ical::write(task, stored);
  return code;
}

int readRepetition(unsigned int uid, Repetition& repetition) {
  QByteArray text;
  const int code = readText(uid, text);
  if (code == TASK_ENG_OK)
    repetition = text.isEmpty() ? Repetition() : repetitionOf(text);
  return code;
}

}  // namespace ulo
