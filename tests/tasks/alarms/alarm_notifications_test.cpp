// Alarms on the desktop, with a stand-in for its notification server.

#include "alarms/alarm_notifications.h"

#include "notification_server.h"
#include "tasks_test.h"

#include <QSignalSpy>

using tasks::AlarmNotifications;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

bool waitUntil(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, 30'000);
}

Task task(unsigned int uid, const QString& summary, int priority = 0) {
  Task task;
  task.setUINT32(Task::TASK_FIELD_UID, uid);
  task.setString(Task::TASK_FIELD_SUMMARY, summary);
  task.setPriority(priority);
  return task;
}

class Notifications : public testing::Test {
protected:
  Notifications() { setenv("DBUS_SESSION_BUS_ADDRESS", qPrintable(bus_.address()), 1); }
  ~Notifications() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

  // Shows a task. Returns what the server received.
  NotificationServer::Note shown(const Task& task) {
    const std::size_t before = server_->notes.size();
    notifications_.show(task);
    EXPECT_TRUE(waitUntil([&] { return server_->notes.size() > before; }));
    // Its reply has arrived, too, so that later calls are not delayed.
    settle();
    return server_->notes.size() > before ? server_->notes.back() : NotificationServer::Note();
  }
  // Waits for everything that has been sent on the bus: a task that is shown now arrives later.
  void settle() {
    const bool hesitated = std::exchange(server_->hesitates, false);
    AlarmNotifications other(nullptr);
    const std::size_t before = server_->notes.size();
    other.show(task(1, "settle"));
    EXPECT_TRUE(waitUntil([&] { return server_->notes.size() > before; }));
    other.withdraw(1);
    const std::size_t closed = server_->closed.size();
    EXPECT_TRUE(waitUntil([&] { return server_->closed.size() > closed; }));
    std::erase_if(server_->notes, [](const auto& note) { return note.summary == "settle"; });
    server_->closed.pop_back();
    server_->hesitates = hesitated;
  }

  TestBus bus_;
  LogCapture log_;
  std::unique_ptr<NotificationServer> server_ = std::make_unique<NotificationServer>(bus_);
  AlarmNotifications notifications_{nullptr};
  QSignalSpy opened_{&notifications_, &AlarmNotifications::opened};
  QSignalSpy completed_{&notifications_, &AlarmNotifications::completed};
  QSignalSpy notShown_{&notifications_, &AlarmNotifications::notShown};
};

TEST_F(Notifications, HaveSpecifiedForm) {
  const NotificationServer::Note note = shown(task(7, "Buy milk"));
  EXPECT_EQ(note.signature, "susssasa{sv}i");
  EXPECT_EQ(note.application, "Tasks");
  EXPECT_EQ(note.replaces, 0U);
  EXPECT_EQ(note.icon, "ulo-tasks");
  EXPECT_EQ(note.summary, "Buy milk");
  EXPECT_EQ(note.body, "");
  EXPECT_EQ(note.actions, (QStringList{"default", "Open", "done", "Completed"}));
  EXPECT_EQ(note.hints, (QVariantMap{{"urgency", QVariant::fromValue(uchar{1})},
                                     {"desktop-entry", "ulo-tasks"},
                                     {"sound-name", "alarm-clock-elapsed"}}));
  EXPECT_EQ(note.timeout, 0);
}

TEST_F(Notifications, OfHighPriorityAreUrgent) {
  EXPECT_EQ(shown(task(7, "a", 1)).hints["urgency"], QVariant::fromValue(uchar{2}));
  EXPECT_EQ(shown(task(7, "a", 9)).hints["urgency"], QVariant::fromValue(uchar{1}));
}

// The body is markup if the server supports it.
TEST_F(Notifications, ShowDueDay) {
  class Translator : public QTranslator {
  public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char*, const char* id, const char*, int) const override {
      return QLatin1String(id) == QLatin1String("TXT_RID_STANDARD_TOMORROW")
                 ? QStringLiteral("<b>Tomorrow & so on")
                 : QString();
    }
  } translator;
  QCoreApplication::installTranslator(&translator);
  Task due = task(7, "a");
  due.setDateTime(Task::TASK_FIELD_DUE, QDateTime::currentDateTime().addDays(1));
  EXPECT_EQ(shown(due).body, "<b>Tomorrow & so on");
  server_->capabilities << "body-markup";
  EXPECT_EQ(shown(due).body, "&lt;b&gt;Tomorrow &amp; so on");
  QCoreApplication::removeTranslator(&translator);
}

TEST_F(Notifications, ShowAnyTitle) {
  EXPECT_EQ(shown(task(7, "<b>a</b> & %1\r\n\x01 \u202Eb")).summary, "<b>a</b> & %1 b");
  EXPECT_EQ(shown(task(7, QString(100'000, u'x'))).summary.size(), 513);
  EXPECT_EQ(shown(task(7, QString())).summary, "Untitled");
  // Characters that UTF-8 cannot represent, and codes that are not characters.
  for (const char16_t unit : {0xD800, 0xDC00, 0xFFFF, 0xFFFE, 0xFDD0})
    EXPECT_TRUE(shown(task(7, QString("a") + QChar(unit) + "b")).summary.startsWith("a"))
        << static_cast<int>(unit);
  EXPECT_EQ(log_.text(), "");
}

TEST_F(Notifications, SecondOfTaskReplacesFirst) {
  const std::uint32_t first = shown(task(7, "a")).id;
  const std::uint32_t other = shown(task(8, "b")).id;
  EXPECT_NE(first, other);
  EXPECT_EQ(shown(task(7, "a")).replaces, first);
  EXPECT_EQ(shown(task(8, "b")).replaces, other);
}

TEST_F(Notifications, SecondOfTaskReplacesPendingFirst) {
  server_->hesitates = true;
  notifications_.show(task(7, "a"));
  EXPECT_TRUE(waitUntil([&] { return server_->calls.contains("GetCapabilities"); }));
  server_->answer();
  EXPECT_TRUE(waitUntil([&] { return server_->notes.size() == 1; }));
  notifications_.show(task(7, "b"));
  notifications_.show(task(7, "c"));
  server_->hesitates = false;
  server_->answer();
  EXPECT_TRUE(waitUntil([&] { return server_->notes.size() == 2; }));
  EXPECT_EQ(server_->notes.back().summary, "c");
  EXPECT_EQ(server_->notes.back().replaces, server_->notes.front().id);
}

TEST_F(Notifications, ReportChosenAction) {
  const std::uint32_t seven = shown(task(7, "a")).id;
  const std::uint32_t eight = shown(task(8, "b")).id;
  server_->invoke(seven, "default");
  EXPECT_TRUE(waitUntil([&] { return !opened_.isEmpty(); }));
  EXPECT_EQ(opened_.takeFirst(), QVariantList{7U});
  server_->invoke(eight, "done");
  EXPECT_TRUE(waitUntil([&] { return !completed_.isEmpty(); }));
  EXPECT_EQ(completed_.takeFirst(), QVariantList{8U});
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(Notifications, IgnoreSignalsOfOtherSenders) {
  const std::uint32_t id = shown(task(7, "a")).id;
  BusConnection other(bus_, "org.example.Other");
  QDBusMessage message = QDBusMessage::createSignal(
      "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked");
  other->send(message << id << QString("done"));
  server_->invoke(id + 100, "done");
  server_->invoke(0, "done");
  server_->invoke(id, "anything");
  server_->invoke(id, "default");
  EXPECT_TRUE(waitUntil([&] { return !opened_.isEmpty(); }));
  EXPECT_TRUE(completed_.isEmpty());
}

TEST_F(Notifications, ForgetClosedOnes) {
  const std::uint32_t id = shown(task(7, "a")).id;
  server_->closeByUser(id);
  settle();
  server_->invoke(id, "default");
  EXPECT_EQ(shown(task(7, "a")).replaces, 0U);
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(Notifications, OfCompletedTaskAreWithdrawn) {
  const std::uint32_t id = shown(task(7, "a")).id;
  notifications_.withdraw(8);
  notifications_.withdraw(7);
  notifications_.withdraw(7);
  EXPECT_TRUE(waitUntil([&] { return !server_->closed.empty(); }));
  EXPECT_EQ(shown(task(7, "a")).replaces, 0U);
  EXPECT_THAT(server_->closed, ElementsAre(id));
}

TEST_F(Notifications, OfTaskCompletedBeforeAreNotShown) {
  server_->hesitates = true;
  notifications_.show(task(7, "a"));
  EXPECT_TRUE(waitUntil([&] { return server_->calls.contains("GetCapabilities"); }));
  notifications_.withdraw(7);
  server_->hesitates = false;
  server_->answer();
  settle();
  EXPECT_THAT(server_->notes, IsEmpty());
}

TEST_F(Notifications, OfTaskCompletedMeanwhileAreWithdrawn) {
  server_->hesitates = true;
  notifications_.show(task(7, "a"));
  EXPECT_TRUE(waitUntil([&] { return server_->calls.contains("GetCapabilities"); }));
  server_->answer();
  EXPECT_TRUE(waitUntil([&] { return !server_->notes.empty(); }));
  notifications_.withdraw(7);
  server_->hesitates = false;
  server_->answer();
  EXPECT_TRUE(waitUntil([&] { return !server_->closed.empty(); }));
  EXPECT_THAT(server_->closed, ElementsAre(server_->notes.front().id));
}

TEST_F(Notifications, CloseWhenProgramEnds) {
  auto program = std::make_unique<AlarmNotifications>(nullptr);
  program->show(task(7, "a"));
  program->show(task(8, "b"));
  EXPECT_TRUE(waitUntil([&] { return server_->notes.size() == 2; }));
  settle();
  const std::uint32_t ids[] = {server_->notes[0].id, server_->notes[1].id};
  program.reset();
  EXPECT_TRUE(waitUntil([&] { return server_->closed.size() == 2; }));
  EXPECT_THAT(server_->closed, testing::UnorderedElementsAreArray(ids));
}

TEST_F(Notifications, IgnoreIdsOfOldServer) {
  const std::uint32_t id = shown(task(7, "a")).id;
  server_.reset();
  server_ = std::make_unique<NotificationServer>(bus_);
  settle();
  server_->invoke(id, "default");
  EXPECT_EQ(shown(task(7, "a")).replaces, 0U);
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(Notifications, LogRefusingServerOnceAndRetry) {
  server_->refuses = true;
  for (int i = 0; i < 2; ++i) {
    notifications_.show(task(7, "a"));
    EXPECT_TRUE(waitUntil([&] { return server_->calls.size() > i; }));
    EXPECT_TRUE(waitUntil([&] { return !log_.text().empty(); }));
  }
  server_->refuses = false;
  EXPECT_EQ(shown(task(8, "b")).summary, "b");
  EXPECT_EQ(log_.withoutLines(),
            "(apps/tasks/alarms/alarm_notifications.cpp)Alarms can't be shown as notifications: "
            "org.freedesktop.DBus.Error.Failed refused");
}

TEST_F(Notifications, ReportThatThereIsNoServer) {
  server_.reset();
  notifications_.show(task(7, "a"));
  notifications_.show(task(8, "b"));
  notifications_.withdraw(8);
  notifications_.show(task(9, "c"));
  EXPECT_TRUE(waitUntil([&] { return notShown_.size() == 2; }));
  EXPECT_EQ(notShown_[0][0].toUInt(), 7U);
  EXPECT_EQ(notShown_[1][0].toUInt(), 9U);
  EXPECT_THAT(log_.text(),
              HasSubstr("Alarms can't be shown as notifications: org.freedesktop.DBus.Error."));
  server_ = std::make_unique<NotificationServer>(bus_);
  shown(task(7, "a"));
  EXPECT_EQ(log_.text().find("Alarms"), log_.text().rfind("Alarms"));
}

TEST_F(Notifications, ReportThatThereIsNoBus) {
  bus_.end();
  for (int i = 0; i < 2; ++i) {
    notifications_.show(task(7, "a"));
    notifications_.withdraw(7);
  }
  EXPECT_EQ(notShown_.size(), 2);
  EXPECT_EQ(log_.withoutLines(),
            "(apps/tasks/alarms/alarm_notifications.cpp)Alarms can't be shown as notifications: "
            "there is no session bus");
}

TEST_F(Notifications, ReconnectToBus) {
  shown(task(7, "a"));
  const TestBus next;
  bus_.end();
  notifications_.show(task(7, "a"));
  notifications_.withdraw(7);
  setenv("DBUS_SESSION_BUS_ADDRESS", qPrintable(next.address()), 1);
  NotificationServer server(next);
  EXPECT_TRUE(waitUntil([&] {
    if (server.notes.empty())
      notifications_.show(task(7, "a"));
    return !server.notes.empty();
  }));
  EXPECT_EQ(server.notes.front().replaces, 0U);
}

}  // namespace
