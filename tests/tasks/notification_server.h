#pragma once

#include "test_bus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <cstdint>
#include <vector>

// A replacement for the desktop's notification server that records what it should show.
class NotificationServer : public QDBusVirtualObject {
public:
  struct Note {
    std::string signature;
    QString application;
    std::uint32_t replaces = 0;
    QString icon;
    QString summary;
    QString body;
    QStringList actions;
    QVariantMap hints;
    int timeout = -1;
    std::uint32_t id = 0;  // that it was given
  };

  explicit NotificationServer(const TestBus& bus);
  ~NotificationServer() override;

  // Its reply about its capabilities.
  QStringList capabilities = {QStringLiteral("actions"), QStringLiteral("body")};
  // Replies with an error.
  bool refuses = false;
  // Holds its replies until they are requested.
  bool hesitates = false;

  std::vector<Note> notes;
  QStringList calls;
  std::vector<std::uint32_t> closed;  // by CloseNotification

  void answer();
  // Actions of the user.
  void invoke(std::uint32_t id, const QString& action);
  void closeByUser(std::uint32_t id);

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
  void reply(const QDBusMessage& message);
  void signal(const QString& name, const QVariantList& arguments);

  BusConnection bus_;
  std::vector<QDBusMessage> kept_;
  std::uint32_t lastId_ = 40;
};
