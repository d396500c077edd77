// Tests for the sender of D-Bus replies, over a real session bus.

#include "reply_sender.h"
#include "session_bus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace {

class ReplySender : public testing::Test {
protected:
  ReplySender() : connection_(QDBusConnection::connectToBus(bus_.address(), "reply_sender_test")) {
    connection_.registerService("ulo.owner");
  }
  ~ReplySender() override { QDBusConnection::disconnectFromBus("reply_sender_test"); }

  // A reply as those QtDBus versions return it that do not tell the sender.
  static QDBusMessage withoutSender() {
    return QDBusMessage::createMethodCall("ulo.owner", "/", "ulo.Owner", "Call").createReply();
  }
  void find(const QString& service) {
    ulo::findReplySender(connection_, withoutSender(), service, context_.get(),
                         [this](const QString& name) { found_ = name; });
  }
  void processEvents(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (!found_ && !timer.hasExpired(milliseconds))
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
  }

  int count_ = 1;
  char name_[18] = "reply_sender_test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{count_, arguments_};
  SessionBus bus_;
  QDBusConnection connection_;
  std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
  std::optional<QString> found_;
};

TEST_F(ReplySender, IsOwnerOfNameIfReplyDoesNotTell) {
  find("ulo.owner");
  processEvents(20000);
  ASSERT_TRUE(found_);
  EXPECT_EQ(*found_, connection_.baseService());
}

TEST_F(ReplySender, IsUnknownIfNobodyOwnsName) {
  find("ulo.nobody");
  processEvents(20000);
  EXPECT_EQ(found_, QString());
}

TEST_F(ReplySender, IsUnknownWithoutBus) {
  connection_ = QDBusConnection("closed");
  find("ulo.owner");
  EXPECT_EQ(found_, QString());
}

TEST_F(ReplySender, IsNotToldAfterContextIsDeleted) {
  find("ulo.owner");
  context_.reset();
  processEvents(200);
  EXPECT_FALSE(found_);
}

}  // namespace
