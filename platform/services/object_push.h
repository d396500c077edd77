#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>

#include <chrono>
#include <functional>

namespace ulo {

// Sends one file to a device through obexd (org.bluez.obex on the D-Bus session bus). No function
// blocks. ended() is emitted exactly once, whatever happens to the peer, to obexd or to the bus.
class ObjectPush : public QObject {
  Q_OBJECT

public:
  enum class State {
    connecting,  // no session with the device yet
    offering,    // the device has not accepted the file yet
    sending,
    leaving,  // the outcome is known; closing obexd's session
    over,
  };
  enum class End { sent, cancelled, failed };
  struct Limits {
    // The push fails after this time without progress. A person may have to accept at the other
    // end.
    std::chrono::milliseconds stall = std::chrono::seconds(60);
    // Timeout for obexd's reply to the end of the push.
    std::chrono::milliseconds farewell = std::chrono::seconds(2);
  };

  // Starts the push. The file must exist and the connection stay open until the end: obexd drops
  // the work of a caller that disconnects. `session` holds arguments for obexd's session in
  // addition to the target.
  ObjectPush(const QDBusConnection& sessionBus, const QString& address, const QString& path,
             const QVariantMap& session, Limits limits);

  // Cancels the push and closes obexd's session, asynchronously. Does nothing if it is already
  // ending.
  void cancel();

  [[nodiscard]] State state() const { return state_; }
  // Requires: the state is leaving or over.
  [[nodiscard]] End end() const { return end_; }
  // Returns true if obexd has accepted the file.
  [[nodiscard]] bool hasBegun() const { return !transfer_.isEmpty(); }
  // In bytes. The size is 0 if unknown.
  [[nodiscard]] quint64 transferred() const { return transferred_; }
  [[nodiscard]] quint64 size() const { return size_; }

Q_SIGNALS:
  // Emitted when the state or the number of bytes has changed.
  void progressed();
  void ended();

private Q_SLOTS:
  void propertiesChanged(const QDBusMessage& signal);
  void serviceLost();

private:
  void watchObexd();
  void connectToDevice(QVariantMap session);
  void sendFile();
  void follow(const QVariantMap& properties);
  void fail(const QString& why);
  void leave(End end);
  void closeSession();
  void finish();
  void call(const QString& path, const QString& interface, const QString& method,
            const QVariantList& arguments, std::chrono::milliseconds patience,
            const std::function<void(const QDBusMessage&)>& answered);

  QDBusConnection bus_;
  QString address_;
  QString file_;
  Limits limits_;
  QTimer stall_;
  State state_ = State::connecting;
  End end_ = End::failed;
  bool lost_ = false;
  QString obexd_;  // obexd's unique bus name, once it has replied
  // Object paths in obexd; empty until they exist.
  QString session_;
  QString transfer_;
  quint64 transferred_ = 0;
  quint64 size_ = 0;
  // Properties of transfers received before the reply that identifies ours.
  QMap<QString, QVariantMap> early_;
};

}  // namespace ulo
