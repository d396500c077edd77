#pragma once

#include "RES_ICON_Reader.h"

namespace tasks {

// The icon of a status or a priority: "complete", "incomplete", "hi_pri", "normal_pri" or "lo_pri".
[[nodiscard]] inline QPixmap stateIcon(const char* state) {
  const QString name = QStringLiteral("todo_task_%1_small.gif").arg(QLatin1String(state));
  return RES_ICON_Reader::getIcon(name, true);
}

}  // namespace tasks
