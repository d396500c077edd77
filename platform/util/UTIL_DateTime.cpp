#include "UTIL_DateTime.h"

#include <QLocale>

QString UTIL_DateTime::dateToString(const QDateTime& dateTime, int accuracy) {
  if (!dateTime.isValid())
    return QString();
  const QLocale locale;
  return accuracy == dateOnly ? locale.toString(dateTime.date(), QLocale::ShortFormat)
                              : locale.toString(dateTime, QLocale::ShortFormat);
}
