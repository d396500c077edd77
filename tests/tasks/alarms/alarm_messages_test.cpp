// Alarms in the window, without a display.

#include "alarms/alarm_messages.h"

#include "window/window_test.h"

#include <QPointer>
#include <QSignalSpy>

using tasks::AlarmMessage;
using tasks::AlarmMessages;

namespace {

class Messages : public Window {
protected:
  Messages() {
    open();
    messages_ = std::make_unique<AlarmMessages>(window_.get());
  }

  void show(unsigned int uid, const QString& summary) {
    Task task;
    task.setUINT32(Task::TASK_FIELD_UID, uid);
    task.setString(Task::TASK_FIELD_SUMMARY, summary);
    messages_->show(task);
  }
  // The summary in the message that is shown; empty if there is none.
  static std::string shown() {
    finishEvents();
    const QWidget* message = QApplication::activeModalWidget();
    return message == nullptr ? "" : wordsOf(*message).front();
  }
  static void close() { qobject_cast<QDialog*>(QApplication::activeModalWidget())->reject(); }

  std::unique_ptr<AlarmMessages> messages_;
};

TEST_F(Messages, ComeOneAfterTheOther) {
  show(1, "a");
  show(2, "b");
  EXPECT_EQ(shown(), "a");
  EXPECT_EQ(window_->findChildren<AlarmMessage*>().size(), 1);
  close();
  EXPECT_EQ(shown(), "b");
  close();
  EXPECT_EQ(shown(), "");
}

TEST_F(Messages, AreWithdrawn) {
  show(1, "a");
  show(2, "b");
  show(3, "c");
  messages_->withdraw(2);
  messages_->withdraw(77);
  EXPECT_EQ(shown(), "a");
  messages_->withdraw(1);
  EXPECT_EQ(shown(), "c");
}

TEST_F(Messages, ShowTaskOnceInItsLastState) {
  show(1, "a");
  show(2, "b");
  show(1, "a again");
  show(2, "b again");
  EXPECT_EQ(shown(), "a again");
  close();
  EXPECT_EQ(shown(), "b again");
  close();
  EXPECT_EQ(shown(), "");
}

TEST_F(Messages, CloseWithTheirWindow) {
  show(1, "a");
  show(2, "b");
  window_->close();
  EXPECT_EQ(shown(), "");
}

// A window that closes rejects all of its dialogs, those that are being deleted included.
TEST_F(Messages, MayBeClosedTwice) {
  show(1, "a");
  show(2, "b");
  auto* const first = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  first->accept();
  QMetaObject::invokeMethod(messages_.get(), [first] { first->reject(); });
  first->reject();
  EXPECT_EQ(shown(), "b");
}

TEST_F(Messages, IgnoreKeysThatAreBeingTyped) {
  show(1, "a");
  for (const Qt::Key common : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_F1, Qt::Key_F3})
    QTest::keyClick(QApplication::activeModalWidget(), common);
  EXPECT_EQ(shown(), "a");
}

TEST_F(Messages, TellWhichTaskToOpen) {
  const QSignalSpy opened(messages_.get(), &AlarmMessages::opened);
  unsigned int uid = 0;
  for (const Qt::Key common : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_F1, Qt::Key_F3}) {
    show(++uid, "a");
    ASSERT_NE(awaitMessage(), nullptr);
    key(common);
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(opened.size(), common == Qt::Key_F3 ? 1 : 0);
  }
  EXPECT_EQ(opened[0][0].toUInt(), uid);
}

}  // namespace
