#include "title_bar.h"

#include "ulo/look.h"

#include <QPainter>
#include <QStyle>

namespace ulo {

TitleBar::TitleBar(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void TitleBar::setTitle(const QString& title) {
  title_ = title.simplified();
  setAccessibleName(title_);
  update();
}

void TitleBar::setIcon(const QPixmap& icon) {
  icon_ = icon;
  update();
}

QSize TitleBar::sizeHint() const {
  return {0, touchHeight(this)};
}

void TitleBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Shadow));
  const int margin = gap(this);
  QRect inside = rect().adjusted(margin, 0, -margin, 0);
  if (!icon_.isNull()) {
    const QSize size = icon_.deviceIndependentSize().toSize();
    const QRect place =
        QStyle::alignedRect(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter, size, inside);
    // Icons are drawn for the background of lists.
    painter.fillRect(place.adjusted(-2, -2, 2, 2), palette().color(QPalette::Base));
    painter.drawPixmap(place.topLeft(), icon_);
    const int taken = size.width() + 2 * margin;
    if (layoutDirection() == Qt::RightToLeft)
      inside.adjust(0, 0, -taken, 0);
    else
      inside.adjust(taken, 0, 0, 0);
  }
  QFont bold = font();
  bold.setBold(true);
  painter.setFont(bold);
  painter.setPen(palette().color(QPalette::BrightText));
  const Qt::Alignment start = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
  painter.drawText(inside, static_cast<int>(start | Qt::AlignVCenter) | Qt::TextSingleLine,
                   painter.fontMetrics().elidedText(title_, Qt::ElideRight, inside.width()));
}

}  // namespace ulo
