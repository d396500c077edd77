#include "change_task.h"

#include "stored_text.h"
#include "task_dates.h"
#include "task_words.h"
#include "todo_text.h"
#include "ulodb2.h"
#include "write_transaction.h"

namespace ulo {
namespace {

constexpr auto dueField = ZTASK_ENG_Task::TASK_FIELD_DUE;
constexpr auto alarmField = ZTASK_ENG_Task::TASK_FIELD_ALARM;

// Moves an alarm that the text defines relative to the due date, if the change left it alone. Such
// an alarm gets a time, and becomes the alarm of the task, with the first due date.
void moveAlarm(const ZTASK_ENG_Task& before, ZTASK_ENG_Task& task, const QByteArray& text) {
  if (!hasDate(task, dueField) || task.getDateTime(dueField) == before.getDateTime(dueField) ||
      task.getDateTime(alarmField) != before.getDateTime(alarmField))
    return;
  const QByteArray current = TASK_ENG_Ical::write(before, text);
  if (TASK_ENG_Ical(current).count() > 0)
    task.setDateTime(alarmField, alarmForDue(current, task.getDateTime(dueField)));
}

void copyDates(const ZTASK_ENG_Task& from, ZTASK_ENG_Task& to) {
  for (const auto field : {dueField, alarmField})
    to.setDateTime(field, from.getDateTime(field));
}

// Moves a task that has become completed to its next date, if it repeats. Sets `text` to its new
// text then, and leaves it unchanged otherwise. Only the dates are written into the text: the next
// import compares the other fields with it to find local edits.
void moveToNextDate(ChangeReport& report, QByteArray& text) {
  const TASK_ENG_Ical stored(text);
  if (stored.count() == 0 || !stored.repeats(0))
    return;
  ZTASK_ENG_Task dates = stored.task(0);
  copyDates(report.task, dates);
  setChangedNow(dates);
  TASK_ENG_Ical calendar(TASK_ENG_Ical::write(dates, text));
  report.next = calendar.moveToNextDate(0);
  if (report.next != TASK_ENG_Ical::moved)
    return;
  copyDates(calendar.task(0), report.task);
  report.task.setStatus(codeOf(Status::needsAction));
  report.task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_END, ZTASK_ENG_Task::noDate());
  setChangedNow(report.task);
  text = calendar.text();
}

// Lets a change follow the task's text.
void followText(const ZTASK_ENG_Task& before, ChangeReport& report, QByteArray& text) {
  moveAlarm(before, report.task, text);
  if (isCompleted(report.task) && !isCompleted(before))
    moveToNextDate(report, text);
}

}  // namespace

// The task exists, so if the store does not find something, it is the category.
int storeTask(ZTASK_ENG_Model& store, ChangeReport& report) {
  const int code = store.updateTask(report.task);
  if (code != TASK_ENG_NOT_FOUND)
    return code;
  QString category = report.task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  if (category == vanishedCategory) {
    category = QString();
    report.categoryVanished = true;
  }
  if (const int made = ensureCategory(store, category); made != TASK_ENG_OK)
    return made;
  report.task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category);
  return store.updateTask(report.task);
}

int readTask(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& task) {
  const unsigned int failures = DB_FailureCount();
  const int code = store.getTask(uid, task);
  return code == TASK_ENG_OK && DB_FailureCount() != failures ? storeCode(DB_LastResult()) : code;
}

int changeTask(ZTASK_ENG_Model& store, unsigned int uid,
               const std::function<void(ZTASK_ENG_Task&)>& change, ChangeReport* report) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  ChangeReport changed;
  if (const int code = readTask(store, uid, changed.task); code != TASK_ENG_OK)
    return code;
  const ZTASK_ENG_Task before = changed.task;
  change(changed.task);
  QByteArray text;
  if (const int code = readText(uid, text); code != TASK_ENG_OK)
    return code;
  QByteArray newText = text;
  if (!text.isEmpty())
    followText(before, changed, newText);
  if (const int code = storeTask(store, changed); code != TASK_ENG_OK)
    return code;
  if (newText != text) {
    if (const int code = storeText(uid, newText); code != TASK_ENG_OK)
      return code;
  }
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK && report != nullptr)
    *report = changed;
  return code;
}

int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed, ChangeReport* report) {
  const Status status = completed ? Status::completed : Status::needsAction;
  return changeTask(
      store, uid, [=](ZTASK_ENG_Task& task) { task.setStatus(codeOf(status)); }, report);
}

int removeTask(ZTASK_ENG_Model& store, unsigned int uid, ZTASK_ENG_Task& removed) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  ZTASK_ENG_Task task;
  if (const int code = readTask(store, uid, task); code != TASK_ENG_OK)
    return code;
  if (const int code = store.removeTask(uid); code != TASK_ENG_OK)
    return code;
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK)
    removed = task;
  return code;
}

void setChangedNow(ZTASK_ENG_Task& task) {
  task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_REVISION,
                  static_cast<int>(QDateTime::currentDateTimeUtc().toSecsSinceEpoch()));
}

int ensureCategory(ZTASK_ENG_Model& store, const QString& name) {
  QString category = name;
  unsigned int uid = 0;
  const int code = store.addCategory(category, uid);
  return code == TASK_ENG_EXISTS ? static_cast<int>(TASK_ENG_OK) : code;
}

int addTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) {
  WriteTransaction transaction;
  if (!transaction)
    return storeCode(transaction.result());
  // The store itself ensures that the null category exists.
  const QString category = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  if (const int code = category.isNull() ? TASK_ENG_OK : ensureCategory(store, category);
      code != TASK_ENG_OK)
    return code;
  ZTASK_ENG_Task added = task;
  if (const int code = store.addTask(added); code != TASK_ENG_OK)
    return code;
  const int code = storeCode(transaction.commit());
  if (code == TASK_ENG_OK)
    task = added;
  return code;
}

}  // namespace ulo
