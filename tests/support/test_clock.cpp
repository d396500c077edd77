#include "test_clock.h"

#include "clock.h"

namespace {

QDateTime& frozen() {
  static QDateTime now;
  return now;
}

}  // namespace

void setEngineNow(const QDateTime& now) {
  frozen() = now;
}

QDateTime engineNow() {
  return frozen().isValid() ? frozen() : QDateTime::currentDateTime();
}
