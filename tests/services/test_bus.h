#pragma once

#include "temporary_directory.h"

#include <QDBusConnection>
#include <QProcess>
#include <QString>

#include <csignal>
#include <fstream>
#include <stdexcept>

#include <sys/prctl.h>

// Makes the process end with this one, even if this one crashes.
inline void endWithThisProcess(QProcess& process) {
  process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

inline void endNow(QProcess& process) {
  process.kill();
  process.waitForFinished();
}

// A private D-Bus that starts no services. The constructor throws if the bus does not start.
class TestBus {
public:
  TestBus() {
    std::ofstream(configuration()) << R"(<busconfig>
  <type>session</type>
  <listen>unix:dir=)" << directory_.path().string()
                                   << R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>)";
    daemon_.setStandardErrorFile(QProcess::nullDevice());
    endWithThisProcess(daemon_);
    daemon_.start("dbus-daemon", {"--config-file=" + QString::fromStdString(configuration()),
                                  "--nofork", "--nopidfile", "--print-address"});
    if (!daemon_.waitForStarted() || !daemon_.waitForReadyRead(20000))
      throw std::runtime_error("cannot start dbus-daemon: " + daemon_.errorString().toStdString());
    address_ = QString::fromUtf8(daemon_.readLine().trimmed());
  }
  TestBus(const TestBus&) = delete;
  TestBus& operator=(const TestBus&) = delete;
  ~TestBus() { end(); }

  [[nodiscard]] const QString& address() const { return address_; }
  void end() { endNow(daemon_); }

private:
  [[nodiscard]] std::string configuration() const {
    return (directory_.path() / "bus.conf").string();
  }

  TemporaryDirectory directory_;
  QProcess daemon_;
  QString address_;
};

// A connection to a bus under a well-known name. It is closed with the object.
class BusConnection {
public:
  BusConnection(const TestBus& bus, const QString& service)
      : name_(QStringLiteral("test %1 %2").arg(bus.address(), service)),
        connection_(QDBusConnection::connectToBus(bus.address(), name_)) {
    owns_ = connection_.registerService(service);
  }
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;
  ~BusConnection() { QDBusConnection::disconnectFromBus(name_); }

  [[nodiscard]] bool owns() const { return owns_; }
  QDBusConnection& operator*() { return connection_; }
  QDBusConnection* operator->() { return &connection_; }

private:
  QString name_;
  QDBusConnection connection_;
  bool owns_ = false;
};
