// The list screen under keys and the mouse, without a display.

#include "AM_ActionData.h"
#include "environment_variable.h"
#include "list/list_settings.h"
#include "list/list_test.h"
#include "list/notice_bar.h"
#include "screen_reader_probe.h"
#include "stored_text.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPointingDevice>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

#include <filesystem>
#include <fstream>

using tasks::ListScreen;
using tasks::NoticeBar;
using tasks::TaskListModel;
using testing::ElementsAre;

namespace {

TEST_F(List, EnterAndTouchOpenTask) {
  add("b");
  add("a");
  open();
  EXPECT_EQ(screen_->appTitle(), "All Tasks");
  key(Qt::Key_Down);
  key(Qt::Key_Return);
  click(middleOf(0));
  EXPECT_THAT(asked_, ElementsAre(Asked{0, 3, "b"}, Asked{0, 3, "a"}));
}

TEST_F(List, CompletedRepeatingTaskMovesToItsNextDate) {
  const unsigned int uid =
      add({.summary = "water plants", .due = QDateTime(QDate(2027, 3, 1), QTime(0, 0))});
  const auto setRule = [uid](const QByteArray& rule) {
    return ulo::storeText(uid, "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:1\r\n"
                               "SUMMARY:water plants\r\nDUE;VALUE=DATE:20270301\r\nRRULE:" +
                                   rule + "\r\nEND:VTODO\r\nEND:VCALENDAR\r\n");
  };
  ASSERT_EQ(setRule("FREQ=WEEKLY;COUNT=2"), ok);
  open();
  const auto notice = [this] { return screen_->findChild<NoticeBar*>()->accessibleName(); };
  key(Qt::Key_Space);
  EXPECT_EQ(stored(uid).getStatusValue(), 1);
  EXPECT_EQ(stored(uid).getDateTime(Task::TASK_FIELD_DUE),
            QDateTime(QDate(2027, 3, 8), QTime(0, 0)));
  EXPECT_THAT(notice().toStdString(), testing::StartsWith("Next date: "));
  key(Qt::Key_Space);
  EXPECT_EQ(stored(uid).getStatusValue(), 0);
  EXPECT_EQ(notice(), "Completed: this was the last date.");
}

TEST_F(List, SpaceAndTouchOfBoxCompleteTask) {
  const unsigned int b = add({.summary = "b", .priority = 9});
  const unsigned int a = add({.summary = "a", .priority = 4, .status = 5});
  open();
  key(Qt::Key_Space);
  EXPECT_EQ(stored(a).getStatusValue(), 0);
  EXPECT_NE(stored(a).getDateTime(Task::TASK_FIELD_END), Task::noDate());
  EXPECT_EQ(stored(a).getPriorityValue(), 4);
  click(boxOf(1));
  EXPECT_EQ(stored(b).getStatusValue(), 0);
  click(boxOf(1));
  EXPECT_EQ(stored(b).getStatusValue(), 1);
  EXPECT_EQ(stored(b).getDateTime(Task::TASK_FIELD_END), Task::noDate());
  EXPECT_TRUE(asked_.empty());
}

TEST_F(List, CompletesTaskOfRemovedCategory) {
  const unsigned int a = add({.summary = "a", .category = "garden"});
  QString garden = "garden";
  ASSERT_EQ(store_.removeCategory(garden, false), ok);
  open();
  key(Qt::Key_Space);
  EXPECT_EQ(stored(a).getStatusValue(), 0);
  EXPECT_TRUE(stored(a).getString(Task::TASK_FIELD_CATEGORY).isNull());
}

TEST_F(List, CompletedTaskLeavesIncompleteView) {
  add("c");
  add("b");
  add("a");
  open();
  take(listMenu::viewIncomplete);
  EXPECT_EQ(screen_->appTitle(), "Incomplete Tasks");
  key(Qt::Key_Down);
  key(Qt::Key_Space);
  EXPECT_THAT(rows(), ElementsAre("a", "c"));
  EXPECT_EQ(current(), "c");
}

TEST_F(List, MenuChangesAndMarksViewAndOrder) {
  add({.summary = "a", .due = QDateTime(QDate(2001, 1, 1), QTime()), .priority = 9});
  add({.summary = "b", .due = QDateTime(QDate(2001, 1, 2), QTime()), .priority = 1, .status = 0});
  open();
  const auto marked = [this] {
    openMenu();
    std::vector<int> items;
    for (const int id : menu()->getAllItemIds())
      if (menu()->item(id)->isChecked())
        items.push_back(id);
    return items;
  };
  EXPECT_THAT(marked(), ElementsAre(listMenu::viewAll, listMenu::sortByDue));
  take(listMenu::sortByPriority);
  EXPECT_THAT(rows(), ElementsAre("b", "a"));
  EXPECT_THAT(marked(), ElementsAre(listMenu::viewAll, listMenu::sortByPriority));
  take(listMenu::viewDue);
  EXPECT_EQ(screen_->appTitle(), "Due Tasks");
  EXPECT_THAT(rows(), ElementsAre("b", "a"));
  take(listMenu::viewCompleted);
  EXPECT_EQ(screen_->appTitle(), "Completed Tasks");
  EXPECT_THAT(rows(), ElementsAre("b"));
  EXPECT_THAT(marked(), ElementsAre(listMenu::viewCompleted, listMenu::sortByPriority));
  // It is remembered.
  open();
  EXPECT_EQ(screen_->appTitle(), "Completed Tasks");
  take(listMenu::viewAll);
  EXPECT_THAT(rows(), ElementsAre("b", "a"));
  take(listMenu::sortByDue);
  EXPECT_THAT(rows(), ElementsAre("a", "b"));
}

TEST_F(List, InvalidSettingsAreReplaced) {
  tasks::writeListOrder({static_cast<ZTASK_ENG_Model::TASK_CATEGORY>(77),
                         static_cast<ZTASK_ENG_Model::TASK_SORT_FIELD>(-4)});
  EXPECT_EQ(tasks::readListOrder().view, ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED);
  EXPECT_EQ(tasks::readListOrder().sort, ZTASK_ENG_Model::TASK_SORT_DUE);
}

TEST_F(List, SystemSettingsApplyUntilUserChooses) {
  const std::filesystem::path root = directory_.path() / "system";
  const auto write = [&](const char* directory, const char* text) {
    std::filesystem::create_directories(root / directory / "ulo");
    std::ofstream(root / directory / "ulo/tasks.ini") << "[list]\n" << text;
  };
  write("first", "sort=1\n");
  write("second", "sort=0\nview=3\n");
  const EnvironmentVariable directories(
      "XDG_CONFIG_DIRS", ((root / "first").string() + ":" + (root / "second").string()).c_str());
  EXPECT_EQ(tasks::readListOrder().sort, ZTASK_ENG_Model::TASK_SORT_PRIORITY);
  EXPECT_EQ(tasks::readListOrder().view, ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED);
  tasks::writeListOrder({ZTASK_ENG_Model::TASK_CATEGORY_DUE, ZTASK_ENG_Model::TASK_SORT_DUE});
  EXPECT_EQ(tasks::readListOrder().sort, ZTASK_ENG_Model::TASK_SORT_DUE);
  EXPECT_EQ(tasks::readListOrder().view, ZTASK_ENG_Model::TASK_CATEGORY_DUE);
}

TEST_F(List, LettersStartSearchAndEscapeEndsIt) {
  add("banana");
  add("Apple");
  open();
  type("NAN");
  EXPECT_THAT(rows(), ElementsAre("banana"));
  key(Qt::Key_Return);
  EXPECT_TRUE(list_->hasFocus());
  EXPECT_EQ(current(), "banana");
  key(Qt::Key_Escape);
  EXPECT_THAT(rows(), ElementsAre("Apple", "banana"));
  type("x");
  EXPECT_THAT(emptyText().toStdString(), testing::StartsWith("No task matches."));
  key(Qt::Key_Escape);
  EXPECT_EQ(emptyText(), "");
  EXPECT_TRUE(list_->hasFocus());
  EXPECT_EQ(model_->rowCount(), 2);
}

TEST_F(List, EscapeEndsFilterWithoutMatches) {
  add({.summary = "a", .category = "meeting"});
  open();
  screen_->findChild<QComboBox*>()->setCurrentIndex(1);
  type("a");
  EXPECT_EQ(model_->rowCount(), 0);
  screen_->findChild<QLineEdit*>()->setFocus();
  key(Qt::Key_Escape);
  EXPECT_EQ(model_->rowCount(), 0);
  key(Qt::Key_Escape);
  EXPECT_THAT(rows(), ElementsAre("a"));
  EXPECT_TRUE(list_->hasFocus());
}

TEST_F(List, ClearsSearchWithButtonBesideText) {
  add("a");
  add("b");
  open();
  const auto* line = screen_->findChild<QLineEdit*>();
  EXPECT_EQ(line->findChild<QToolButton*>(), nullptr);
  type("a");
  EXPECT_THAT(rows(), ElementsAre("a"));
  auto* button = line->findChild<QToolButton*>();
  ASSERT_NE(button, nullptr);
  EXPECT_TRUE(button->isVisible());
  button->click();
  EXPECT_THAT(rows(), ElementsAre("b", "a"));
}

TEST_F(List, DeletesAndRestoresFoundTasks) {
  const unsigned int uid = add("banana");
  add("bank");
  add("Apple");
  open();
  type("ban");
  key(Qt::Key_Return);
  EXPECT_THAT(rows(), ElementsAre("bank", "banana"));
  key(Qt::Key_End);
  key(Qt::Key_Delete);
  EXPECT_THAT(rows(), ElementsAre("bank"));
  EXPECT_EQ(current(), "bank");
  key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(rows(), ElementsAre("bank", "banana"));
  key(Qt::Key_End);
  key(Qt::Key_Delete);
  screen_->finish();
  EXPECT_FALSE(isStored(uid));
  EXPECT_THAT(rows(), ElementsAre("bank"));
}

TEST_F(List, LettersStartSearchInEmptyList) {
  add("a");
  open();
  type("x");
  key(Qt::Key_Return);
  ASSERT_NE(emptyText(), "");
  type("y");
  EXPECT_THAT(model_->filter().words, ElementsAre("xy"));
}

TEST_F(List, CategoryAndSearchCombine) {
  add({.summary = "a", .category = "meeting"});
  add({.summary = "b", .category = "Garden"});
  add("c");
  open();
  auto* box = screen_->findChild<QComboBox*>();
  std::vector<std::string> names;
  for (int i = 0; i < box->count(); ++i)
    names.push_back(box->itemText(i).toStdString());
  EXPECT_THAT(names, ElementsAre("All Categories", "No Category", "Meeting", "Vacation",
                                 "Appointment", "Party", "Garden"));
  box->setCurrentIndex(6);
  EXPECT_THAT(rows(), ElementsAre("b"));
  // A new category can be chosen.
  add({.summary = "d", .category = "Boat"});
  screen_->refresh();
  EXPECT_EQ(box->currentText(), "Garden");
  EXPECT_GE(box->findText("Boat"), 0);
  // A removed category can no longer be chosen.
  QString garden = "Garden";
  ASSERT_EQ(store_.removeCategory(garden, false), ok);
  screen_->refresh();
  EXPECT_EQ(box->currentIndex(), 0);
  EXPECT_EQ(model_->rowCount(), 4);
}

TEST_F(List, NewAndEditRequestForm) {
  add("a");
  open();
  key(Qt::Key_F2);
  key(Qt::Key_N, Qt::ControlModifier);
  take(listMenu::createTask);
  take(listMenu::edit);
  EXPECT_THAT(asked_,
              ElementsAre(Asked{0, 2, "-"}, Asked{0, 2, "-"}, Asked{0, 2, "-"}, Asked{0, 2, "a"}));
}

TEST_F(List, DeletesSelectedTasks) {
  const unsigned int c = add("c");
  const unsigned int b = add("b");
  const unsigned int a = add("a");
  open();
  take(listMenu::selectMultiple);
  EXPECT_EQ(screen_->appTitle(), "0 Selected");
  key(Qt::Key_Space);
  key(Qt::Key_Down);
  key(Qt::Key_Down);
  key(Qt::Key_Return);
  EXPECT_EQ(screen_->appTitle(), "2 Selected");
  EXPECT_TRUE(asked_.empty());
  key(Qt::Key_F2);
  EXPECT_EQ(screen_->appTitle(), "All Tasks");
  EXPECT_THAT(rows(), ElementsAre("b"));
  EXPECT_THAT(allUids(), ElementsAre(c, b, a));
  screen_->finish();
  EXPECT_THAT(allUids(), ElementsAre(b));
}

TEST_F(List, SelectsAndUnselectsAll) {
  add("b");
  add("a");
  open();
  take(listMenu::selectMultiple);
  take(listMenu::selectAll);
  EXPECT_EQ(screen_->appTitle(), "2 Selected");
  openMenu();
  EXPECT_FALSE(menu()->item(listMenu::selectAll)->isEnabled());
  EXPECT_FALSE(menu()->item(listMenu::edit)->isEnabled());
  EXPECT_FALSE(menu()->item(listMenu::share)->isEnabled());
  EXPECT_TRUE(menu()->item(listMenu::remove)->isEnabled());
  take(listMenu::unselectAll);
  EXPECT_EQ(screen_->appTitle(), "0 Selected");
  openMenu();
  EXPECT_FALSE(menu()->item(listMenu::unselectAll)->isEnabled());
  EXPECT_FALSE(menu()->item(listMenu::remove)->isEnabled());
  click(middleOf(1));
  EXPECT_EQ(screen_->appTitle(), "1 Selected");
  take(listMenu::edit);
  EXPECT_THAT(asked_, ElementsAre(Asked{0, 2, "b"}));
  key(Qt::Key_F3);
  EXPECT_EQ(screen_->appTitle(), "All Tasks");
  EXPECT_EQ(model_->chosenCount(), 0);
}

// Tasks that are found later would not be deleted.
TEST_F(List, DeletesNothingWhileSelectAllIsRunning) {
  raw_.run("with recursive n(i) as (select 1 union all select i + 1 from n where i < 30000) "
           "insert into task_table_task (summary, note, status, priority, due, alarm, \"end\", "
           "revision, categoryUid) select printf('task %05d', i), '', 1, 5, 1000000 + i, "
           "2147483647, 2147483647, 0, 1 from n");
  open();
  model_->setFirstSlice(0);
  model_->setFilter({{"9"}, {}});
  ASSERT_TRUE(model_->isReading());
  take(listMenu::selectMultiple);
  take(listMenu::selectAll);
  ASSERT_TRUE(model_->isChoosingAll());
  const auto* deleteKey = screen_->cstWidget()->findChild<QToolButton*>(
      QStringLiteral("softkey%1").arg(ZSoftKey::middle));
  EXPECT_FALSE(deleteKey->isEnabled());
  openMenu();
  EXPECT_FALSE(menu()->item(listMenu::remove)->isEnabled());
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_GT(model_->chosenCount(), 0);
  EXPECT_TRUE(waitFor([this] { return !model_->isReading(); }));
  EXPECT_TRUE(deleteKey->isEnabled());
  EXPECT_EQ(screen_->appTitle(), "10317 Selected");
}

TEST_F(List, ScreenReadersReceiveSelection) {
  add("b");
  add("a");
  open();
  const ScreenReader reader;
  const auto heard = [&] { return reader.last(QAccessible::StateChanged); };
  take(listMenu::selectMultiple);
  EXPECT_TRUE(heard().state.checkable);
  EXPECT_FALSE(heard().state.checked);
  key(Qt::Key_Space);
  EXPECT_EQ(heard().name, rows()[0]);
  EXPECT_TRUE(heard().state.checked);
  key(Qt::Key_Space);
  EXPECT_EQ(heard().name, rows()[0]);
  EXPECT_FALSE(heard().state.checked);
  reader.forget();
  take(listMenu::selectAll);
  EXPECT_THAT(reader.names(QAccessible::StateChanged), ElementsAre(rows()[0], rows()[1]));
  EXPECT_TRUE(heard().state.checked);
  key(Qt::Key_F3);
  EXPECT_FALSE(heard().state.checkable);
  EXPECT_FALSE(heard().state.checked);
}

TEST_F(List, NoticesReachScreenReaders) {
  add("b");
  add("a");
  open();
  const ScreenReader reader;
  key(Qt::Key_Delete);
  EXPECT_EQ(reader.last(QAccessible::Alert).name, "Task deleted");
  EXPECT_EQ(reader.last(QAccessible::Alert).role, QAccessible::AlertMessage);
  key(Qt::Key_Z, Qt::ControlModifier);
  screen_->tell("first");
  EXPECT_EQ(reader.last(QAccessible::Alert).name, "first");
  screen_->tell("second");
  EXPECT_EQ(reader.last(QAccessible::Alert).name, "second");
}

TEST_F(List, SharingRemovedTaskReportsIt) {
  const auto notice = [this] {
    open();
    return screen_->findChild<NoticeBar*>();
  };
  for (const int way : {listMenu::bluetooth, listMenu::message}) {
    const unsigned int a = add("a");
    const auto* shown = notice();
    openMenu();
    ASSERT_EQ(store_.removeTask(a), ok);
    menu()->item(way)->trigger();
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(shown->accessibleName(), "The task has been deleted.");
    EXPECT_THAT(rows(), ElementsAre());
  }
  add("a");
  const auto* shown = notice();
  openMenu();
  raw_.run("drop table task_table_task");
  menu()->item(listMenu::bluetooth)->trigger();
  EXPECT_EQ(shown->accessibleName(), "The tasks can't be read. The log says why.");
}

TEST_F(List, SynchronizeCompletesPendingRemovalsFirst) {
  const std::filesystem::path settings = directory_.path() / "settings";
  std::filesystem::create_directories(settings / "ulo");
  setenv("XDG_CONFIG_HOME", settings.c_str(), 1);
  std::ofstream(settings / "ulo/applications.conf")
      << '[' << AM_ActionData::synchronizer << "]\nExec=/bin/true\n";
  add("b");
  add("a");
  open();
  const std::string kept = rows()[1];
  key(Qt::Key_Delete);
  ASSERT_EQ(allUids().size(), 2);
  take(listMenu::synchronize);
  const auto* notice = screen_->findChild<NoticeBar*>();
  EXPECT_TRUE(waitFor([&] { return notice->accessibleName() == u"Synchronizing\u2026"; }));
  ASSERT_EQ(allUids().size(), 1);
  EXPECT_EQ(summary(stored(allUids().front())), kept);
  EXPECT_THAT(rows(), ElementsAre(kept));
  unsetenv("XDG_CONFIG_HOME");
}

TEST_F(List, SynchronizeDoesNotStartIfRemovalFails) {
  const std::filesystem::path settings = directory_.path() / "settings";
  std::filesystem::create_directories(settings / "ulo");
  setenv("XDG_CONFIG_HOME", settings.c_str(), 1);
  const std::filesystem::path started = directory_.path() / "started";
  std::ofstream(settings / "ulo/applications.conf")
      << '[' << AM_ActionData::synchronizer << "]\nExec=/usr/bin/touch " << started.string()
      << '\n';
  add("a");
  open();
  key(Qt::Key_Delete);
  raw_.run("create trigger refuse before delete on task_table_task "
           "begin select raise(abort, 'no'); end");
  take(listMenu::synchronize);
  const auto* notice = screen_->findChild<NoticeBar*>();
  EXPECT_TRUE(
      waitFor([&] { return notice->accessibleName() == u"Not all tasks could be deleted."; }));
  QCoreApplication::processEvents();
  EXPECT_EQ(notice->accessibleName(), "Not all tasks could be deleted.");
  EXPECT_FALSE(std::filesystem::exists(started));
  unsetenv("XDG_CONFIG_HOME");
}

TEST_F(List, EachModeHasOwnMenu) {
  add("a");
  open();
  const auto shown = [this] {
    openMenu();
    std::vector<int> items;
    for (const int id : menu()->getAllItemIds())
      if (menu()->item(id)->isVisible())
        items.push_back(id);
    return items;
  };
  EXPECT_THAT(shown(),
              ElementsAre(listMenu::viewBy, listMenu::viewAll, listMenu::viewDue,
                          listMenu::viewIncomplete, listMenu::viewCompleted, listMenu::createTask,
                          listMenu::edit, listMenu::share, listMenu::bluetooth, listMenu::message,
                          listMenu::synchronize, listMenu::remove, listMenu::selectMultiple,
                          listMenu::sortBy, listMenu::sortByDue, listMenu::sortByPriority));
  take(listMenu::selectMultiple);
  EXPECT_THAT(shown(),
              ElementsAre(listMenu::selectAll, listMenu::unselectAll, listMenu::viewAll,
                          listMenu::viewDue, listMenu::viewIncomplete, listMenu::viewCompleted,
                          listMenu::edit, listMenu::share, listMenu::bluetooth, listMenu::message,
                          listMenu::remove, listMenu::sortByDue, listMenu::sortByPriority));
}

TEST_F(List, SynchronizeReportsMissingPartner) {
  const std::filesystem::path settings = directory_.path() / "settings";
  std::filesystem::create_directories(settings / "ulo");
  setenv("XDG_CONFIG_HOME", settings.c_str(), 1);
  open();
  openMenu();
  EXPECT_FALSE(menu()->item(listMenu::synchronize)->isEnabled());
  const QList<QAction*> items = menu()->actions();
  EXPECT_EQ(items.value(items.indexOf(menu()->item(listMenu::synchronize)) + 1)->text(),
            "No sync partner");
  std::ofstream(settings / "ulo/applications.conf")
      << '[' << AM_ActionData::synchronizer << "]\nExec=/nowhere/sync\n";
  openMenu();
  EXPECT_TRUE(menu()->item(listMenu::synchronize)->isEnabled());
  EXPECT_EQ(menu()->actions().size(), items.size() - 1);
  menu()->item(listMenu::synchronize)->trigger();
  EXPECT_EQ(screen_->findChild<NoticeBar*>()->accessibleName(),
            "The synchronization could not be started.");
  unsetenv("XDG_CONFIG_HOME");
}

TEST_F(List, EmptyListDisablesActions) {
  open();
  openMenu();
  for (const int item : {listMenu::edit, listMenu::share, listMenu::remove,
                         listMenu::selectMultiple, listMenu::sortBy})
    EXPECT_FALSE(menu()->item(item)->isEnabled()) << item;
  key(Qt::Key_Delete);
  key(Qt::Key_Return);
  key(Qt::Key_Space);
  EXPECT_TRUE(asked_.empty());
  key(Qt::Key_F2);
  EXPECT_THAT(asked_, ElementsAre(Asked{0, 2, "-"}));
}

TEST_F(List, EachEmptyViewExplainsWhatToDo) {
  open();
  for (const auto& [item, beginning] :
       {std::pair(listMenu::viewAll, "There are no tasks yet."),
        std::pair(listMenu::viewDue, "Nothing is due today."),
        std::pair(listMenu::viewIncomplete, "Nothing is left to do."),
        std::pair(listMenu::viewCompleted, "No task is completed yet.")}) {
    take(item);
    EXPECT_THAT(emptyText().toStdString(), testing::StartsWith(beginning));
  }
}

TEST_F(List, HoldingRowStartsSelection) {
  add("b");
  const unsigned int a = add("a");
  open();
  QTest::mousePress(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  EXPECT_TRUE(waitFor([this] { return screen_->appTitle() == "1 Selected"; }));
  QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  EXPECT_THAT(model_->chosen(), ElementsAre(a));
  EXPECT_TRUE(asked_.empty());
  key(Qt::Key_Escape);
  EXPECT_EQ(screen_->appTitle(), "All Tasks");
}

TEST_F(List, HoldingAnotherRowSelectsIt) {
  const unsigned int b = add("b");
  const unsigned int a = add("a");
  open();
  take(listMenu::selectMultiple);
  key(Qt::Key_Space);
  QTest::mousePress(list_->viewport(), Qt::LeftButton, {}, middleOf(1));
  EXPECT_TRUE(waitFor([this] { return screen_->appTitle() != "1 Selected"; }));
  QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, middleOf(1));
  EXPECT_THAT(model_->chosen(), ElementsAre(a, b));
}

TEST_F(List, HeldKeyDoesNotRepeatAction) {
  add("b");
  const unsigned int a = add("a");
  open();
  const auto hold = [this](Qt::Key key) {
    for (const bool again : {false, true, true}) {
      QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString(), again);
      QCoreApplication::sendEvent(list_, &press);
    }
  };
  hold(Qt::Key_Space);
  EXPECT_EQ(stored(a).getStatus(), 0);
  hold(Qt::Key_Return);
  EXPECT_EQ(asked_.size(), 1);
  hold(Qt::Key_Delete);
  EXPECT_THAT(rows(), ElementsAre("b"));
}

TEST_F(List, TouchOpensAndCompletes) {
  const unsigned int b = add("b");
  add("a");
  open();
  const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  const auto tap = [&](const QPoint& at) {
    QTest::touchEvent(list_->viewport(), screen.get()).press(0, at);
    QTest::touchEvent(list_->viewport(), screen.get()).release(0, at);
    finishEvents();
  };
  tap(middleOf(0));
  EXPECT_THAT(asked_, ElementsAre(Asked{0, 3, "a"}));
  tap(boxOf(1));
  EXPECT_TRUE(waitFor([&] { return stored(b).getStatusValue() == 0; }));
}

TEST_F(List, DragScrollsList) {
  for (int i = 0; i < 40; ++i)
    add("x");
  open();
  const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  const QPoint from = middleOf(5);
  QTest::touchEvent(list_->viewport(), screen.get()).press(0, from);
  for (int way = 0; way <= 120; way += 10) {
    QTest::touchEvent(list_->viewport(), screen.get()).move(0, from - QPoint(0, way));
    finishEvents();
  }
  QTest::touchEvent(list_->viewport(), screen.get()).release(0, from - QPoint(0, 120));
  EXPECT_TRUE(waitFor([this] { return list_->verticalScrollBar()->value() > 0; }));
  EXPECT_TRUE(asked_.empty());
}

TEST_F(List, LongUndoLabelIsBelowText) {
  auto* notice = new NoticeBar(nullptr);
  const std::unique_ptr<QWidget> owner(notice);
  QFont large = notice->font();
  large.setPointSize(20);
  notice->setFont(large);
  notice->resize(180, 100);
  notice->showUndoable("Twelve tasks deleted");
  finishEvents();
  const auto* button = notice->findChild<QToolButton*>();
  EXPECT_GT(button->y(), 0);
  EXPECT_LE(button->geometry().right(), 180);
  const int below = button->y();
  notice->resize(800, 100);
  finishEvents();
  EXPECT_LT(button->y(), below);
}

TEST_F(List, DragIsNotTouch) {
  add("b");
  add("a");
  open();
  QTest::mousePress(list_->viewport(), Qt::LeftButton, {}, middleOf(0));
  QTest::mouseMove(list_->viewport(), middleOf(1));
  QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, middleOf(1));
  EXPECT_TRUE(asked_.empty());
}

TEST_F(List, RightKeyRequestsExit) {
  open();
  const QSignalSpy exits(screen_.get(), &ListScreen::exitAsked);
  key(Qt::Key_F3);
  EXPECT_EQ(exits.count(), 1);
}

TEST_F(List, FitsOnNarrowScreen) {
  add({.summary = QString(512, QChar(0x4E00)), .category = QString(60, u'w')});
  open();
  EXPECT_LE(screen_->minimumSizeHint().width(), 240);
}

}  // namespace
