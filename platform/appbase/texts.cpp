#include "ulo/texts.h"

#include <QCoreApplication>

QString ulo::text(const char* id, const char* english) {
  const QString found = QCoreApplication::translate(nullptr, id);
  return found == QLatin1String(id) ? QString::fromUtf8(english) : found;
}
