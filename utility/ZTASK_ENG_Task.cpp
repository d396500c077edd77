#include "ZTASK_ENG_Task.h"

#include "clock.h"

QDateTime ZTASK_ENG_Task::noDate() {
  return QDateTime::fromSecsSinceEpoch(noDateSeconds);
}
