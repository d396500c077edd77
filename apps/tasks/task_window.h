// The window of the application: one screen at a time.
#pragma once

#include "TASK_UI_View.h"
#include "alarms.h"
#include "import.h"
#include "store_changes.h"

#include <QStackedWidget>

#include <map>

namespace tasks {

class FormScreen;
class ListScreen;

// Screens ask for each other by their signals. The list is always there; the others come when they
// are asked for and go when they are disposed of.
class TaskWindow : public QStackedWidget {
  Q_OBJECT

public:
  explicit TaskWindow(ZTASK_ENG_Model& store);

  // Shows a stored task, once what is being edited is saved; nothing for one that isn't stored.
  void openTask(unsigned int uid);
  // Stores the to-dos of calendar files, a few at a time, and tells of it; nothing without files.
  void import(const QStringList& paths);

protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private Q_SLOTS:
  void changeView(TASK_UI_View::TASK_VIEW_TYPE from, TASK_UI_View::TASK_VIEW_TYPE to,
                  ZTASK_ENG_Task* task);
  void disposeView(TASK_UI_View::TASK_VIEW_TYPE type);

private:
  void follow(TASK_UI_View& screen);
  TASK_UI_View* makeDetailView(ZTASK_ENG_Task& task);
  TASK_UI_View* makeForm(TASK_UI_View::TASK_VIEW_TYPE from, const ZTASK_ENG_Task* task);
  void showScreen(TASK_UI_View::TASK_VIEW_TYPE type, TASK_UI_View* screen);
  [[nodiscard]] FormScreen* form() const;
  void importEnded(const ImportResult& result);

  ZTASK_ENG_Model& store_;
  StoreChanges changes_;
  Alarms alarms_;
  Import import_;
  ListScreen* list_;
  // All but the list.
  std::map<TASK_UI_View::TASK_VIEW_TYPE, TASK_UI_View*> screens_;
};

}  // namespace tasks
