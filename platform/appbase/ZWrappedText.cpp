#include "ZWrappedText.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// Converts all kinds of line ends to line separators and control characters to blanks.
QString presentable(const QString& text) {
  QString result;
  result.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
      continue;
    const bool lineEnd = c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator;
    result += lineEnd                                ? QChar(QChar::LineSeparator)
              : c.category() == QChar::Other_Control ? QChar(u' ')
                                                     : c;
  }
  return result;
}

}  // namespace

ZWrappedText::ZWrappedText(const QString& text, QWidget* parent) : QWidget(parent) {
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  setText(text);
}

void ZWrappedText::setText(const QString& text) {
  text_ = text;
  setAccessibleName(text);
  layout_.setText(presentable(text));
  layout_.setCacheEnabled(true);
  width_ = -1;
  updateGeometry();
  update();
}

void ZWrappedText::setColor(QPalette::ColorRole role) {
  color_ = role;
  update();
}

void ZWrappedText::layOut(int width) const {
  if (width == width_)
    return;
  width_ = width;
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setTextDirection(layout_.text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
  // Align the text at the side where its direction begins.
  option.setAlignment(option.textDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft);
  layout_.setTextOption(option);
  layout_.setFont(font());
  layout_.beginLayout();
  qreal y = 0;
  for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
    line.setLineWidth(std::max(1, width));
    line.setPosition({0, y});
    y += line.height();
  }
  layout_.endLayout();
  height_ = static_cast<int>(std::ceil(std::max<qreal>(y, fontMetrics().height())));
}

int ZWrappedText::heightForWidth(int width) const {
  layOut(width);
  return height_;
}

int ZWrappedText::widthOnOneLine() const {
  return fontMetrics().horizontalAdvance(layout_.text());
}

QSize ZWrappedText::sizeHint() const {
  const int width = std::min(widthOnOneLine() + 1, fontMetrics().averageCharWidth() * 40);
  return {width, heightForWidth(width)};
}

QSize ZWrappedText::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 4, fontMetrics().height()};
}

void ZWrappedText::paintEvent(QPaintEvent* event) {
  layOut(width());
  QPainter painter(this);
  painter.setPen(palette().color(color_));
  layout_.draw(&painter, {0, 0}, {}, event->rect());
}

void ZWrappedText::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange) {
    width_ = -1;
    updateGeometry();
  }
  QWidget::changeEvent(event);
}
