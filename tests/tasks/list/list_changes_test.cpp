// The list screen while tasks are deleted, restored and changed by others.

#include "environment_variable.h"
#include "list/list_test.h"
#include "list/notice_bar.h"

#include <QScrollBar>
#include <QTimer>

using tasks::TaskListModel;
using testing::ElementsAre;

namespace {

TEST_F(List, UndoRestoresDeletedTasks) {
  add("b");
  add("a");
  open();
  EXPECT_FALSE(undoButton()->isVisible());
  key(Qt::Key_Delete);
  EXPECT_THAT(rows(), ElementsAre("b"));
  EXPECT_EQ(current(), "b");
  ASSERT_TRUE(undoButton()->isVisible());
  undoButton()->click();
  EXPECT_FALSE(undoButton()->isVisible());
  EXPECT_THAT(rows(), ElementsAre("a", "b"));
  take(listMenu::remove);
  EXPECT_THAT(rows(), ElementsAre("a"));
  key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(rows(), ElementsAre("a", "b"));
  screen_->finish();
  EXPECT_EQ(allUids().size(), 2);
}

TEST_F(List, DeletingLastRowSelectsPrecedingOne) {
  add("b");
  add("a");
  open();
  key(Qt::Key_End);
  key(Qt::Key_Delete);
  EXPECT_EQ(current(), "a");
  key(Qt::Key_Delete);
  EXPECT_THAT(emptyText().toStdString(), testing::StartsWith("There are no tasks yet."));
  // The screen still handles keys.
  key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(rows(), ElementsAre("a"));
}

TEST_F(List, TouchContinuesWhileListChanges) {
  add("b");
  const unsigned int a = add("a");
  open();
  QTest::mousePress(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  screen_->refresh();
  QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  EXPECT_THAT(asked_, ElementsAre(Asked{0, 3, "a"}));
  // Another task is under the finger now.
  QTest::mousePress(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  ASSERT_EQ(store_.removeTask(a), ok);
  screen_->refresh();
  QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  EXPECT_EQ(asked_.size(), 1);
}

TEST_F(List, ScrollPositionStaysWhenOthersChangeList) {
  std::vector<unsigned int> uids;
  for (int i = 0; i < 60; ++i)
    uids.push_back(add({.summary = QString::number(i),
                        .due = QDateTime(QDate(2030, 1, 1).addDays(i), QTime(0, 0))}));
  open();
  for (int i = 0; i < 30; ++i)
    key(Qt::Key_Down);
  ASSERT_EQ(current(), "30");
  list_->verticalScrollBar()->setValue(list_->verticalScrollBar()->value() + 7);
  const int y = middleOf(30).y();
  add({.summary = "first", .due = QDateTime(QDate(2001, 1, 1), QTime(0, 0))});
  ASSERT_EQ(store_.removeTask(uids[3]), ok);
  ASSERT_EQ(store_.removeTask(uids[4]), ok);
  screen_->refresh();
  EXPECT_EQ(current(), "30");
  EXPECT_EQ(list_->currentRow(), 29);
  EXPECT_EQ(middleOf(29).y(), y);
  // The current task itself is removed: the next one becomes current.
  ASSERT_EQ(store_.removeTask(uids[30]), ok);
  screen_->refresh();
  EXPECT_EQ(current(), "31");
}

TEST_F(List, GoToSelectsListedTask) {
  unsigned int last = 0;
  for (int i = 0; i < 40; ++i)
    last = add({.summary = QString::number(i),
                .due = QDateTime(QDate(2030, 1, 1).addDays(i), QTime(0, 0))});
  open();
  screen_->goTo(last);
  EXPECT_EQ(current(), "39");
  EXPECT_TRUE(list_->viewport()->rect().contains(middleOf(39)));
  screen_->goTo(999);
  EXPECT_EQ(current(), "39");
}

TEST_F(List, MenuActsOnTaskItWasOpenedFor) {
  const unsigned int b = add("b");
  const unsigned int a = add("a");
  open();
  openMenu();
  ASSERT_EQ(store_.removeTask(a), ok);
  screen_->refresh();
  ASSERT_EQ(current(), "b");
  menu()->item(listMenu::remove)->trigger();
  screen_->finish();
  EXPECT_TRUE(isStored(b));
  // Keys act on the current task.
  QTest::keyClick(list_, Qt::Key_Delete);
  screen_->finish();
  EXPECT_FALSE(isStored(b));
}

TEST_F(List, NewDayUpdatesRows) {
  const EnvironmentVariable west("TZ", "UTC+12");
  open();
  auto* day = screen_->findChild<QTimer*>("day");
  ASSERT_NE(day, nullptr);
  EXPECT_TRUE(day->isActive());
  EXPECT_LE(day->interval(), 60'000);
  add("a");
  // A time zone in which it is tomorrow.
  const EnvironmentVariable east("TZ", "UTC-14");
  day->setInterval(0);
  EXPECT_TRUE(waitFor([this] { return model_->rowCount() == 1; }));
}

TEST_F(List, UndoReturnsFocusToList) {
  add("b");
  add("a");
  open();
  key(Qt::Key_Delete);
  undoButton()->setFocus();
  key(Qt::Key_Space);
  EXPECT_TRUE(list_->hasFocus());
  key(Qt::Key_Delete);
  undoButton()->setFocus();
  screen_->finish();
  EXPECT_FALSE(undoButton()->isVisible());
  EXPECT_TRUE(list_->hasFocus());
}

TEST_F(List, KeptTaskIsNotDeleted) {
  const unsigned int b = add("b");
  const unsigned int a = add("a");
  open();
  take(listMenu::selectMultiple);
  take(listMenu::selectAll);
  key(Qt::Key_F2);
  screen_->keep(a);
  EXPECT_THAT(rows(), ElementsAre("a"));
  EXPECT_TRUE(undoButton()->isVisible());
  screen_->finish();
  EXPECT_TRUE(isStored(a));
  EXPECT_FALSE(isStored(b));
}

TEST_F(List, MessageWaitsDuringUndoPeriod) {
  add("a");
  open();
  key(Qt::Key_Delete);
  screen_->tell("done");
  EXPECT_TRUE(undoButton()->isVisible());
  undoButton()->click();
  const auto* notice = screen_->findChild<tasks::NoticeBar*>();
  EXPECT_EQ(notice->accessibleName(), "done");
  EXPECT_TRUE(notice->isVisible());
  // Only once.
  key(Qt::Key_Delete);
  screen_->finish();
  EXPECT_FALSE(notice->isVisible());
}

TEST_F(List, MessageWaitsUntilListIsShown) {
  open();
  auto* time = screen_->findChild<QTimer*>("message");
  ASSERT_NE(time, nullptr);
  screen_->hide();
  screen_->tell("done");
  EXPECT_FALSE(time->isActive());
  screen_->show();
  EXPECT_TRUE(time->isActive());
}

TEST_F(List, RemovedTaskOpensNothing) {
  const unsigned int a = add("a");
  add("b");
  open();
  key(Qt::Key_End);
  ASSERT_EQ(store_.removeTask(a), ok);
  key(Qt::Key_Return);
  EXPECT_TRUE(asked_.empty());
  EXPECT_THAT(rows(), ElementsAre("b"));
}

TEST_F(List, ReportsStoreThatCannotBeRead) {
  open();
  raw_.run("drop table task_table_task");
  screen_->refresh();
  EXPECT_THAT(emptyText().toStdString(), testing::StartsWith("The tasks can't be read."));
}

}  // namespace
