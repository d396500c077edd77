// Base class for tests of the entry points.
#pragma once

#include "ZMessageDlg.h"
#include "ZSoftKey.h"
#include "ZTASK_ENG_Model.h"
#include "raw_database.h"
#include "screen_test.h"
#include "vcalendar_text.h"

#include <QTimer>

inline const std::string milk = calendar(todo("SUMMARY:Buy milk\r\nSTATUS:NEEDS ACTION\r\n"));

// A message dialog, as the user sees it before closing it.
struct SeenDialog {
  std::string title, text;
  QPixmap icon;
};

class EntryPoint : public Screen {
protected:
  ~EntryPoint() override {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (qobject_cast<TASK_UI_DetailView*>(window) != nullptr)
        window->close();
    finishEvents();
  }

  // Returns the summaries of the stored tasks.
  std::vector<std::string> stored() {
    ZTASK_ENG_Model store;
    QValueList<unsigned int> uids;
    EXPECT_EQ(store.getAllIDs(uids), 0);
    std::vector<std::string> result;
    for (const unsigned int uid : uids) {
      ZTASK_ENG_Task task;
      EXPECT_EQ(store.getTask(uid, task), 0);
      result.push_back(task.getString(Task::TASK_FIELD_SUMMARY).toStdString());
    }
    return result;
  }
  // Returns the titles of the visible detail views.
  std::vector<std::string> shown() {
    std::vector<std::string> result;
    for (QWidget* window : QApplication::topLevelWidgets())
      if (auto* view = qobject_cast<TASK_UI_DetailView*>(window); view && view->isVisible())
        result.push_back(view->appTitle().toStdString());
    return result;
  }
  // Records and closes every dialog.
  void closeDialogs() {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
      if (auto* dialog = qobject_cast<ZMessageDlg*>(QApplication::activeModalWidget())) {
        dialogs_.push_back({dialog->windowTitle().toStdString(), dialog->text().toStdString(),
                            dialog->titleIcon()});
        dialog->keys()->click(ZSoftKey::left);
      }
    });
    timer_.start(10);
  }
  // Creates the store and adds a trigger to it.
  void addTrigger(const std::string& trigger) {
    { const ZTASK_ENG_Model creates; }
    RawDatabase(directory_.path()).run("CREATE TRIGGER " + trigger);
  }
  // Makes the store reject new tasks.
  void closeStore() {
    addTrigger("closed BEFORE INSERT ON task_table_task BEGIN SELECT RAISE(ABORT, 'closed'); END");
  }

  std::vector<SeenDialog> dialogs_;
  QTimer timer_;
};
