#pragma once

#include <QIcon>

class QPainter;
class QWidget;

namespace tasks {

// Gives the fields and buttons inside `parent` one look: framed, by the palette, the one with the
// focus marked.
void styleFields(QWidget* parent);

// An open arrow head in the middle of `place`, as large as a letter of the widget, in its colour of
// text.
void drawArrow(QPainter& painter, const QRect& place, Qt::ArrowType type, const QWidget* widget);
// The same as an icon.
[[nodiscard]] QIcon arrowIcon(Qt::ArrowType type, const QWidget* widget);

}  // namespace tasks
