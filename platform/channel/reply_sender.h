#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <functional>

class QObject;

namespace ulo {

// Calls `found` with the unique bus name of the program that sent `reply`, the reply to a call of
// the well-known name `service`. Some versions of QtDBus keep it in the reply; then `found` is
// called at once. Others, such as 6.8, do not; then it is called once the bus has told who owns
// `service`, with an empty name if no program does. It is not called after `context` is deleted.
void findReplySender(const QDBusConnection& bus, const QDBusMessage& reply, const QString& service,
                     QObject* context, const std::function<void(const QString&)>& found);

}  // namespace ulo
