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
enum class ShareBy;

// Shows one of four views of the list, sorted by due date or priority, and requests the screens
// that show, add or edit a task. Remembers the view and the order.
class ListScreen : public TASK_UI_View {
  Q_OBJECT

public:
  // The undo period of a deletion.
  static constexpr std::chrono::milliseconds undoTime{6000};

  // The store must outlive the screen.
  ListScreen(ZTASK_ENG_Model& store, QWidget* parent = nullptr);
  ~ListScreen() override;

  // Selects the task if the view shows it.
  void goTo(unsigned int uid);
  // Whether the view, the search or the category filter hides this task. Returns false while the
  // search is still running.
  [[nodiscard]] bool leavesOut(unsigned int uid) const;
  // Shows a message.
  void tell(const QString& message);
  // Restores a task that the user has just deleted.
  void keep(unsigned int uid) { removal_.keep(uid); }
  // Completes pending deletions.
  void finish() { removal_.finish(); }

public Q_SLOTS:
  // Reads the list again.
  void refresh();

Q_SIGNALS:
  // Emitted when the user wants to leave the application.
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
  void share(ShareBy way);
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
  // The tasks on which a key acts: the selected ones, or the current one.
  [[nodiscard]] std::vector<unsigned int> targets() const;
  // Reads the single task on which the menu acts. Returns false if there are none or several; also,
  // after telling the user why, if the task is gone or cannot be read.
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
  // The tasks for which the menu was opened, even if the list changes while it is open.
  std::vector<unsigned int> menuTargets_;
  QTimer day_{this};
  bool choosing_ = false;
  bool syncWanted_ = false;  // starts when no deletion is pending
};

}  // namespace tasks
