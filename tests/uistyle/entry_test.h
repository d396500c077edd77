// Base of the tests of the entry points.
#pragma once

#include "ZMessageDlg.h"
#include "ZSoftKey.h"
#include "ZTASK_ENG_Model.h"
#include "screen_test.h"

#include <QTimer>

#include <sqlite3.h>

inline std::string calendar(const std::string& todos) {
  return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todos + "END:VCALENDAR\r\n";
}
inline std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}
inline const std::string milk = calendar(todo("SUMMARY:Buy milk\r\nSTATUS:NEEDS ACTION\r\n"));

// A message dialog, as the user saw it before closing it.
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

  // The stored tasks' summaries.
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
  // The titles of the detail views that are on the screen.
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
  // The store accepts no more tasks.
  void closeStore() {
    { const ZTASK_ENG_Model makesIt; }
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((directory_.path() / "tasks.db").c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database,
                           "CREATE TRIGGER closed BEFORE INSERT ON task_table_task "
                           "BEGIN SELECT RAISE(ABORT, 'closed'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
  }

  std::vector<SeenDialog> dialogs_;
  QTimer timer_;
};
