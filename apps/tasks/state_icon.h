#pragma once

#include "RES_ICON_Reader.h"
#include "task_words.h"

namespace tasks {

// The icon of a state or a class of priorities.
[[nodiscard]] inline QPixmap stateIcon(const ulo::ShownAs& shown) {
  return RES_ICON_Reader::getIcon(QString::fromLatin1(shown.icon), true);
}

}  // namespace tasks
