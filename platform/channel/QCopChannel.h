// Broadcasts between programs over named channels.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QByteArray>
#include <QObject>

// Receives the messages sent on a channel by this or another program of the same session. Requires
// an event loop in the thread that created it.
//
// Messages are signals on the D-Bus session bus (D-Bus Specification 0.38), which is found in the
// usual way: $DBUS_SESSION_BUS_ADDRESS, or else the socket "bus" in $XDG_RUNTIME_DIR. A missing bus
// is never started.
class ULO_EXPORT QCopChannel : public QObject {
  Q_OBJECT

public:
  // Starts listening. Without a bus nothing is ever received, which is logged.
  explicit QCopChannel(const QCString& channel, QObject* parent = nullptr);
  ~QCopChannel() override;

  [[nodiscard]] const QCString& channel() const { return channel_; }
  // Returns true if the object is listening.
  [[nodiscard]] bool isConnected() const;

  // Sends a message to all listeners of the channel. Returns false and logs it if there is no bus,
  // without waiting, or if the bus does not respond. If it returns true, the bus has accepted the
  // message and delivers it even if this process exits now.
  static bool send(const QCString& channel, const QCString& message,
                   const QByteArray& data = QByteArray());

Q_SIGNALS:
  void received(const QCString& message, const QByteArray& data);

private Q_SLOTS:
  void deliver(const QString& channel, const QString& message, const QByteArray& data);

private:
  QCString channel_;
  void* listener_ = nullptr;
};
