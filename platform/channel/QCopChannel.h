// Broadcasts between programs, by named channels.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QByteArray>
#include <QObject>

#include <memory>

namespace ulo {
class PrivateBus;
}

// A receiver of what is sent on a channel, by this program or another one of the same session. It
// needs an event loop in the thread that made it.
//
// Messages are signals on the session's D-Bus (D-Bus Specification 0.38), found as its programs
// find it: $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in $XDG_RUNTIME_DIR. Where there is
// none, none is started.
class ULO_EXPORT QCopChannel : public QObject {
  Q_OBJECT

public:
  // Listens from now on. Without a bus nothing is ever received; that is logged.
  explicit QCopChannel(const QCString& channel, QObject* parent = nullptr);
  ~QCopChannel() override;

  [[nodiscard]] const QCString& channel() const { return channel_; }
  // Whether it listens.
  [[nodiscard]] bool isConnected() const;

  // Sends a message to everyone who listens on the channel. False, and a line in the log, when
  // there is no bus: at once, nothing waits. True: the bus has the message, which reaches its
  // receivers even if this process ends now.
  static bool send(const QCString& channel, const QCString& message,
                   const QByteArray& data = QByteArray());

Q_SIGNALS:
  void received(const QCString& message, const QByteArray& data);

private Q_SLOTS:
  void deliver(const QString& channel, const QString& message, const QByteArray& data);

private:
  QCString channel_;
  std::unique_ptr<ulo::PrivateBus> bus_;
};
