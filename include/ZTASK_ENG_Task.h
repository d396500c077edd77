// A task in memory.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QDateTime>
#include <QString>

class ZTASK_ENG_Task;

// A list of pointers to tasks; see QPtrListOf. It replaces Qt 6's list of values, which must not be
// used for tasks; use QValueList<ZTASK_ENG_Task> instead.
template <> class QList<ZTASK_ENG_Task> : public QPtrListOf<ZTASK_ENG_Task> {};

// A value type. Copying is cheap because texts are shared until modified. Accessors never fail.
class ULO_EXPORT ZTASK_ENG_Task {
public:
  // Selects a field for the generic accessors. The values are fixed.
  enum TASK_FIELD_T : int {
    TASK_FIELD_UID = 0,       // 32-bit unsigned; assigned by the store
    TASK_FIELD_CATEGORY = 1,  // text: name of the category, null for a task without one
    TASK_FIELD_NOTE = 2,      // text: the body
    TASK_FIELD_SUMMARY = 3,   // text: the title
    TASK_FIELD_UUID = 4,      // text: identity across stores
    TASK_FIELD_ALARM = 5,     // date-time: the reminder
    TASK_FIELD_DUE = 6,       // date-time: the due date
    TASK_FIELD_END = 7,       // date-time: the completion
    TASK_FIELD_REVISION = 8,  // date-time: the last change. updateTask sets it; addTask stores
                              // it as given
  };

  // The uid of a task that is not stored.
  static constexpr unsigned int notStored = 0xFFFFFFFFU;
  // The no-date value in seconds since 1970 UTC. It means "not set" and is the initial value of
  // every date-time field.
  static constexpr int noDateSeconds = 0x7FFFFFFF;
  // The maximum lengths of a summary and a note from outside, in UTF-16 code units. Longer texts
  // are truncated by `ulotask`, TASK_ENG_SyncML, TASK_UI_VTodo and TASK_UI_SDAction, not by
  // setString, ZVtodoParser or ZTASK_ENG_Model::addTask.
  static constexpr int summaryLimit = 512;
  static constexpr int noteLimit = 4002;
  // The no-date value as a local date-time.
  static QDateTime noDate();

  // Creates a task with uid notStored, priority 0, status -1, null texts and no dates.
  ZTASK_ENG_Task();
  ZTASK_ENG_Task(const ZTASK_ENG_Task& other);
  ZTASK_ENG_Task& operator=(const ZTASK_ENG_Task& other);
  ZTASK_ENG_Task(ZTASK_ENG_Task&& other) noexcept;
  ZTASK_ENG_Task& operator=(ZTASK_ENG_Task&& other) noexcept;
  ~ZTASK_ENG_Task();

  // Returns a text field (1 to 4). Returns an empty text, not a null one, for any other field.
  QString getString(TASK_FIELD_T field) const;
  // Sets a text field (1 to 4). Ignores any other field.
  void setString(TASK_FIELD_T field, QString text);

  // Returns the uid for TASK_FIELD_UID, and 0 for any other field.
  unsigned int getUINT32(TASK_FIELD_T field) const;
  // Sets the uid for TASK_FIELD_UID. Ignores any other field.
  void setUINT32(TASK_FIELD_T field, unsigned int value);

  // Returns a date-time field (5 to 8). Returns the current date and time for any other field.
  QDateTime getDateTime(TASK_FIELD_T field) const;
  // Sets a date-time field (5 to 8). Ignores any other field.
  void setDateTime(TASK_FIELD_T field, QDateTime dateTime);
  // Returns the same instant as getDateTime(), but in UTC if the field was set by setSeconds().
  // Faster than getDateTime(), which converts such a field to local time at each call.
  QDateTime getInstant(TASK_FIELD_T field) const;
  // Sets a date-time field (5 to 8) to UTIL_TimeConversion::fromUTC(seconds). Ignores any other
  // field. Records that the store has read are set this way.
  void setSeconds(TASK_FIELD_T field, int seconds);

  // Returns the priority as it was set: 1 is the highest, 9 the lowest, 0 none.
  int getPriorityValue() const;
  void setPriority(int priority);
  // Returns the class of the priority: 1 high (1 to 4), 5 normal (0 and 5), 9 low (any other).
  int getPriority() const;

  // Returns the status as it was set: 0 completed, 1 needs action, 2 accepted, 3 sent, 4 tentative,
  // 5 confirmed, 6 declined, 7 delegated (the status words of vCalendar 1.0). Any other value is
  // shown and written as needs action. The store's filters compare this value: only 1 is in
  // ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE.
  int getStatusValue() const;
  void setStatus(int status);
  // Returns 0 if getStatusValue() is 0, otherwise 1.
  int getStatus() const;

private:
  static QDateTime ZTASK_ENG_Task::*dateMember(TASK_FIELD_T field);

  unsigned int uid_;
  int priority_;
  int status_;
  unsigned char inUtc_;  // the date-time fields that were set by setSeconds(), one bit for each
  QString category_;
  QString note_;
  QString summary_;
  QString uuid_;
  QDateTime alarm_;
  QDateTime due_;
  QDateTime end_;
  QDateTime revision_;
};
