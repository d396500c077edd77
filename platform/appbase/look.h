// The look that screens and dialogs share: colours by palette, measures by font.
#pragma once

#include "export.h"

#include <QPalette>

class QAbstractScrollArea;
class QWidget;

namespace ulo {

enum class Theme { light, dark };

// $ULO_THEME ("light" or "dark"); without it, what the desktop's own palette is.
[[nodiscard]] ULO_EXPORT Theme preferredTheme(const QPalette& desktop);
[[nodiscard]] ULO_EXPORT QPalette themePalette(Theme theme);

// Pixels. All measures grow with the font.
// A blank between things.
[[nodiscard]] ULO_EXPORT int gap(const QWidget* widget);
// What a finger hits: about nine millimetres on a phone.
[[nodiscard]] ULO_EXPORT int touchHeight(const QWidget* widget);
// The side of an icon, in multiples of the 16 that icons are drawn for.
[[nodiscard]] ULO_EXPORT int iconSize(const QWidget* widget);
// What a measure of the narrow screen's font (13 pixels a line) is in the widget's.
[[nodiscard]] ULO_EXPORT int scaled(const QWidget* widget, int pixels);

// Gives the area a thin scroll bar, which shows the place: fingers drag the content itself.
ULO_EXPORT void makeTouchable(QAbstractScrollArea* area);

}  // namespace ulo
