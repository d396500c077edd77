#include "UTIL_DateTime.h"

#include "UTIL_TimeConversion.h"

#include <QLocale>

QString UTIL_DateTime::dateToString(const QDateTime& dateTime, int accuracy) {
  const QDateTime local = UTIL_TimeConversion::toLocalTime(dateTime);
  if (!local.isValid())
    return QString();
  const QLocale locale;
  // Since version 6.11, Qt's short format of the C locale has numbers of months.
  if (locale.language() == QLocale::C)
    return locale.toString(local, accuracy == dateOnly ? QStringLiteral("d MMM yyyy")
                                                       : QStringLiteral("d MMM yyyy HH:mm:ss"));
  return accuracy == dateOnly ? locale.toString(local.date(), QLocale::ShortFormat)
                              : locale.toString(local, QLocale::ShortFormat);
}
