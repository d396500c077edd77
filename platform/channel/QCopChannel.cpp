#include "QCopChannel.h"

#include "bus_library.h"
#include "module_log.h"

QCopChannel::QCopChannel(const QCString& channel, QObject* parent)
    : QObject(parent), channel_(channel) {
  const ulo::BusFunctions* bus = ulo::busFunctions();
  listener_ = bus != nullptr ? bus->listen(this) : nullptr;
  if (listener_ == nullptr)
    ULO_LOG_ERROR("No session bus, nothing will be received on %s", channel_.constData());
}

QCopChannel::~QCopChannel() {
  if (listener_ == nullptr)
    return;
  if (const ulo::BusFunctions* bus = ulo::busFunctions())
    bus->close(listener_);
}

bool QCopChannel::isConnected() const {
  if (listener_ == nullptr)
    return false;
  const ulo::BusFunctions* bus = ulo::busFunctions();
  return bus != nullptr && bus->isConnected(listener_);
}

// The bus could filter by channel, but QtDBus does not write match rules for names beyond Latin-1.
void QCopChannel::deliver(const QString& channel, const QString& message, const QByteArray& data) {
  if (channel == QString::fromUtf8(channel_.constData()))
    Q_EMIT received(QCString(message.toUtf8()), data);
}

bool QCopChannel::send(const QCString& channel, const QCString& message, const QByteArray& data) {
  const ulo::BusFunctions* bus = ulo::busFunctions();
  const ulo::BusSending result = bus == nullptr
                                     ? ulo::BusSending::noBus
                                     : bus->send(QString::fromUtf8(channel.constData()),
                                                 QString::fromUtf8(message.constData()), data);
  switch (result) {
  case ulo::BusSending::sent:
    return true;
  case ulo::BusSending::noBus:
    ULO_LOG_ERROR("No session bus, %s is not sent on %s", message.constData(), channel.constData());
    return false;
  case ulo::BusSending::noReply:
    break;
  }
  ULO_LOG_ERROR("The session bus does not answer, %s is not sent on %s", message.constData(),
                channel.constData());
  return false;
}
