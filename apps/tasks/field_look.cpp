#include "field_look.h"

#include "ulo/look.h"

#include <QPainter>
#include <QWidget>

namespace tasks {

namespace {

// %1 and %2 are the padding of a text without and with the focus, %3 the radius of the corners, %4
// the height of a row in a list of choices, %5 the width of the part of a field that opens its
// list.
constexpr char fieldStyle[] =
    "QLineEdit, QPlainTextEdit, QPushButton, QComboBox {"
    " border: 1px solid palette(mid); border-radius: %3px; padding: 0 %1px;"
    " background: palette(base); color: palette(text);"
    " selection-background-color: palette(highlight);"
    " selection-color: palette(highlighted-text); }"
    "QPushButton, QComboBox { background: palette(button); text-align: left; }"
    "QLineEdit:focus, QPlainTextEdit:focus, QPushButton:focus, QComboBox:focus {"
    " border: 2px solid palette(link); padding: 0 %2px; }"
    "QPushButton:pressed { background: palette(highlight); }"
    "QPlainTextEdit { padding: 0; }"
    "QComboBox { combobox-popup: 0; }"  // a list as wide as the field
    "QComboBox::drop-down { border: none; width: %5px; }"
    "QComboBox QAbstractItemView { border: 1px solid palette(mid); background: palette(base);"
    " selection-background-color: palette(highlight);"
    " selection-color: palette(highlighted-text); }"
    "QComboBox QAbstractItemView::item { min-height: %4px; }";

}  // namespace

void styleFields(QWidget* parent) {
  const int padding = ulo::gap(parent);
  parent->setStyleSheet(QString::fromLatin1(fieldStyle)
                            .arg(padding)
                            .arg(padding - 1)
                            .arg(padding)
                            .arg(ulo::touchHeight(parent))
                            .arg(ulo::iconSize(parent) + padding));
}

void drawArrow(QPainter& painter, const QRect& place, Qt::ArrowType type, const QWidget* widget) {
  const qreal half = widget->fontMetrics().xHeight() / 2.0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(widget->palette().color(QPalette::Text), half / 2, Qt::SolidLine,
                      Qt::RoundCap, Qt::RoundJoin));
  painter.translate(QRectF(place).center());
  painter.rotate(type == Qt::DownArrow ? 90 : type == Qt::LeftArrow ? 180 : 0);
  const QPointF head[] = {{-half / 2, -half}, {half / 2, 0}, {-half / 2, half}};
  painter.drawPolyline(head, 3);
  painter.restore();
}

QIcon arrowIcon(Qt::ArrowType type, const QWidget* widget) {
  const int side = ulo::iconSize(widget);
  const qreal ratio = widget->devicePixelRatioF();
  QPixmap picture(QSize(side, side) * ratio);
  picture.setDevicePixelRatio(ratio);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  drawArrow(painter, QRect(0, 0, side, side), type, widget);
  return picture;
}

}  // namespace tasks
