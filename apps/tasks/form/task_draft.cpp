#include "form/task_draft.h"

#include "change_task.h"
#include "dates.h"
#include "foreign_text.h"
#include "task_dates.h"
#include "task_texts.h"
#include "write_transaction.h"

#include "UTIL_TimeConversion.h"

#include <algorithm>

namespace tasks {

namespace {

using Task = ZTASK_ENG_Task;

constexpr Task::TASK_FIELD_T editedTexts[] = {Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_NOTE,
                                              Task::TASK_FIELD_CATEGORY};
constexpr Task::TASK_FIELD_T editedDates[] = {Task::TASK_FIELD_DUE, Task::TASK_FIELD_ALARM};

// The store ends a text at its first character 0.
QString limited(QString text, qsizetype units) {
  return ulo::wholeLetters(text.remove(QChar(u'\0')), units);
}

// Texts stored by other programs may be longer than the limit.
qsizetype most(const QString& stored, qsizetype limit) {
  return std::max(stored.size(), limit);
}

std::optional<QDateTime> dateOf(const Task& task, Task::TASK_FIELD_T field) {
  const QDateTime stored = task.getDateTime(field);
  return ulo::hasDate(stored) ? std::optional(UTIL_TimeConversion::toLocalTime(stored))
                              : std::nullopt;
}

// The store maintains the end date of tasks that it updates, but not of tasks that it adds.
void setEnd(Task& task, const QDateTime& now) {
  if (!ulo::isCompleted(task))
    task.setDateTime(Task::TASK_FIELD_END, Task::noDate());
  else if (!ulo::hasDate(task, Task::TASK_FIELD_END))
    task.setDateTime(Task::TASK_FIELD_END, now);
}

Task newTask() {
  Task task;
  task.setStatus(codeOf(ulo::Status::needsAction));
  task.setPriority(codeOf(ulo::Priority::normal));
  return task;
}

}  // namespace

TaskDraft::TaskDraft() : TaskDraft(newTask()) {}

TaskDraft::TaskDraft(const ZTASK_ENG_Task& stored) : original_(stored), wanted_(stored) {}

bool TaskDraft::isNew() const {
  return original_.getUINT32(Task::TASK_FIELD_UID) == Task::notStored;
}

void TaskDraft::setSummary(const QString& text) {
  const QString before = original_.getString(Task::TASK_FIELD_SUMMARY);
  wanted_.setString(Task::TASK_FIELD_SUMMARY,
                    text == before ? before : limited(text, most(before, Task::summaryLimit)));
}

void TaskDraft::setNote(const QString& text) {
  const QString before = original_.getString(Task::TASK_FIELD_NOTE);
  wanted_.setString(Task::TASK_FIELD_NOTE,
                    text == before ? before : limited(text, most(before, Task::noteLimit)));
}

void TaskDraft::setDue(const std::optional<QDate>& day) {
  const std::optional<QDateTime> before = dateOf(original_, Task::TASK_FIELD_DUE);
  QDateTime due = Task::noDate();
  if (day)
    due = before ? ulo::localTimeOrStart(*day, before->time()) : day->startOfDay();
  // The same day keeps the same moment, even in an hour that the clocks show twice.
  if (day && before && before->date() == *day)
    due = original_.getDateTime(Task::TASK_FIELD_DUE);
  wanted_.setDateTime(Task::TASK_FIELD_DUE, due);
}

std::optional<QDate> TaskDraft::due() const {
  const std::optional<QDateTime> stored = dateOf(wanted_, Task::TASK_FIELD_DUE);
  return stored ? std::optional(stored->date()) : std::nullopt;
}

void TaskDraft::setAlarm(const std::optional<QDateTime>& time) {
  wanted_.setDateTime(Task::TASK_FIELD_ALARM, time.value_or(Task::noDate()));
}

std::optional<QDateTime> TaskDraft::alarm() const {
  return dateOf(wanted_, Task::TASK_FIELD_ALARM);
}

void TaskDraft::setStatus(ulo::Status status) {
  const bool isSame = (status == ulo::Status::completed) == ulo::isCompleted(original_);
  wanted_.setStatus(isSame ? original_.getStatusValue() : codeOf(status));
}

void TaskDraft::setPriority(ulo::Priority priority) {
  const bool isSame = priority == ulo::priorityOf(original_);
  wanted_.setPriority(isSame ? original_.getPriorityValue() : codeOf(priority));
}

void TaskDraft::setCategory(const QString& name) {
  const QString before = original_.getString(Task::TASK_FIELD_CATEGORY);
  if (isNoCategory(name))
    wanted_.setString(Task::TASK_FIELD_CATEGORY, isNoCategory(before) ? before : QString());
  else
    wanted_.setString(Task::TASK_FIELD_CATEGORY, name);
}

bool TaskDraft::differs(ZTASK_ENG_Task::TASK_FIELD_T text) const {
  return wanted_.getString(text) != original_.getString(text);
}

bool TaskDraft::datesDiffer(ZTASK_ENG_Task::TASK_FIELD_T date) const {
  return dateOf(wanted_, date) != dateOf(original_, date);
}

bool TaskDraft::isChanged() const {
  for (const Task::TASK_FIELD_T field : editedTexts)
    if (differs(field))
      return true;
  for (const Task::TASK_FIELD_T field : editedDates)
    if (datesDiffer(field))
      return true;
  return wanted_.getStatusValue() != original_.getStatusValue() ||
         wanted_.getPriorityValue() != original_.getPriorityValue();
}

void TaskDraft::applyTo(ZTASK_ENG_Task& task) const {
  for (const Task::TASK_FIELD_T field : editedTexts)
    if (differs(field))
      task.setString(field, wanted_.getString(field));
  for (const Task::TASK_FIELD_T field : editedDates)
    if (datesDiffer(field))
      task.setDateTime(field, wanted_.getDateTime(field));
  if (wanted_.getStatusValue() != original_.getStatusValue())
    task.setStatus(wanted_.getStatusValue());
  if (wanted_.getPriorityValue() != original_.getPriorityValue())
    task.setPriority(wanted_.getPriorityValue());
}

int TaskDraft::save(ZTASK_ENG_Model& store) {
  if (!isChanged())
    return TASK_ENG_OK;
  // A task that another program has removed is added again in the same transaction.
  ulo::WriteTransaction transaction;
  if (!transaction)
    return ulo::storeCode(transaction.result());
  Task task = wanted_;
  int code = isNew() ? static_cast<int>(TASK_ENG_NOT_FOUND) : replace(store, task);
  if (code == TASK_ENG_NOT_FOUND)
    code = add(store, task);
  if (code != TASK_ENG_OK)
    return code;
  // As it was stored, in whole seconds.
  static_cast<void>(store.getTask(task.getUINT32(Task::TASK_FIELD_UID), task));
  code = ulo::storeCode(transaction.commit());
  if (code == TASK_ENG_OK)
    *this = TaskDraft(task);
  return code;
}

// Returns TASK_ENG_NOT_FOUND, and leaves `task` unchanged, if it is no longer stored.
int TaskDraft::replace(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) const {
  ulo::ChangeReport report;
  const int code = ulo::changeTask(
      store, task.getUINT32(Task::TASK_FIELD_UID), [this](Task& stored) { applyTo(stored); },
      &report);
  if (code == TASK_ENG_OK)
    task = report.task;
  return code;
}

int TaskDraft::add(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) const {
  const QDateTime now = ulo::currentLocalTime();
  setEnd(task, now);
  task.setDateTime(Task::TASK_FIELD_REVISION, now);
  // The name that stands for a removed category must not become a category.
  if (task.getString(Task::TASK_FIELD_CATEGORY) == ulo::vanishedCategory)
    task.setString(Task::TASK_FIELD_CATEGORY, QString());
  return ulo::addTask(store, task);
}

}  // namespace tasks
