// The window of the application, which shows one screen at a time.
#pragma once

#include "TASK_UI_View.h"
#include "alarms/alarms.h"
#include "window/import.h"
#include "window/store_changes.h"

#include <QStackedWidget>
#include <QTimer>

#include <map>
#include <vector>

namespace tasks {

class FormScreen;
class ListScreen;

// Screens request each other by their signals. The list always exists; the other screens are
// created on request and deleted when they are disposed of. The details follow the stored task; if
// it is deleted, the list is shown.
class TaskWindow : public QStackedWidget {
  Q_OBJECT

public:
  explicit TaskWindow(ZTASK_ENG_Model& store);

  // Saves the open form, and then shows a stored task. Does nothing if the task is not stored.
  // A task that the user has just deleted is restored.
  void openTask(unsigned int uid);
  // Stores the to-dos of calendar files in small slices and reports the result. Does nothing
  // without files.
  void import(const QStringList& paths);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private Q_SLOTS:
  void changeView(TASK_UI_View::TASK_VIEW_TYPE from, TASK_UI_View::TASK_VIEW_TYPE to,
                  ZTASK_ENG_Task* task);
  void disposeView(TASK_UI_View::TASK_VIEW_TYPE type);

private:
  // A screen, and the event-loop depth at its creation.
  struct Screen {
    TASK_UI_View* view;
    int loops;
  };

  void follow(TASK_UI_View& screen);
  void renewDetails();
  void dropLeft();
  void tidy();
  TASK_UI_View* makeDetailView(ZTASK_ENG_Task& task);
  TASK_UI_View* makeForm(TASK_UI_View::TASK_VIEW_TYPE from, const ZTASK_ENG_Task* task);
  void showInList(unsigned int uid);
  void showScreen(TASK_UI_View::TASK_VIEW_TYPE type, TASK_UI_View* screen);
  [[nodiscard]] FormScreen* form() const;
  void tellNotCompleted(int code);
  void importEnded(const ImportResult& result);

  ZTASK_ENG_Model& store_;
  StoreChanges changes_;
  Alarms alarms_;
  Import import_;
  ListScreen* list_;
  // All screens except the list.
  std::map<TASK_UI_View::TASK_VIEW_TYPE, Screen> screens_;
  std::vector<Screen> left_;  // disposed of but still in use
  ZTASK_ENG_Task details_;    // the task that the details show
  bool detailsAreOld_ = false;
  QTimer tidying_{this};
};

}  // namespace tasks
