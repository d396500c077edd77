#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <sys/prctl.h>

// A private session bus for this process and the processes that it starts during the object's
// lifetime. The constructor throws if the bus does not start.
class SessionBus {
public:
  SessionBus() {
    daemon_.setStandardErrorFile(QProcess::nullDevice());
    daemon_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    daemon_.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address"});
    if (!daemon_.waitForStarted() || !daemon_.waitForReadyRead(10000))
      throw std::runtime_error("cannot start dbus-daemon: " + daemon_.errorString().toStdString());
    address_ = daemon_.readLine().trimmed();
    setenv("DBUS_SESSION_BUS_ADDRESS", address_.constData(), 1);
  }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus() {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    daemon_.kill();
    daemon_.waitForFinished();
  }

  [[nodiscard]] const QByteArray& address() const { return address_; }

private:
  QProcess daemon_;
  QByteArray address_;
};
