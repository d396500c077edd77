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

// One file on its way to a device, by obexd (org.bluez.obex on the session's D-Bus). Nothing here
// waits; ended() comes once, whatever happens to the peer, to obexd or to the bus.
class ObjectPush : public QObject {
  Q_OBJECT

public:
  enum class State {
    connecting,  // no session with the device yet
    offering,    // the device has not accepted it yet
    sending,
    leaving,  // the end is known, obexd is being told
    over,
  };
  enum class End { sent, cancelled, failed };
  struct Limits {
    // Without a sign of life for so long, it failed. Somebody may have to accept at the other end.
    std::chrono::milliseconds stall = std::chrono::seconds(60);
    // What obexd may take to hear of the end.
    std::chrono::milliseconds farewell = std::chrono::seconds(2);
  };

  // Starts. The file must be there until the end, and the connection open: obexd drops what a
  // caller that went had begun. `session` goes to obexd beside the target.
  ObjectPush(const QDBusConnection& sessionBus, const QString& address, const QString& path,
             const QVariantMap& session, Limits limits);

  // Ends it soon, with obexd's session closed. Does nothing when it is about to end.
  void cancel();

  [[nodiscard]] State state() const { return state_; }
  // Requires: the state is leaving or over.
  [[nodiscard]] End end() const { return end_; }
  // Whether obexd had taken the file over.
  [[nodiscard]] bool hasBegun() const { return !transfer_.isEmpty(); }
  // Bytes; a size of 0 where nothing is known.
  [[nodiscard]] quint64 transferred() const { return transferred_; }
  [[nodiscard]] quint64 size() const { return size_; }

Q_SIGNALS:
  // The state or a number of bytes is new.
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
  QString obexd_;  // its own name on the bus, once it has answered
  // Paths of obexd's objects, empty until there are any.
  QString session_;
  QString transfer_;
  quint64 transferred_ = 0;
  quint64 size_ = 0;
  // What transfers told of themselves before the answer that says which one is ours.
  QMap<QString, QVariantMap> early_;
};

}  // namespace ulo
