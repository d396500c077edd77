// The screen on which a task is made or edited.
#pragma once

#include "TASK_UI_View.h"
#include "form/task_draft.h"

namespace tasks {

class CategoryField;
class ChoiceField;
class DateField;
class LineField;
class NoteField;

// Whoever leaves it has saved, unless the user cancels the edit. It gives way by the signals of
// TASK_UI_View, with the task as it is stored then; null when there is none.
class FormScreen : public TASK_UI_View {
  Q_OBJECT

public:
  explicit FormScreen(QWidget* parent);

  // Fills the screen with a copy of the task, or for a new one when it is null. `setEngine` comes
  // first. `from` is the screen to go back to.
  void openTask(const ZTASK_ENG_Task* task, TASK_UI_View::TASK_VIEW_TYPE from);

  // Stores what was changed. False, after the user was told why, when that can't be done.
  bool save();
  [[nodiscard]] bool isChanged() const { return draft_.isChanged(); }

public Q_SLOTS:
  // Saves and leaves.
  void finish();
  // Leaves without saving; asks before if something was changed.
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
