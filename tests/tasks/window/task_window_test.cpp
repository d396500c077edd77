// The window: the visible screen, and the lifetime of the others.

#include "TASK_UI_DetailView.h"
#include "ZDetailView.h"
#include "ZSoftKey.h"
#include "form/form_screen.h"
#include "form/line_field.h"
#include "list/list_screen.h"
#include "list/notice_bar.h"
#include "messages.h"
#include "stored_text.h"
#include "ulotask_process.h"
#include "window/import.h"
#include "window/window_test.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>

using tasks::AlarmMessage;
using tasks::FormScreen;
using tasks::ListScreen;
using tasks::TaskListView;
using testing::ElementsAre;

namespace {

TEST_F(Window, StartsWithList) {
  add("a");
  open();
  EXPECT_NE(current<ListScreen>(), nullptr);
  EXPECT_EQ(window_->windowTitle(), "All Tasks");
  EXPECT_EQ(QApplication::focusWidget(), window_->findChild<TaskListView*>());
}

TEST_F(Window, OpensAndClosesScreens) {
  add("b");
  add("a");
  open();
  key(Qt::Key_Down);
  key(Qt::Key_Return);
  const QPointer<QWidget> detail = current<TASK_UI_DetailView>();
  ASSERT_FALSE(detail.isNull());
  EXPECT_EQ(window_->windowTitle(), "b");
  take(ulo::detailMenu::edit);
  EXPECT_TRUE(detail.isNull());
  const QPointer<QWidget> form = current<FormScreen>();
  ASSERT_FALSE(form.isNull());
  EXPECT_EQ(window_->windowTitle(), "Edit Task");
  key(Qt::Key_F3);
  finishEvents();
  EXPECT_TRUE(form.isNull());
  ASSERT_NE(current<TASK_UI_DetailView>(), nullptr);
  key(Qt::Key_F3);
  finishEvents();
  EXPECT_NE(current<ListScreen>(), nullptr);
  EXPECT_EQ(window_->count(), 1);
  EXPECT_EQ(window_->windowTitle(), "All Tasks");
  EXPECT_EQ(listed(), "b");
  EXPECT_EQ(QApplication::focusWidget(), window_->findChild<TaskListView*>());
}

TEST_F(Window, DetailsShowStatusAndPriorityAsIcons) {
  struct Shown {
    int status, priority;
    const char *statusIcon, *priorityIcon;
  };
  for (const Shown& expected : {Shown{0, 1, "complete", "hi_pri"},
                                {1, 5, "incomplete", "normal_pri"},
                                {1, 9, "incomplete", "lo_pri"}}) {
    Task task = stored(add("a"));
    task.setStatus(expected.status);
    task.setPriority(expected.priority);
    ASSERT_EQ(store_.updateTask(task), ok);
    open();
    window_->openTask(task.getUINT32(Task::TASK_FIELD_UID));
    const auto* details = current<TASK_UI_DetailView>();
    ASSERT_NE(details, nullptr);
    const auto* rows = details->findChild<ZDetailView*>();
    ASSERT_NE(rows, nullptr);
    constexpr int statusRow = 2;
    const auto file = [](const char* state) {
      return std::string("todo_task_") + state + "_small.gif";
    };
    EXPECT_TRUE(isIcon(rows->item(statusRow)->icon(), file(expected.statusIcon).c_str()))
        << expected.statusIcon;
    EXPECT_TRUE(isIcon(rows->item(statusRow + 1)->icon(), file(expected.priorityIcon).c_str()))
        << expected.priorityIcon;
  }
}

TEST_F(Window, DetailsSayThatTaskRepeats) {
  const unsigned int uid = add("a");
  const auto repetition = [&](const QByteArray& lines) {
    EXPECT_EQ(ulo::storeText(uid, "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:1\r\n"
                                  "SUMMARY:a\r\nDTSTART:20270301T100000\r\n" +
                                      lines + "END:VTODO\r\nEND:VCALENDAR\r\n"),
              ok);
    window_->openTask(uid);
    auto* rows = current<TASK_UI_DetailView>()->findChild<ZDetailView*>();
    const auto* row = rows->item(2);
    return row->label() == "Repeats:" ? row->content().toStdString() : "";
  };
  open();
  EXPECT_EQ(repetition(""), "");
  EXPECT_EQ(repetition("RRULE:FREQ=DAILY\r\n"), "Daily");
  EXPECT_EQ(repetition("RRULE:FREQ=WEEKLY;INTERVAL=2;COUNT=3\r\n"), "Every 2 weeks");
  EXPECT_EQ(repetition("RRULE:FREQ=MONTHLY;BYMONTHDAY=-1\r\n"), "Monthly");
  EXPECT_EQ(repetition("RRULE:FREQ=HOURLY\r\n"), "Yes");
  EXPECT_EQ(repetition("RDATE:20270401T100000\r\n"), "Yes");
}

TEST_F(Window, NewTaskBecomesCurrentInList) {
  add("b");
  add("c");
  open();
  key(Qt::Key_F2);
  type("d");
  key(Qt::Key_F2);
  finishEvents();
  EXPECT_NE(current<ListScreen>(), nullptr);
  EXPECT_EQ(listed(), "d");
  EXPECT_EQ(rows().size(), 3);
}

TEST_F(Window, TaskDeletedOnItsScreenLeavesList) {
  add("b");
  const unsigned int a = add("a");
  open();
  key(Qt::Key_Return);
  take(ulo::detailMenu::remove);
  EXPECT_NE(current<ListScreen>(), nullptr);
  EXPECT_THAT(rows(), ElementsAre("b"));
  EXPECT_FALSE(isStored(a));
}

TEST_F(Window, ClosingSavesEdits) {
  open();
  key(Qt::Key_F2);
  type("typed");
  EXPECT_TRUE(window_->close());
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "typed");
}

TEST_F(Window, ClosingCompletesDeletions) {
  add("a");
  open();
  key(Qt::Key_Delete);
  EXPECT_EQ(allUids().size(), 1);
  EXPECT_TRUE(window_->close());
  EXPECT_EQ(allUids().size(), 0);
}

TEST_F(Window, ClosingCompletesImport) {
  open();
  window_->import({calendar("one.vcs", "named")});
  EXPECT_TRUE(allUids().empty());
  EXPECT_TRUE(window_->close());
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "named");
}

TEST_F(Window, ExitAndReturnToIdleCloseIt) {
  open();
  key(Qt::Key_F3);
  EXPECT_FALSE(window_->isVisible());
  open();
  application().returnToIdle();
  EXPECT_FALSE(window_->isVisible());
}

TEST_F(Window, ShowsChangesOfOtherPrograms) {
  const unsigned int a = add("a");
  add("b");
  open();
  key(Qt::Key_Down);
  ASSERT_EQ(listed(), "a");
  runUlotask({"edit", QString::number(a), "--summary", "z"});
  EXPECT_TRUE(waitFor([this] { return listed() == "z"; }));
  runUlotask({"add", "first", "--due", "2001-01-01"});
  EXPECT_TRUE(waitFor([this] { return rows().size() == 3; }));
  EXPECT_THAT(rows(), ElementsAre("first", "b", "z"));
  EXPECT_EQ(listed(), "z");
}

TEST_F(Window, ImportsDroppedFiles) {
  open();
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(calendar("one.vcs", "dropped"))});
  QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
  QCoreApplication::sendEvent(window_.get(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
  QCoreApplication::sendEvent(window_.get(), &drop);
  EXPECT_TRUE(waitFor([this] { return listed() == "dropped"; }));
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "dropped");

  QMimeData remote;
  remote.setUrls({QUrl("https://example.org/a.vcs")});
  QDragEnterEvent other(QPoint(10, 10), Qt::CopyAction, &remote, Qt::LeftButton, {});
  other.ignore();
  QCoreApplication::sendEvent(window_.get(), &other);
  EXPECT_FALSE(other.isAccepted());
}

TEST_F(Window, AlarmIsShownAndOpensItsTask) {
  NotificationServer server(bus_);
  const Task task = addAlarm();
  open();
  key(Qt::Key_F2);
  type("half");
  ASSERT_TRUE(waitFor([&] { return !server.notes.empty(); }));
  EXPECT_EQ(server.notes[0].summary, "wake up");
  server.invoke(server.notes[0].id, "default");
  EXPECT_TRUE(waitFor([this] { return current<TASK_UI_DetailView>() != nullptr; }));
  EXPECT_EQ(window_->windowTitle(), "wake up");
  // Edits are saved.
  finishEvents();
  EXPECT_EQ(window_->findChild<FormScreen*>(), nullptr);
  EXPECT_EQ(allUids().size(), 2);
  // A completed task needs no notification.
  runUlotask({"done", QString::number(task.getUINT32(Task::TASK_FIELD_UID))});
  EXPECT_TRUE(waitFor([&] { return !server.closed.empty(); }));
}

TEST_F(Window, AlarmCompletesItsTask) {
  NotificationServer server(bus_);
  addAlarm();
  open();
  ASSERT_TRUE(waitFor([&] { return !server.notes.empty(); }));
  server.invoke(server.notes[0].id, "done");
  EXPECT_TRUE(waitFor([this] { return only().getStatusValue() == 0; }));
}

TEST_F(Window, ReportsAlarmWhoseTaskCannotBeCompleted) {
  NotificationServer server(bus_);
  addAlarm();
  open();
  ASSERT_TRUE(waitFor([&] { return !server.notes.empty(); }));
  raw_.run("create trigger refusing before update on task_table_task "
           "begin select raise(abort, 'no'); end");
  server.invoke(server.notes[0].id, "done");
  const auto* notice = window_->findChild<tasks::NoticeBar*>();
  EXPECT_TRUE(waitFor([&] { return notice->accessibleName() == "The task could not be saved."; }));
  EXPECT_TRUE(notice->isVisible());
  EXPECT_EQ(only().getStatusValue(), 1);
}

// There is no notification server.
TEST_F(Window, AlarmMessageOpensItsTask) {
  open();
  key(Qt::Key_F2);
  type("half");
  addAlarm();
  const AlarmMessage* message = awaitMessage();
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->windowTitle(), "Alarm");
  EXPECT_THAT(wordsOf(*message), ElementsAre("wake up", "Tomorrow"));
  key(Qt::Key_F3);
  EXPECT_TRUE(waitFor([this] { return current<TASK_UI_DetailView>() != nullptr; }));
  EXPECT_EQ(window_->windowTitle(), "wake up");
  // Edits are saved.
  finishEvents();
  EXPECT_EQ(allUids().size(), 2);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(Window, AlarmMessageOfCompletedTaskIsWithdrawn) {
  open();
  const Task task = addAlarm();
  const QPointer<AlarmMessage> message = awaitMessage();
  ASSERT_NE(message, nullptr);
  runUlotask({"done", QString::number(task.getUINT32(Task::TASK_FIELD_UID))});
  EXPECT_TRUE(waitFor([&] { return message == nullptr; }));
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

// Its notification is about the date before.
TEST_F(Window, AlarmOfRepeatingTaskIsCompletedOnce) {
  NotificationServer server(bus_);
  open();
  const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(2);
  const auto text = [](const QDateTime& at) {
    return at.toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")).toUtf8();
  };
  window_->import({file("a.ics", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:a\r\nBEGIN:VTODO\r\n"
                                 "UID:a\r\nSUMMARY:a\r\nDTSTART:" +
                                     text(soon) + "\r\nDUE:" + text(soon.addSecs(3600)) +
                                     "\r\nRRULE:FREQ=DAILY\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\n"
                                     "DESCRIPTION:a\r\nTRIGGER:PT0S\r\nEND:VALARM\r\n"
                                     "END:VTODO\r\nEND:VCALENDAR\r\n")});
  ASSERT_TRUE(waitFor([&] { return !server.notes.empty(); }));
  runUlotask({"done", "1"});
  const QDateTime next = only().getDateTime(Task::TASK_FIELD_DUE);
  server.invoke(server.notes[0].id, "done");
  EXPECT_TRUE(waitFor([&] { return !server.closed.empty(); }));
  finishEvents();
  EXPECT_EQ(only().getDateTime(Task::TASK_FIELD_DUE), next);
}

TEST_F(Window, RemovedTaskIsNotOpened) {
  open();
  window_->openTask(77);
  EXPECT_NE(current<ListScreen>(), nullptr);
}

TEST(ImportMessages, ReportImportedAndUnreadFiles) {
  EXPECT_EQ(tasks::importText(12, 345), u"12 of 345 tasks imported\u2026");
  tasks::ImportResult result;
  result.imported = 1;
  EXPECT_EQ(tasks::importText(result, true), "Task imported.");
  EXPECT_EQ(tasks::importText(result, false), "Task imported. This view does not show it.");
  result.imported = 12;
  EXPECT_EQ(tasks::importText(result, false),
            "12 tasks imported. This view does not show all of them.");
  result.unread = {"/tmp/a.txt"};
  EXPECT_EQ(tasks::importText(result, true), "12 tasks imported. There is no task in a.txt.");
  result.imported = 0;
  result.unread = {};
  result.present = 2;
  EXPECT_EQ(tasks::importText(result, true), "Nothing new in the file.");
  result.updated = 1;
  EXPECT_EQ(tasks::importText(result, true), "Task updated.");
  result.imported = 1;
  result.updated = 3;
  EXPECT_EQ(tasks::importText(result, true), "Task imported. 3 tasks updated.");
  result = {};
  result.failed = true;
  result.unread = {"/tmp/a", "/tmp/" + QString(60, u'n') + "\nx", "/tmp/c", "/tmp/d"};
  EXPECT_EQ(tasks::importText(result, true),
            "Not all tasks could be imported. There is no task in a. There is no task in " +
                QString(40, u'n') + QStringLiteral("\u2026. \u2026"));
  result = {};
  result.libraryMissing = true;
  result.unread = {"/tmp/a.vcs"};
  EXPECT_EQ(tasks::importText(result, true),
            "vCalendar files can't be read: libical (libical3) is not installed.");
}

}  // namespace
