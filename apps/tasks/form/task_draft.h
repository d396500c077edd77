// A task that is being edited.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "task_words.h"

#include <QDate>
#include <QDateTime>
#include <QString>

#include <optional>

namespace tasks {

// A new task or a change of a stored one. Setting a field to its stored value leaves it unchanged,
// unit by unit and code by code.
class TaskDraft {
public:
  // A new task that needs action and has normal priority.
  TaskDraft();
  explicit TaskDraft(const ZTASK_ENG_Task& stored);

  // The task as it would be saved; after saving, as it is stored.
  [[nodiscard]] const ZTASK_ENG_Task& task() const { return wanted_; }
  // The task at the start of the draft, or when it was last saved.
  [[nodiscard]] const ZTASK_ENG_Task& original() const { return original_; }
  [[nodiscard]] bool isNew() const;

  // Texts are truncated at a whole letter to the limit of the field, or to the length of the stored
  // text if that is longer.
  void setSummary(const QString& text);
  void setNote(const QString& text);
  // Sets the due date to the start of the day, or to its stored time of day if there is one.
  // Without a day, the task has no due date.
  void setDue(const std::optional<QDate>& day);
  // The local day of the due date.
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
  // Stores the changed fields into the task as it is stored now. Adds a task that was removed in
  // the meantime, and a category that does not exist. Stores nothing if nothing was changed.
  // Returns a code of the store; unless it is TASK_ENG_OK, the draft stays unchanged.
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
