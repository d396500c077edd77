// The look of screens and dialogs: colors from the palette, measures from the font.
#pragma once

#include "ulo/export.h"

#include <QPalette>

class QAbstractScrollArea;
class QWidget;

namespace ulo {

enum class Theme { light, dark };

// Returns the theme in $ULO_THEME ("light" or "dark"), or else the theme that the desktop's palette
// matches.
[[nodiscard]] ULO_EXPORT Theme preferredTheme(const QPalette& desktop);
[[nodiscard]] ULO_EXPORT QPalette themePalette(Theme theme);

// The following measures are in pixels and grow with the font.

// The space between elements.
[[nodiscard]] ULO_EXPORT int gap(const QWidget* widget);
// The height of a touch target: about nine millimeters on a phone.
[[nodiscard]] ULO_EXPORT int touchHeight(const QWidget* widget);
// The side of an icon, a multiple of the 16 pixels that icons are drawn for.
[[nodiscard]] ULO_EXPORT int iconSize(const QWidget* widget);
// Converts a measure for the narrow screen's font (13 pixels per line) to the widget's font.
[[nodiscard]] ULO_EXPORT int scaled(const QWidget* widget, int pixels);

// Makes the area scroll by dragging its content, with a thin scroll bar that only shows the
// position.
ULO_EXPORT void makeTouchable(QAbstractScrollArea* area);

}  // namespace ulo
