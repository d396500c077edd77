// Tests for broadcasts over a real session bus.

#include "QCopChannel.h"
#include "log_capture.h"
#include "session_bus.h"
#include "temporary_directory.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

int argumentCount = 1;
char programName[] = "channel_test";
char* programArguments[] = {programName, nullptr};

// Runs the event loop until the condition holds. Fails the test on timeout.
void waitUntil(const std::function<bool()>& holds) {
  constexpr int patienceMs = 20000;
  QElapsedTimer timer;
  timer.start();
  while (!holds() && timer.elapsed() < patienceMs)
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
  EXPECT_TRUE(holds());
}

// Records what a channel receives, in order.
struct Receiver {
  explicit Receiver(const char* name) : channel(name) {
    QObject::connect(&channel, &QCopChannel::received, &channel,
                     [this](const QCString& message, const QByteArray& data) {
                       received.push_back(message.toStdString() + '|' + data.toStdString());
                     });
  }
  QCopChannel channel;
  std::vector<std::string> received;
};

class Channel : public testing::Test {
protected:
  QCoreApplication application_{argumentCount, programArguments};
  SessionBus bus_;
};

TEST_F(Channel, EachReceiverGetsEachMessageOnce) {
  Receiver first("ULO_A");
  Receiver second("ULO_A");
  ASSERT_TRUE(first.channel.isConnected());
  EXPECT_EQ(first.channel.channel(), QCString("ULO_A"));
  EXPECT_TRUE(QCopChannel::send("ULO_A", "one"));
  EXPECT_TRUE(QCopChannel::send("ULO_A", "two", QByteArray("\0data", 5)));
  waitUntil([&] { return first.received.size() >= 2 && second.received.size() >= 2; });
  const std::string data("two|\0data", 9);
  EXPECT_THAT(first.received, ElementsAre("one|", data));
  EXPECT_THAT(second.received, ElementsAre("one|", data));
}

TEST_F(Channel, OtherChannelsReceiveNothing) {
  Receiver wanted("ULO_A");
  Receiver other("ULO_AB");
  EXPECT_TRUE(QCopChannel::send("ULO_A", "one"));
  EXPECT_TRUE(QCopChannel::send("ULO_AB", "last"));
  waitUntil([&] { return !wanted.received.empty() && !other.received.empty(); });
  EXPECT_THAT(wanted.received, ElementsAre("one|"));
  EXPECT_THAT(other.received, ElementsAre("last|"));
}

TEST_F(Channel, AcceptsAnyTextAsNameAndMessage) {
  Receiver receiver("K\xc3\xa4se '\\ \"");
  EXPECT_TRUE(QCopChannel::send("K\xc3\xa4se '\\ \"", "\xe7\x89\x9b\xe5\xa5\xb6"));
  waitUntil([&] { return !receiver.received.empty(); });
  EXPECT_THAT(receiver.received, ElementsAre("\xe7\x89\x9b\xe5\xa5\xb6|"));
}

// The message is on the bus before send returns.
TEST_F(Channel, MessageOutlivesSender) {
  Receiver receiver("ULO_A");
  const pid_t sender = fork();
  if (sender == 0) {
    execl(ULO_SENDER, ULO_SENDER, "ULO_A", "farewell", nullptr);
    _exit(127);
  }
  int status = -1;
  waitpid(sender, &status, 0);
  EXPECT_EQ(status, 0);
  waitUntil([&] { return !receiver.received.empty(); });
  EXPECT_THAT(receiver.received, ElementsAre("farewell|"));
}

TEST_F(Channel, DestroyedReceiverReceivesNothing) {
  { const Receiver gone("ULO_A"); }
  Receiver receiver("ULO_A");
  EXPECT_TRUE(QCopChannel::send("ULO_A", "one"));
  waitUntil([&] { return !receiver.received.empty(); });
  EXPECT_EQ(receiver.received.size(), 1U);
}

TEST_F(Channel, LeavesNothingOnTheBus) {
  const QString name = QStringLiteral("channel_test counts");
  QDBusConnection counting = QDBusConnection::connectToBus(bus_.address(), name);
  const auto connections = [&] {
    return counting.interface()->registeredServiceNames().value().size();
  };
  const auto before = connections();
  {
    const Receiver receiver("ULO_A");
    EXPECT_TRUE(QCopChannel::send("ULO_A", "one"));
    EXPECT_GT(connections(), before);
  }
  waitUntil([&] { return connections() == before; });
  QDBusConnection::disconnectFromBus(name);
}

TEST(ChannelWithoutBus, SendFailsAndIsLogged) {
  const TemporaryDirectory runtime;
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  // A program with a display could be given a new bus, which must not happen here.
  setenv("DISPLAY", ":77", 1);
  setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  LogCapture log;
  EXPECT_FALSE(QCopChannel::send("ULO_A", "one"));
  EXPECT_EQ(log.withoutLines(), "(platform/channel/QCopChannel.cpp)No session bus, one is not sent "
                                "on ULO_A");
  for (const char* address : {"unix:path=/nowhere/at/all", "nonsense", "unix:abstract="}) {
    setenv("DBUS_SESSION_BUS_ADDRESS", address, 1);
    EXPECT_FALSE(QCopChannel::send("ULO_A", "one")) << address;
  }
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_THAT(std::filesystem::directory_iterator(runtime.path()),
              std::filesystem::directory_iterator());
  unsetenv("DISPLAY");
}

TEST(ChannelWithoutBus, DBusLibraryStartsNoThread) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
  };
  const TemporaryDirectory runtime;
  setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  const LogCapture quiet;
  const auto before = threads();
  EXPECT_FALSE(QCopChannel::send("ULO_A", "one"));
  { const QCopChannel receiver("ULO_A"); }
  EXPECT_EQ(threads(), before);
}

TEST(ChannelWithoutBus, ReceiverLogsMissingBus) {
  const TemporaryDirectory runtime;
  setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  LogCapture log;
  const QCopChannel channel("ULO_A");
  EXPECT_FALSE(channel.isConnected());
  EXPECT_THAT(log.text(), HasSubstr("No session bus, nothing will be received on ULO_A"));
}

}  // namespace
