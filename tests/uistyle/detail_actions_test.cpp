// The keys and the menu of the detail view.

#include "ZApplication.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "ZTASK_ENG_Model.h"
#include "menu_items.h"
#include "screen_test.h"

#include <QPointer>

using testing::ElementsAre;

namespace {

class DetailActions : public Screen {
protected:
  DetailActions() {
    task_.setString(Task::TASK_FIELD_SUMMARY, QStringLiteral("Buy milk"));
    EXPECT_EQ(store_.addTask(task_), 0);
    view_ = new TASK_UI_DetailView(nullptr, nullptr, 0);
    view_->setEngine(&store_);
    listen(*view_);
    view_->openView(&task_);
  }
  ~DetailActions() override { delete view_; }

  void listen(TASK_UI_DetailView& view) {
    QObject::connect(
        &view, &TASK_UI_View::changeView, &view, [this](auto from, auto to, ZTASK_ENG_Task* task) {
          emitted_.push_back("change " + std::to_string(from) + ' ' + std::to_string(to) + ' ' +
                             (task == nullptr
                                  ? std::string("null")
                                  : std::to_string(task->getUINT32(Task::TASK_FIELD_UID))));
        });
    QObject::connect(&view, &TASK_UI_View::disposeView, &view,
                     [this](auto type) { emitted_.push_back("dispose " + std::to_string(type)); });
  }
  void choose(int item) { view_->findChild<ZOptionsMenu*>()->item(item)->trigger(); }
  int count() {
    int result = 0;
    EXPECT_EQ(store_.getCount(result), 0);
    return result;
  }

  ZTASK_ENG_Model store_;
  ZTASK_ENG_Task task_;
  QPointer<TASK_UI_DetailView> view_;
  std::vector<std::string> emitted_;
};

TEST_F(DetailActions, BackReturnsToList) {
  view_->slotBack();
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
}

TEST_F(DetailActions, BackKeyGoesBackOnce) {
  view_->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view_));
  QTest::keyClick(view_, Qt::Key_F3);
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
  emitted_.clear();
  view_->cstWidget()->click(ZSoftKey::right);
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
}

TEST_F(DetailActions, BackKeyWorksAfterAnotherTaskWasOpened) {
  view_->openView(&task_);
  view_->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view_));
  QTest::keyClick(view_, Qt::Key_F3);
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
}

TEST_F(DetailActions, OptionsKeyOpensMenu) {
  view_->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view_));
  QTest::keyClick(view_, Qt::Key_F1);
  auto* menu = view_->findChild<ZOptionsMenu*>();
  ASSERT_TRUE(menu->isVisible());
  EXPECT_EQ(menu->geometry().bottom() + 1, view_->cstWidget()->mapToGlobal(QPoint(0, 0)).y());
  // F3 closes the menu, not the screen.
  QTest::keyClick(menu, Qt::Key_F3);
  EXPECT_FALSE(menu->isVisible());
  EXPECT_THAT(emitted_, ElementsAre());
  QTest::keyClick(view_, Qt::Key_F1);
  ASSERT_TRUE(menu->isVisible());
  // F1 triggers the current item, the first one.
  QTest::keyClick(menu, Qt::Key_F1);
  EXPECT_THAT(emitted_, ElementsAre("change 3 2 1", "dispose 3"));
}

TEST_F(DetailActions, EditOpensFormWithTask) {
  choose(ulo::detailMenu::edit);
  EXPECT_THAT(emitted_, ElementsAre("change 3 2 1", "dispose 3"));
}

TEST_F(DetailActions, HeadingDoesNothing) {
  choose(ulo::detailMenu::share);
  EXPECT_THAT(emitted_, ElementsAre());
  EXPECT_EQ(platform_.shares, 0);
  EXPECT_THAT(platform_.launched, ElementsAre());
}

TEST_F(DetailActions, BluetoothAndMessageShare) {
  choose(ulo::detailMenu::bluetooth);
  EXPECT_EQ(platform_.shares, 1);
  EXPECT_THAT(platform_.launched, ElementsAre());
  qputenv("ULO_LOCAL_APP_WRITE_PATH", directory_.path().c_str());
  choose(ulo::detailMenu::message);
  qunsetenv("ULO_LOCAL_APP_WRITE_PATH");
  EXPECT_EQ(platform_.shares, 1);
  EXPECT_EQ(platform_.launched.size(), 1U);
  EXPECT_THAT(emitted_, ElementsAre());
}

TEST_F(DetailActions, DeleteRemovesAtOnce) {
  ZTASK_ENG_Task other;
  ASSERT_EQ(store_.addTask(other), 0);
  choose(ulo::detailMenu::remove);
  EXPECT_EQ(count(), 1);
  EXPECT_NE(store_.getTask(task_.getUINT32(Task::TASK_FIELD_UID), other), 0);
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
  EXPECT_THAT(lines(detailViewSource), ElementsAre());
}

TEST_F(DetailActions, DeletingRemovedTaskIsOnlyLogged) {
  ASSERT_EQ(store_.removeTask(task_.getUINT32(Task::TASK_FIELD_UID)), 0);
  view_->slotDeleteTask();
  EXPECT_THAT(emitted_, ElementsAre("change 3 0 null", "dispose 3"));
  EXPECT_THAT(lines(detailViewSource), ElementsAre("remove task error!"));
}

TEST_F(DetailActions, NothingIsEmittedWhileSignalsAreBlocked) {
  view_->blockSignals(true);
  view_->slotBack();
  view_->slotTaskEditView();
  EXPECT_THAT(emitted_, ElementsAre());
}

TEST_F(DetailActions, ReceiverMayDeleteViewLater) {
  QObject::connect(view_, &TASK_UI_View::disposeView, view_, [this] { view_->deleteLater(); });
  choose(ulo::detailMenu::edit);
  finishEvents();
  EXPECT_TRUE(view_.isNull());
}

TEST_F(DetailActions, ReturnToIdleClosesView) {
  view_->show();
  application().returnToIdle(7);
  finishEvents();
  ASSERT_FALSE(view_.isNull());
  EXPECT_FALSE(view_->isVisible());
  EXPECT_THAT(emitted_, ElementsAre());
}

TEST_F(DetailActions, StandaloneBackClosesAndDeletesView) {
  QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  listen(*view);
  view->openStandaloneView(task_);
  view->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view));
  QTest::keyClick(view, Qt::Key_F3);
  finishEvents();
  EXPECT_TRUE(view.isNull());
  EXPECT_THAT(emitted_, ElementsAre());
}

TEST_F(DetailActions, StandaloneReturnToIdleClosesAndDeletesView) {
  QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task_);
  view->show();
  application().returnToIdle();
  finishEvents();
  EXPECT_TRUE(view.isNull());
}

// Ignores close events of a window.
class KeepsOpen : public QObject {
public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Close)
      return false;
    event->ignore();
    return true;
  }
};

TEST_F(DetailActions, StandaloneIsDeletedEvenIfCloseEventIsIgnored) {
  for (const bool byKey : {true, false}) {
    KeepsOpen filter;
    QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
    view->openStandaloneView(task_);
    view->installEventFilter(&filter);
    view->show();
    if (byKey)
      view->slotBack();
    else
      application().returnToIdle();
    finishEvents();
    EXPECT_TRUE(view.isNull()) << byKey;
  }
}

TEST_F(DetailActions, StandaloneMayBeDeletedByCloseEvent) {
  class Deletes : public QObject {
  public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
      if (event->type() == QEvent::Close)
        watched->deleteLater();
      return false;
    }
  };
  QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task_);
  view->installEventFilter(new Deletes(view));
  view->slotBack();
  finishEvents();
  EXPECT_TRUE(view.isNull());
}

TEST_F(DetailActions, HiddenViewCanGoBack) {
  QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task_);
  view->slotBack();
  finishEvents();
  EXPECT_TRUE(view.isNull());
}

}  // namespace
