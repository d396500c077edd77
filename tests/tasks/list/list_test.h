// Base of the tests of the list screen, without a display.
#pragma once

#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "list/list_screen.h"
#include "list/task_list_view.h"
#include "list/task_row.h"
#include "menu_items.h"
#include "tasks_test.h"

#include <QLabel>
#include <QToolButton>

#include <memory>

namespace listMenu = ulo::listMenu;

class List : public Tasks {
protected:
  // Shows the screen with the tasks that are stored so far.
  void open(int width = 240, int height = 320) {
    screen_ = std::make_unique<tasks::ListScreen>(store_);
    QObject::connect(screen_.get(), &TASK_UI_View::changeView,
                     [this](int from, int to, const ZTASK_ENG_Task* task) {
                       asked_.push_back({from, to, task == nullptr ? "-" : summary(*task)});
                     });
    screen_->resize(width, height);
    screen_->show();
    screen_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(screen_.get()));
    list_ = screen_->findChild<tasks::TaskListView*>();
    model_ = static_cast<tasks::TaskListModel*>(list_->model());
  }
  static std::string summary(const Task& task) {
    return task.getString(Task::TASK_FIELD_SUMMARY).toStdString();
  }
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }
  void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
  QPoint middleOf(int row) { return list_->visualRect(model_->index(row)).center(); }
  QPoint boxOf(int row) {
    return tasks::TaskRow::statusZone(list_, list_->visualRect(model_->index(row))).center();
  }
  void click(const QPoint& at) { QTest::mouseClick(list_->viewport(), Qt::LeftButton, {}, at); }
  // Triggers an item of the options menu.
  void take(int item) {
    openMenu();
    ASSERT_TRUE(menu()->item(item)->isEnabled());
    menu()->item(item)->trigger();
    menu()->hide();
  }
  ZOptionsMenu* menu() { return screen_->findChild<ZOptionsMenu*>(); }
  void openMenu() {
    screen_->cstWidget()->click(ZSoftKey::left);
    menu()->hide();
  }
  std::vector<std::string> rows() {
    std::vector<std::string> titles;
    for (int row = 0; row < model_->rowCount(); ++row)
      titles.push_back(model_->index(row).data().toString().toStdString());
    return titles;
  }
  std::string current() { return list_->currentIndex().data().toString().toStdString(); }
  // The text in place of an empty list; empty if there is a list.
  QString emptyText() {
    for (const QLabel* label : screen_->findChildren<QLabel*>())
      if (label->isVisible() && !label->text().isEmpty())
        return label->text();
    return {};
  }
  QToolButton* undoButton() {
    for (auto* button : screen_->findChildren<QToolButton*>())
      if (button->text() == "Undo")
        return button;
    return nullptr;
  }

  struct Asked {
    int from, to;
    std::string task;
    bool operator==(const Asked&) const = default;
  };
  std::vector<Asked> asked_;
  std::unique_ptr<tasks::ListScreen> screen_;
  tasks::TaskListView* list_ = nullptr;
  tasks::TaskListModel* model_ = nullptr;
};
