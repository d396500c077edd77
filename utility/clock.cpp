#include "clock.h"

#include "UTIL_TimeConversion.h"

QDateTime engineNow() {
  return UTIL_TimeConversion::toLocalTime(QDateTime::currentDateTimeUtc());
}
