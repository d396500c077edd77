#include "clock.h"

QDateTime engineNow() {
  return QDateTime::currentDateTime();
}
