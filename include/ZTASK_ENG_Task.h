// One task of the owner's to-do list, in memory.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QDateTime>
#include <QString>

class ZTASK_ENG_Task;

// A list of pointers to tasks; see QPtrListOf. This stands in the place of Qt 6's value list,
// which must not be used for tasks (QValueList<ZTASK_ENG_Task> is the list of values).
template <> class QList<ZTASK_ENG_Task> : public QPtrListOf<ZTASK_ENG_Task> {};

// A plain value: copying is cheap (texts are shared until one side changes), and no accessor
// reports an error.
class ULO_EXPORT ZTASK_ENG_Task {
public:
  // Selects a field for the generic accessors. The values are fixed.
  enum TASK_FIELD_T : int {
    TASK_FIELD_UID = 0,       // 32-bit unsigned; assigned by the store
    TASK_FIELD_CATEGORY = 1,  // text: name of the category, null for none
    TASK_FIELD_NOTE = 2,      // text: the body
    TASK_FIELD_SUMMARY = 3,   // text: the title
    TASK_FIELD_UUID = 4,      // text: identity across stores
    TASK_FIELD_ALARM = 5,     // date-time: when to remind
    TASK_FIELD_DUE = 6,       // date-time: when to be done
    TASK_FIELD_END = 7,       // date-time: when it was finished
    TASK_FIELD_REVISION = 8,  // date-time: last change, kept by the store
  };

  // The uid of a task that is not stored.
  static constexpr unsigned int notStored = 0xFFFFFFFFU;
  // Seconds since 1970 UTC of the no-date value, which every date-time field starts with and
  // which means "not set".
  static constexpr int noDateSeconds = 0x7FFFFFFF;
  // Characters of 16 bits that a summary and a note from outside keep; what is behind is cut.
  static constexpr int summaryLimit = 512;
  static constexpr int noteLimit = 4002;
  // The no-date value itself, as a local date-time.
  static QDateTime noDate();

  // uid notStored, priority 0, status -1, null texts, no dates.
  ZTASK_ENG_Task();
  ZTASK_ENG_Task(const ZTASK_ENG_Task& other);
  ZTASK_ENG_Task& operator=(const ZTASK_ENG_Task& other);
  ZTASK_ENG_Task(ZTASK_ENG_Task&& other) noexcept;
  ZTASK_ENG_Task& operator=(ZTASK_ENG_Task&& other) noexcept;
  ~ZTASK_ENG_Task();

  // The text of fields 1 to 4; an empty text, not a null one, for any other value.
  QString getString(TASK_FIELD_T field) const;
  // Sets fields 1 to 4; any other value is ignored.
  void setString(TASK_FIELD_T field, QString text);

  // The uid for TASK_FIELD_UID, 0 for any other value.
  unsigned int getUINT32(TASK_FIELD_T field) const;
  // Sets the uid for TASK_FIELD_UID; any other value is ignored.
  void setUINT32(TASK_FIELD_T field, unsigned int value);

  // The date-time of fields 5 to 8; the current date and time for any other value.
  QDateTime getDateTime(TASK_FIELD_T field) const;
  // Sets fields 5 to 8; any other value is ignored.
  void setDateTime(TASK_FIELD_T field, QDateTime dateTime);

  // The priority as it was given: 1 is the highest, 9 the lowest, 0 none.
  int getPriorityValue() const;
  void setPriority(int priority);
  // The priority in three classes: 1 high (1 to 4), 5 normal (0 and 5), 9 low (anything else).
  int getPriority() const;

  // The status as it was given: 0 completed, 1 needs action, 2 accepted, 3 sent, 4 tentative,
  // 5 confirmed, 6 declined, 7 delegated (the status words of vCalendar 1.0); any other value
  // means needs action.
  int getStatusValue() const;
  void setStatus(int status);
  // 0 when completed, otherwise 1.
  int getStatus() const;

private:
  unsigned int uid_;
  int priority_;
  int status_;
  QString category_;
  QString note_;
  QString summary_;
  QString uuid_;
  QDateTime alarm_;
  QDateTime due_;
  QDateTime end_;
  QDateTime revision_;
};
