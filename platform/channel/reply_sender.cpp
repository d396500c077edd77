#include "reply_sender.h"

#include <QDBusPendingCallWatcher>
#include <QObject>

namespace ulo {

void findReplySender(const QDBusConnection& bus, const QDBusMessage& reply, const QString& service,
                     QObject* context, const std::function<void(const QString&)>& found) {
  if (!reply.service().isEmpty() || !bus.isConnected()) {
    found(reply.service());
    return;
  }
  QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
  question << service;
  auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), context);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, context, [answer, found] {
    answer->deleteLater();
    const QDBusMessage owner = answer->reply();
    found(owner.type() == QDBusMessage::ReplyMessage ? owner.arguments().value(0).toString()
                                                     : QString());
  });
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the call belongs to the context.

}  // namespace ulo
