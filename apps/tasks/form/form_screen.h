// The screen for adding or editing a task.
#pragma once

#include "TASK_UI_View.h"
#include "form/task_draft.h"

namespace tasks {

class CategoryField;
class ChoiceField;
class DateField;
class LineField;
class NoteField;

// Leaving the screen saves the task, unless the user cancels. The screen leaves by the signals of
// TASK_UI_View, with the task as it is stored then, or null if it is not stored.
class FormScreen : public TASK_UI_View {
  Q_OBJECT

public:
  explicit FormScreen(QWidget* parent);

  // Fills the screen with a copy of the task, or with a new task if it is null. Requires: setEngine
  // was called. `from` is the screen to return to.
  void openTask(const ZTASK_ENG_Task* task, TASK_UI_View::TASK_VIEW_TYPE from);

  // Stores the changes. If that fails, tells the user why and returns false.
  bool save();
  [[nodiscard]] bool isChanged() const { return draft_.isChanged(); }

public Q_SLOTS:
  // Saves and leaves.
  void finish();
  // Leaves without saving. If there are changes, asks first.
  void cancelEdit();

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  void addRows();
  void showDraft();
  void followFields();
  void addKeys();
  void leave();
  [[nodiscard]] bool mayDiscard();

  TaskDraft draft_;
  TASK_VIEW_TYPE from_ = TASK_LIST_VIEW;
  LineField* title_ = nullptr;
  DateField* due_ = nullptr;
  DateField* alarm_ = nullptr;
  ChoiceField* status_ = nullptr;
  ChoiceField* priority_ = nullptr;
  CategoryField* category_ = nullptr;
  NoteField* note_ = nullptr;
};

}  // namespace tasks
