#include "UTIL_DateTime.h"

#include "UTIL_TimeConversion.h"

#include <QLocale>

QString UTIL_DateTime::dateToString(const QDateTime& dateTime, int accuracy) {
  const QDateTime local = UTIL_TimeConversion::toLocalTime(dateTime);
  if (!local.isValid())
    return QString();
  const QLocale locale;
  return accuracy == dateOnly ? locale.toString(local.date(), QLocale::ShortFormat)
                              : locale.toString(local, QLocale::ShortFormat);
}
