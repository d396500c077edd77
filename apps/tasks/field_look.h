#pragma once

#include <QIcon>

class QPainter;
class QWidget;

namespace tasks {

// Styles the fields and buttons inside `parent` alike: framed, in the colors of the palette, with
// the focus marked.
void styleFields(QWidget* parent);

// Draws an open arrow head in the middle of `place`, as large as a letter of the widget, in its
// text color.
void drawArrow(QPainter& painter, const QRect& place, Qt::ArrowType type, const QWidget* widget);
// The same as an icon.
[[nodiscard]] QIcon arrowIcon(Qt::ArrowType type, const QWidget* widget);

}  // namespace tasks
