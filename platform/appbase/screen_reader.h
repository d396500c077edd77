// Announcements to screen readers.
#pragma once

#include "ulo/export.h"

#include <QString>

class QWidget;

namespace ulo {

// Makes a screen reader speak a text that has appeared in `widget`, wherever the focus is. Does
// nothing if accessibility is not in use.
ULO_EXPORT void announce(QWidget* widget, const QString& text);

}  // namespace ulo
