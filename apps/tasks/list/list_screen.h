// The screen with the list of tasks.
#pragma once

#include "TASK_UI_View.h"
#include "list/pending_removal.h"
#include "list/task_list_model.h"

#include <QDate>
#include <QTimer>

class QLabel;
class QScrollArea;
class QStackedLayout;
class ZOptionsMenu;

namespace tasks {

class FilterBar;
class NoticeBar;
class TaskListView;

// Shows one of four views of the list, by due date or priority, and gives way to the screens that
// show, make or edit a task. View and order are those of the last time.
class ListScreen : public TASK_UI_View {
  Q_OBJECT

public:
  // How long a removal can be taken back.
  static constexpr std::chrono::milliseconds undoTime{6000};

  // The store must outlive the screen.
  ListScreen(ZTASK_ENG_Model& store, QWidget* parent = nullptr);
  ~ListScreen() override;

  // Shows the task, where the view has it.
  void goTo(unsigned int uid);
  // Whether view, search or category leave this task out. False while it may still be found.
  [[nodiscard]] bool leavesOut(unsigned int uid) const;
  // Tells of something that was done.
  void tell(const QString& message);
  // A task that the user deleted a moment ago stays after all.
  void keep(unsigned int uid) { removal_.keep(uid); }
  // Makes what cannot wait: removals that could be taken back.
  void finish() { removal_.finish(); }

public Q_SLOTS:
  // Reads anew what the store has.
  void refresh();

Q_SIGNALS:
  // The user wants to leave the application.
  void exitAsked();

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

private Q_SLOTS:
  void selectAll();
  void unselectAll();
  void viewAll() { setView(ZTASK_ENG_Model::TASK_CATEGORY_ALL); }
  void viewDue() { setView(ZTASK_ENG_Model::TASK_CATEGORY_DUE); }
  void viewIncomplete() { setView(ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE); }
  void viewCompleted() { setView(ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED); }
  void createTask();
  void editTask();
  void shareByBluetooth();
  void shareByMessage();
  void synchronize();
  void removeTasks() { remove(targets()); }
  void removeMenuTasks() { remove(menuTargets_); }
  void selectMultiple();
  void sortByDue() { setSort(ZTASK_ENG_Model::TASK_SORT_DUE); }
  void sortByPriority() { setSort(ZTASK_ENG_Model::TASK_SORT_PRIORITY); }
  void rightKey();
  void undoRemoval();

private:
  void buildContent();
  void followContent();
  void buildKeys();
  void buildMenu();
  void updateMenu();
  void updateKeys();
  void updateTitle();
  void updateState();
  void setView(ZTASK_ENG_Model::TASK_CATEGORY view);
  void setSort(ZTASK_ENG_Model::TASK_SORT_FIELD sort);
  void setOrder(const ulo::ListOrder& order);
  void showOrder(const ulo::ListOrder& order);
  void setChoosing(bool choosing);
  void openTask(int row);
  void checkTask(int row);
  void remove(const std::vector<unsigned int>& uids);
  void removalChanged();
  void readCategories();
  // The tasks that a key is for: the chosen ones, or the current one.
  [[nodiscard]] std::vector<unsigned int> targets() const;
  // Reads the one task that the menu is for. Returns false if there are none or several, and, after
  // telling the user why, if it is gone or can't be read.
  bool readMenuTask(ZTASK_ENG_Task& task);
  void startSynchronizing();
  [[nodiscard]] QString emptyText() const;

  ZTASK_ENG_Model& store_;
  QDate today_;
  TaskListModel model_;
  PendingRemoval removal_;
  TaskListView* list_ = nullptr;
  FilterBar* filter_ = nullptr;
  NoticeBar* notice_ = nullptr;
  QStackedLayout* pages_ = nullptr;
  QScrollArea* emptyPage_ = nullptr;
  QLabel* empty_ = nullptr;
  ZOptionsMenu* menu_ = nullptr;
  // What the menu was opened for, whatever happens to the list meanwhile.
  std::vector<unsigned int> menuTargets_;
  QTimer day_{this};
  bool choosing_ = false;
  bool syncWanted_ = false;  // once nothing is left to remove
};

}  // namespace tasks
