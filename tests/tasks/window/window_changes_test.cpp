// The window while other programs change the store, and its messages.

#include "TASK_UI_DetailView.h"
#include "ZDetailView.h"
#include "ZMessageDlg.h"
#include "dialogs_test.h"
#include "form/form_screen.h"
#include "form/line_field.h"
#include "list/list_screen.h"
#include "list/list_settings.h"
#include "list/notice_bar.h"
#include "window/window_test.h"

#include <QPointer>

using tasks::FormScreen;
using tasks::LineField;
using tasks::ListScreen;
using testing::ElementsAre;

namespace {

class Changes : public Window {
protected:
  // The message of the list; empty if there is none.
  std::string told() {
    const auto* notice = window_->findChild<tasks::NoticeBar*>();
    return notice->isVisible() ? notice->accessibleName().toStdString() : std::string();
  }
  // The title in the details.
  std::string details() {
    auto* rows = window_->currentWidget()->findChild<ZDetailView*>();
    return rows == nullptr ? std::string() : rows->item(0)->content().toStdString();
  }
  void rename(unsigned int uid, const char* summary) {
    Task task = stored(uid);
    task.setString(Task::TASK_FIELD_SUMMARY, summary);
    ASSERT_EQ(store_.updateTask(task), ok);
  }
  void expectFocusAndTitle() {
    finishEvents();
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    EXPECT_TRUE(window_->currentWidget()->isAncestorOf(QApplication::focusWidget()));
    EXPECT_EQ(window_->windowTitle(), window_->currentWidget()->windowTitle());
  }
};

TEST_F(Changes, EscapeLeavesDetails) {
  add("a");
  open();
  for (const Qt::Key back : {Qt::Key_Escape, Qt::Key_Back}) {
    key(Qt::Key_Return);
    ASSERT_NE(current<TASK_UI_DetailView>(), nullptr);
    key(back);
    EXPECT_NE(current<ListScreen>(), nullptr);
    expectFocusAndTitle();
  }
}

TEST_F(Changes, OpeningTaskRestoresIt) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Delete);
  ASSERT_THAT(rows(), ElementsAre());
  window_->openTask(a);
  ASSERT_NE(current<TASK_UI_DetailView>(), nullptr);
  window_->close();
  EXPECT_TRUE(isStored(a));
}

TEST_F(Changes, OpeningTaskKeepsWindowSize) {
  const unsigned int a = add("a");
  open();
  window_->setWindowState(Qt::WindowMaximized);
  window_->openTask(a);
  EXPECT_TRUE(window_->windowState() & Qt::WindowMaximized);
  window_->setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
  window_->openTask(a);
  EXPECT_FALSE(window_->windowState() & Qt::WindowMinimized);
  EXPECT_TRUE(window_->windowState() & Qt::WindowMaximized);
}

TEST_F(Changes, DetailsFollowStore) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  ASSERT_EQ(details(), "a");
  rename(a, "b");
  EXPECT_TRUE(waitFor([this] { return details() == "b"; }));
  expectFocusAndTitle();
  EXPECT_EQ(window_->windowTitle(), "b");
  ASSERT_EQ(store_.removeTask(a), ok);
  EXPECT_TRUE(waitFor([this] { return current<ListScreen>() != nullptr; }));
  expectFocusAndTitle();
}

// There is no notification server: the alarm is a message in the window.
TEST_F(Changes, DetailsFollowStoreBeneathAlarmMessage) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  addAlarm();
  const QPointer<tasks::AlarmMessage> message = awaitMessage();
  ASSERT_NE(message, nullptr);
  rename(a, "b");
  EXPECT_TRUE(waitFor([this] { return details() == "b"; }));
  ASSERT_EQ(store_.removeTask(a), ok);
  EXPECT_TRUE(waitFor([this] { return current<ListScreen>() != nullptr; }));
  EXPECT_EQ(QApplication::activeModalWidget(), message);
}

TEST_F(Changes, SharingRemovedTaskFromDetailsReportsIt) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  ASSERT_EQ(details(), "a");
  bool asked = false;
  QTimer::singleShot(0, window_.get(), [&] {
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
      asked = true;
      dialog->reject();
    }
  });
  ASSERT_EQ(store_.removeTask(a), ok);
  current<TASK_UI_DetailView>()->sendToBluetooth();
  EXPECT_TRUE(waitFor([this] { return told() == "The task has been deleted."; }));
  EXPECT_FALSE(asked);
  EXPECT_NE(current<ListScreen>(), nullptr);
}

TEST_F(Changes, OpenMenuStays) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  auto* details = current<TASK_UI_DetailView>();
  key(Qt::Key_F1);
  ASSERT_EQ(QApplication::activePopupWidget(), menu());
  ASSERT_EQ(store_.removeTask(a), ok);
  // The list has been updated.
  EXPECT_TRUE(waitFor([this] { return rows().empty(); }));
  EXPECT_EQ(current<TASK_UI_DetailView>(), details);
  menu()->hide();
  EXPECT_TRUE(waitFor([this] { return current<ListScreen>() != nullptr; }));
}

TEST_F(Changes, FormStartsWithStoredTask) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  rename(a, "b");
  menu()->item(ulo::detailMenu::edit)->trigger();
  EXPECT_EQ(window_->findChild<LineField*>()->text(), "b");
}

TEST_F(Changes, ScreenStaysUntilItsDialogsEnd) {
  const unsigned int a = add("a");
  open();
  key(Qt::Key_N, Qt::ControlModifier);
  QPointer<FormScreen> form = current<FormScreen>();
  type("c");
  inDialog<ZMessageDlg>([this] { menu()->item(ulo::formMenu::cancelEdit)->trigger(); },
                        [&](ZMessageDlg&) {
                          window_->openTask(a);
                          finishEvents();
                          // The menu belongs to the form.
                          EXPECT_NE(form, nullptr);
                          EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
                        });
  EXPECT_TRUE(waitFor([&] { return form == nullptr; }));
  EXPECT_EQ(details(), "a");
  expectFocusAndTitle();
  EXPECT_EQ(allUids().size(), 2);
}

TEST_F(Changes, ReportsSavedTaskThatViewDoesNotShow) {
  tasks::writeListOrder({ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED});
  open();
  key(Qt::Key_F2);
  type("a");
  key(Qt::Key_F2);
  EXPECT_EQ(told(), "Saved. This view does not show the task.");
  window_->import({calendar("b.vcs", "b")});
  EXPECT_TRUE(waitFor([this] { return told() == "Task imported. This view does not show it."; }));
  window_->import({calendar("c.vcs", "c\r\nSTATUS:COMPLETED")});
  EXPECT_TRUE(waitFor([this] { return told() == "Task imported."; }));
  EXPECT_THAT(rows(), ElementsAre("c"));
}

TEST_F(Changes, StaysOnFormThatCannotBeSaved) {
  open();
  key(Qt::Key_F2);
  type("a");
  raw_.run("create trigger refusal before insert on task_table_task"
           " begin select raise(abort, 'refused by the test'); end");
  inDialog<ZMessageDlg>([this] { EXPECT_FALSE(window_->close()); },
                        [](ZMessageDlg& message) { message.accept(); });
  EXPECT_TRUE(window_->isVisible());
  ASSERT_NE(current<FormScreen>(), nullptr);
  // As a window manager does.
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  expectFocusAndTitle();
}

TEST_F(Changes, ClosingWindowClosesItsDialogs) {
  open();
  key(Qt::Key_F2);
  type("a");
  inDialog<ZMessageDlg>([this] { key(Qt::Key_Escape); },
                        [this](ZMessageDlg&) {
                          EXPECT_TRUE(window_->close());
                          EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
                        });
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "a");
}

TEST_F(Changes, MessagesWaitUntilListIsShown) {
  open();
  key(Qt::Key_F2);
  window_->import({calendar("a.vcs", "a")});
  EXPECT_TRUE(waitFor([this] { return rows().size() == 1; }));
  EXPECT_NE(current<FormScreen>(), nullptr);
  EXPECT_EQ(told(), "");
  key(Qt::Key_F3);
  EXPECT_EQ(told(), "Task imported.");
}

}  // namespace
