#pragma once

#include "test_bus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <ostream>

// In place of obexd: takes one file and does with it what the test says.
class ObexdStandIn : public QDBusVirtualObject {
public:
  enum class Manner {
    completes,        // by and by
    completesAtOnce,  // before SendFile is answered
    fails,            // after the first half
    stays,            // after the first half
    neverAnswers,     // CreateSession
    refusesSession,
    refusesFile,
    answersOtherwise,  // CreateSession, with a text in place of a path
    refusesToCancel,   // and stays after the first half
  };

  friend void PrintTo(Manner manner, std::ostream* stream) {
    *stream << "manner " << static_cast<int>(manner);
  }

  ObexdStandIn(const TestBus& bus, Manner manner);
  ~ObexdStandIn() override;

  // "CreateSession ADDRESS", "SendFile" and the like, in their order.
  QStringList calls;
  // Of the file, when it was to be sent.
  QString name;
  QByteArray content;
  QString directory;
  int directoryMode = 0;
  // Of the last session.
  QVariantMap arguments;

  // A change of the transfer's properties.
  void tell(const QVariantMap& properties);

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
  void createSession(const QDBusMessage& message);
  void sendFile(const QDBusMessage& message);
  void refuse(const QDBusMessage& message);

  Manner manner_;
  BusConnection bus_;
};
