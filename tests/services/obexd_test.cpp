// Sends objects through two real obexds, one sending and one receiving. A local socket replaces the
// radio, and BluezStandIn replaces bluetoothd.

#include "push_progress.h"
#include "share_fixture.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusUnixFileDescriptor>
#include <QProcessEnvironment>
#include <QSocketNotifier>
#include <QTest>

#include <fstream>
#include <iterator>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int patienceMs = 60000;

class Obexd {
public:
  // Connects to the local socket `radio`, whatever the device.
  Obexd(const TestBus& session, const TestBus& system, const QString& home, const QString& radio,
        const QStringList& arguments) {
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), session.address());
    variables.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), system.address());
    for (const char* place :
         {"HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
      variables.insert(QString::fromLatin1(place), home);
    variables.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(ULO_RFCOMM_SHIM));
    variables.insert(QStringLiteral("ULO_TEST_RFCOMM"), radio);
    process_.setProcessEnvironment(variables);
    process_.setProcessChannelMode(QProcess::MergedChannels);
    endWithThisProcess(process_);
    process_.start(QStringLiteral(ULO_OBEXD), QStringList{"-n"} + arguments);
  }
  Obexd(const Obexd&) = delete;
  Obexd& operator=(const Obexd&) = delete;
  // Must end before its buses, because it would busily search for them.
  ~Obexd() { endNow(process_); }

  std::string said() { return process_.readAll().toStdString(); }

private:
  QProcess process_;
};

// A listening local socket.
class Radio {
public:
  Radio(const std::string& path, std::function<void(int)> connected)
      : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), notifier_(fd_, QSocketNotifier::Read) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() < sizeof address.sun_path) {
      path.copy(address.sun_path, path.size());
      listens_ = bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                 listen(fd_, 4) == 0;
    }
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this, connected] {
      if (const int connection = accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC); connection >= 0)
        connected(connection);
    });
  }
  Radio(const Radio&) = delete;
  Radio& operator=(const Radio&) = delete;
  ~Radio() { close(fd_); }

  [[nodiscard]] bool listens() const { return listens_; }

private:
  int fd_;
  bool listens_ = false;
  QSocketNotifier notifier_;
};

// Replaces BlueZ for the receiving obexd and passes it connections for its profile.
class Receiver {
public:
  explicit Receiver(const TemporaryDirectory& directory)
      : root_(directory.path() / "received"), socket_(directory.path() / "rfcomm"),
        radio_(socket_, [this](int connection) { handOver(connection); }) {
    std::filesystem::create_directory(root_);
    bluez_.other = [this](const QDBusMessage& message) { return takeProfile(message); };
    obexd_ = std::make_unique<Obexd>(
        bus_, bus_, QString::fromStdString(directory.path().string()), QString(),
        QStringList{"-a", "-r", QString::fromStdString(root_.string())});
  }

  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;
  ~Receiver() {
    if (unanswered_ >= 0)
      close(unanswered_);
  }

  [[nodiscard]] bool isReady() const { return radio_.listens() && !profile_.isEmpty(); }
  [[nodiscard]] QString socketPath() const { return QString::fromStdString(socket_); }
  // While silent, incoming connections are left unanswered.
  void setSilent(bool silent) { silent_ = silent; }
  [[nodiscard]] bool hasUnanswered() const { return unanswered_ >= 0; }
  Obexd& obexd() { return *obexd_; }
  void die() { obexd_.reset(); }

  // Returns the names and contents of the received files.
  [[nodiscard]] std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_))
      if (entry.is_regular_file()) {
        std::ifstream stream(entry.path(), std::ios::binary);
        found[entry.path().filename().string()] =
            std::string(std::istreambuf_iterator<char>(stream), {});
      }
    return found;
  }

private:
  bool takeProfile(const QDBusMessage& message) {
    if (message.member() != QLatin1String("RegisterProfile"))
      return false;
    const QVariantList arguments = message.arguments();
    // The Object Push profile.
    if (arguments.at(1).toString().startsWith(QLatin1String("00001105"))) {
      service_ = message.service();
      profile_ = arguments.at(0).value<QDBusObjectPath>().path();
    }
    bluez_.connection().send(message.createReply());
    return true;
  }

  void handOver(int connection) {
    if (silent_) {
      unanswered_ = connection;
      return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        service_, profile_, QStringLiteral("org.bluez.Profile1"), QStringLiteral("NewConnection"));
    // The message duplicates the descriptor.
    call << QVariant::fromValue(QDBusObjectPath("/org/bluez/hci0/dev_sender"))
         << QVariant::fromValue(QDBusUnixFileDescriptor(connection)) << QVariantMap();
    close(connection);
    bluez_.connection().asyncCall(call);
  }

  std::filesystem::path root_;
  std::string socket_;
  Radio radio_;
  TestBus bus_;
  BluezStandIn bluez_{bus_};
  QString service_;
  QString profile_;
  bool silent_ = false;
  int unanswered_ = -1;
  std::unique_ptr<Obexd> obexd_;
};

class RealObexd : public Share {
protected:
  RealObexd() {
    bluez.addAdapter(true);
    bluez.addDevice("01", "Receiver", true);
    bluez.other = [this](const QDBusMessage& message) {
      return bluez.connection().send(message.createReply());
    };
    settings.session = {{"Channel", QVariant::fromValue<uchar>(9)}};
  }

  void SetUp() override {
    Share::SetUp();
    receiver = std::make_unique<Receiver>(directory);
    sender =
        std::make_unique<Obexd>(session, system, QString::fromStdString(directory.path().string()),
                                receiver->socketPath(), QStringList());
    ASSERT_TRUE(QTest::qWaitFor([&] { return receiver->isReady(); }, patienceMs))
        << receiver->obexd().said();
    BusConnection look(session, "ulo.test");
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return look->interface()->isServiceRegistered("org.bluez.obex").value(); },
        patienceMs))
        << sender->said();
  }

  void TearDown() override {
    sender.reset();
    receiver.reset();
    Share::TearDown();
  }

  TemporaryDirectory directory;
  BluezStandIn bluez{system};
  std::unique_ptr<Receiver> receiver;
  std::unique_ptr<Obexd> sender;
};

TEST_F(RealObexd, DeliversEveryByteUnderObjectName) {
  // All byte values, and more than fits into one packet.
  std::string content;
  for (int i = 0; i < 300000; ++i)
    content += static_cast<char>(i * 7 + i / 256);
  const QString name = QString::fromUtf8("K\xc3\xa4se \xe7\x89\x9b\xe5\xa5\xb6.vcs");
  EXPECT_TRUE(share(name, QByteArray::fromStdString(content))) << sender->said();
  EXPECT_THAT(user.seen, ElementsAre("chooser", "progress", "Sent to Receiver."));
  EXPECT_TRUE(receiver->files() ==
              (std::map<std::string, std::string>{{name.toStdString(), content}}))
      << receiver->files().size() << " files";
  EXPECT_EQ(log.text(), "");
}

TEST_F(RealObexd, SendsNamelessObjectAsExtension) {
  EXPECT_TRUE(share(".vcs", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n"));
  EXPECT_THAT(receiver->files(),
              ElementsAre(testing::Pair(".vcs", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n")));
}

TEST_F(RealObexd, ReportsDeviceThatRefusesConnection) {
  std::filesystem::remove(receiver->socketPath().toStdString());
  EXPECT_FALSE(share());
  EXPECT_EQ(user.seen.last(), "No connection to Receiver. Is it switched on and in reach?");
}

TEST_F(RealObexd, CanSendAgainAfterCancelBeforeAnswer) {
  receiver->setSilent(true);
  user.watch = [&](ulo::PushProgress& progress) {
    if (receiver->hasUnanswered())
      QTest::keyClick(&progress, Qt::Key_F3);
  };
  EXPECT_FALSE(share());
  ASSERT_TRUE(receiver->hasUnanswered());
  receiver->setSilent(false);
  user.watch = [](ulo::PushProgress&) {};
  EXPECT_TRUE(share("next.vcs", "text"));
  EXPECT_EQ(user.seen.last(), "Sent to Receiver.");
  EXPECT_THAT(receiver->files(), ElementsAre(testing::Pair("next.vcs", "text")));
}

TEST_F(RealObexd, ReportsReceiverThatDiesDuringTransfer) {
  user.watch = [&](ulo::PushProgress&) { receiver->die(); };
  share("large.vcs", QByteArray(20000000, 'x'));
  EXPECT_EQ(user.seen.size(), 3);
  EXPECT_NE(user.seen.last(), "Sent to Receiver.");
}

}  // namespace
