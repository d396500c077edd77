// What the user makes of a task before it is saved.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "task_words.h"

#include <QDate>
#include <QDateTime>
#include <QString>

#include <optional>

namespace tasks {

// A new task or a change of a stored one. A field that is set to what it was is not changed: what
// is stored of it stays as it is, unit by unit and code by code.
class TaskDraft {
public:
  // A new task: to be done, of normal priority.
  TaskDraft();
  explicit TaskDraft(const ZTASK_ENG_Task& stored);

  // The task as it would be saved; the stored one once it is.
  [[nodiscard]] const ZTASK_ENG_Task& task() const { return wanted_; }
  // The task as the draft began with it.
  [[nodiscard]] const ZTASK_ENG_Task& original() const { return original_; }
  [[nodiscard]] bool isNew() const;

  // Texts are cut, at a whole letter, to what a task holds, or to the length of the stored text if
  // that is longer.
  void setSummary(const QString& text);
  void setNote(const QString& text);
  // Local midnight of a day; the time of day that was stored where there was one. Nothing for a
  // task that isn't due.
  void setDue(const std::optional<QDate>& day);
  // The local day on which the task is due.
  [[nodiscard]] std::optional<QDate> due() const;
  void setAlarm(const std::optional<QDateTime>& time);
  [[nodiscard]] std::optional<QDateTime> alarm() const;
  // Keeps the stored code if the screens show it in the same way: as completed or not, and in the
  // same class of priorities.
  void setStatus(ulo::Status status);
  void setPriority(ulo::Priority priority);
  // A name for which isNoCategory returns true removes the category.
  void setCategory(const QString& name);

  [[nodiscard]] bool isChanged() const;
  // Stores the fields that were changed, over the task as it is stored now; a task that was removed
  // meanwhile is stored anew. A category that there isn't yet is made. Nothing is stored of a draft
  // without changes. A code of the store; the draft stays as it is when that isn't TASK_ENG_OK.
  int save(ZTASK_ENG_Model& store);

private:
  [[nodiscard]] bool differs(ZTASK_ENG_Task::TASK_FIELD_T text) const;
  [[nodiscard]] bool datesDiffer(ZTASK_ENG_Task::TASK_FIELD_T date) const;
  void applyTo(ZTASK_ENG_Task& task) const;
  int replace(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) const;
  int add(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) const;

  ZTASK_ENG_Task original_;
  ZTASK_ENG_Task wanted_;
};

}  // namespace tasks
