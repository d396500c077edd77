// Base of the tests of the window: with its own bus and without a display.
#pragma once

#include "ZKbMainWidget.h"
#include "ZOptionsMenu.h"
#include "ZWrappedText.h"
#include "list/task_list_view.h"
#include "menu_items.h"
#include "notification_server.h"
#include "tasks_test.h"
#include "window/task_window.h"

#include <QFile>

#include <memory>

class Window : public Tasks {
protected:
  Window() { setenv("DBUS_SESSION_BUS_ADDRESS", qPrintable(bus_.address()), 1); }
  ~Window() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

  // Adds a task that is due tomorrow, with an alarm in two seconds.
  Task addAlarm() {
    Task task;
    task.setString(Task::TASK_FIELD_SUMMARY, "wake up");
    task.setStatus(1);
    task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime::currentDateTime().addSecs(2));
    task.setDateTime(Task::TASK_FIELD_DUE, QDateTime::currentDateTime().addDays(1));
    EXPECT_EQ(store_.addTask(task), ok);
    return task;
  }
  // Shows the window with the tasks that are stored so far.
  void open() {
    window_ = std::make_unique<tasks::TaskWindow>(store_);
    window_->resize(240, 320);
    window_->show();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  }
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }
  void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
  // Waits for the message of an alarm until it takes keys; null if there is none.
  static tasks::AlarmMessage* awaitMessage() {
    const auto current = [] {
      return qobject_cast<tasks::AlarmMessage*>(QApplication::activeModalWidget());
    };
    EXPECT_TRUE(waitFor([&] { return current() != nullptr && current()->takesKeys(); }));
    EXPECT_TRUE(QTest::qWaitForWindowActive(current()));
    return current();
  }
  static std::vector<std::string> wordsOf(const QWidget& message) {
    std::vector<std::string> words;
    for (const QWidget* child : message.findChildren<QWidget*>())
      if (const auto* text = dynamic_cast<const ZWrappedText*>(child))
        words.push_back(text->text().toStdString());
    return words;
  }
  // Triggers an item of the options menu.
  void take(int item) {
    menu()->item(item)->trigger();
    finishEvents();
  }
  ZOptionsMenu* menu() {
    return static_cast<ZKbMainWidget*>(window_->currentWidget())->findChild<ZOptionsMenu*>();
  }
  template <typename Screen> Screen* current() {
    return qobject_cast<Screen*>(window_->currentWidget());
  }
  std::vector<std::string> rows() {
    const QAbstractItemModel* model = window_->findChild<tasks::TaskListView*>()->model();
    std::vector<std::string> titles;
    for (int row = 0; row < model->rowCount(); ++row)
      titles.push_back(model->index(row, 0).data().toString().toStdString());
    return titles;
  }
  // What screen readers say of the rows.
  QStringList descriptions() {
    const QAbstractItemModel* model = window_->findChild<tasks::TaskListView*>()->model();
    QStringList texts;
    for (int row = 0; row < model->rowCount(); ++row)
      texts.append(model->index(row, 0).data(Qt::AccessibleDescriptionRole).toString());
    return texts;
  }
  std::string listed() {
    return window_->findChild<tasks::TaskListView*>()
        ->currentIndex()
        .data()
        .toString()
        .toStdString();
  }
  QString file(const char* name, const QByteArray& bytes) {
    QFile file(QString::fromStdString((directory_.path() / name).string()));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
  }
  QString calendar(const char* name, const QByteArray& summary) {
    return file(name, "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMMARY:" + summary +
                          "\r\nEND:VTODO\r\nEND:VCALENDAR\r\n");
  }
  Task only() {
    const std::vector<unsigned int> uids = allUids();
    EXPECT_EQ(uids.size(), 1U);
    return stored(uids.front());
  }

  TestBus bus_;
  std::unique_ptr<tasks::TaskWindow> window_;
};
