// The screen that shows one task: title, due date, status, priority and notes.
#pragma once

#include "TASK_UI_View.h"
#include "export.h"

#include <QPixmap>

#include <memory>

class ZDetailView;
class ZSoftKey;

// As one of the screens of the task list it offers to edit, share and delete the task, and gives
// way by the signals of TASK_UI_View. Stand-alone, for a task that came from outside, it only goes
// Back: then it closes and deletes itself, even if its close event is ignored. It also closes when
// the application object emits askReturnToIdle(int), whatever its class.
class ULO_EXPORT TASK_UI_DetailView : public TASK_UI_View {
  Q_OBJECT

public:
  TASK_UI_DetailView(QWidget* parent, const char* name, unsigned int flags);
  ~TASK_UI_DetailView() override;

  // The icons of the rows: complete, incomplete, high, normal and low priority.
  void loadPixmap(QValueList<QPixmap>& icons);

  // Fills the screen with a copy of the task. `loadPixmap` and `setEngine` come first.
  void openView(ZTASK_ENG_Task* task);
  // Fills a screen of its own, which needs neither icons nor a store. It is the user's from here
  // on: the caller only shows it.
  void openStandaloneView(ZTASK_ENG_Task& task);

public Q_SLOTS:
  void slotBack();
  void slotTaskEditView();
  // Removes the task from the store at once.
  void slotDeleteTask();
  // Attaches the task to a new message, as a file in the directory $ULO_LOCAL_APP_WRITE_PATH.
  void sendToMessage();
  // Pushes the stored form of the task to another device. Pushes nothing, and logs why, if the task
  // can't be read from the store.
  void sendToBluetooth();

private:
  void addRows();
  void addKeys();
  void addMenu(ZSoftKey& keys);
  void attachmentPath(QString& path) const;
  [[nodiscard]] QPixmap icon(int index) const;

  bool standalone_ = false;
  std::unique_ptr<ZTASK_ENG_Task> task_;
  ZDetailView* rows_ = nullptr;
  int menuItems_[3] = {};  // ids of Edit, Message, Bluetooth
  QValueList<QPixmap> icons_;
};
