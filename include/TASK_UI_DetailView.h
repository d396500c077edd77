// The screen that shows one task: title, due date, status, priority and notes.
#pragma once

#include "TASK_UI_View.h"
#include "ulo/export.h"

#include <QPixmap>

#include <memory>

class ZDetailView;
class ZSoftKey;

// As a screen of the task list, it can edit, share and delete the task, and requests other screens
// with the signals of TASK_UI_View. As a stand-alone screen for a received task, it offers only
// Back, which closes and deletes it even if its close event is ignored. It also closes when the
// application object, of whatever class, emits askReturnToIdle(int).
class ULO_EXPORT TASK_UI_DetailView : public TASK_UI_View {
  Q_OBJECT

public:
  TASK_UI_DetailView(QWidget* parent, const char* name, unsigned int flags);
  ~TASK_UI_DetailView() override;

  // Sets the icons of the rows: complete, incomplete, high, normal and low priority.
  void loadPixmap(QValueList<QPixmap>& icons);

  // Fills the screen with a copy of the task. Call `loadPixmap` and `setEngine` first.
  void openView(ZTASK_ENG_Task* task);
  // Fills a stand-alone screen, which needs neither icons nor a store. The caller only shows it and
  // must not delete it: it deletes itself when it is closed.
  void openStandaloneView(ZTASK_ENG_Task& task);

public Q_SLOTS:
  void slotBack();
  void slotTaskEditView();
  // Removes the task from the store immediately.
  void slotDeleteTask();
  // Attaches the task to a new message, as a file in the directory $ULO_LOCAL_APP_WRITE_PATH. If
  // the variable is not set, the path begins at /, where a file normally cannot be created; then
  // nothing is sent. Like sendToBluetooth, must not run while another thread reads or writes
  // calendar text (see ZVtodoParser).
  void sendToMessage();
  // Sends the task, as it is stored, to another device. Sends nothing and logs the reason if the
  // task cannot be read from the store.
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
