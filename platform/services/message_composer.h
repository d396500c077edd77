#pragma once

#include "AM_ActionData.h"

#include <QString>

namespace ulo {

// Starts the message composer with this file attached. The composer deletes the file.
inline void composeMessage(const QString& path) {
  AM_ActionData message;
  message.setOpenAppUuid(QString::fromLatin1(AM_ActionData::composer));
  message.setAction(QStringLiteral("SendMMSSMS"));
  message.setValue(QStringLiteral("Files"), path);
  message.setValue(QStringLiteral("AutoDelete"), QStringLiteral("Yes"));
  message.invoke(false);
}

}  // namespace ulo
