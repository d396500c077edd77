#pragma once

#include "test_bus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <ostream>

// Replaces obexd: receives one file and behaves as the test requests.
class ObexdStandIn : public QDBusVirtualObject {
public:
  enum class Manner {
    completes,        // gradually
    completesAtOnce,  // before SendFile is answered
    fails,            // after the first half
    stays,            // stalls after the first half
    neverAnswers,     // CreateSession
    refusesSession,
    refusesFile,
    answersOtherwise,  // CreateSession, with a text in place of a path
    refusesToCancel,   // and stalls after the first half
  };

  friend void PrintTo(Manner manner, std::ostream* stream) {
    *stream << "manner " << static_cast<int>(manner);
  }

  ObexdStandIn(const TestBus& bus, Manner manner);
  ~ObexdStandIn() override;

  // The calls received, such as "CreateSession ADDRESS" and "SendFile", in order.
  QStringList calls;
  // The file, as of the SendFile call.
  QString name;
  QByteArray content;
  QString directory;
  int directoryMode = 0;
  // The arguments of the last CreateSession call.
  QVariantMap arguments;

  // Signals a change of the transfer's properties.
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
