#include "ZDetailView.h"

#include "ZWrappedText.h"
#include "detail_interface.h"
#include "ulo/look.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>

// The lines of a row's content.
class ZDetailItem::Rows : public QWidget {
public:
  explicit Rows(QWidget* parent) : QWidget(parent), column_(new QVBoxLayout(this)) {
    column_->setContentsMargins(0, 0, 0, 0);
    column_->setSpacing(0);
  }

  void append(const QString& text, const QPixmap& icon, Qt::Alignment alignment) {
    auto* line = new QHBoxLayout;
    line->setSpacing(ulo::gap(this));
    if (!icon.isNull()) {
      auto* picture = new QLabel(this);
      picture->setPixmap(icon);
      line->addWidget(picture, 0, alignment);
    }
    auto* words = new ZWrappedText(text, this);
    line->addWidget(words, 1, icon.isNull() ? Qt::Alignment() : alignment);
    column_->addLayout(line);
    texts_.append(text);
  }
  [[nodiscard]] QString text() const { return texts_.join(u'\n'); }

private:
  QVBoxLayout* column_;
  QStringList texts_;
};

ZDetailItem::ZDetailItem(int kind, const QString& label, QWidget* parent)
    : QWidget(parent), kind_(kind), label_(new ZWrappedText(label, this)), rows_(new Rows(this)) {
  auto* line = new QBoxLayout(QBoxLayout::LeftToRight, this);
  const int margin = ulo::gap(this);
  line->setContentsMargins(2 * margin, margin, 2 * margin, margin);
  line->setSpacing(margin);
  label_->setColor(QPalette::PlaceholderText);
  line->addWidget(label_);
  line->addWidget(rows_, 1);
}

void ZDetailItem::appendTextIconRow(const QString& text) {
  appendTextIconRow(text, {}, true);
}

void ZDetailItem::appendTextIconRow(const QString& text, const QPixmap& icon, bool centered) {
  rows_->append(text, icon, centered ? Qt::AlignVCenter : Qt::AlignTop);
  if (!icon.isNull())
    icon_ = icon;
  setAccessibleName(label() + u' ' + content());
}

QString ZDetailItem::label() const {
  return label_->text();
}

QString ZDetailItem::content() const {
  return rows_->text();
}

int ZDetailItem::labelWidth() const {
  return label_->widthOnOneLine() + 1;
}

void ZDetailItem::setLabelColumn(int width) {
  auto* line = static_cast<QBoxLayout*>(layout());
  line->setDirection(width > 0 ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  label_->setMinimumWidth(width);
  label_->setMaximumWidth(width > 0 ? width : QWIDGETSIZE_MAX);
}

void ZDetailItem::setCurrent(bool current) {
  current_ = current;
  label_->setColor(current ? QPalette::HighlightedText : QPalette::PlaceholderText);
  update();
}

void ZDetailItem::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(current_ ? QPalette::Highlight : QPalette::Base));
  if (current_) {
    const int bar = ulo::gap(this) / 2;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    painter.fillRect(mirrored ? width() - bar : 0, 0, bar, height(),
                     palette().color(QPalette::Link));
  }
  painter.setPen(palette().color(QPalette::Button));
  painter.drawLine(0, height() - 1, width(), height() - 1);
}

ZDetailView::ZDetailView(QWidget* parent, const char* name, int labelColumn)
    : QScrollArea(parent), labelColumn_(labelColumn) {
  ulo::describeDetailViews();
  setObjectName(QString::fromLatin1(name));
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setFocusPolicy(Qt::StrongFocus);
  auto* list = new QWidget;
  list->setBackgroundRole(QPalette::Base);
  list->setAutoFillBackground(true);
  auto* column = new QVBoxLayout(list);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addStretch(1);
  setWidget(list);
  ulo::makeTouchable(this);
}

void ZDetailView::addItem(ZDetailItem* item) {
  insertItem(count(), item);
}

void ZDetailView::insertItem(int index, ZDetailItem* item) {
  static_cast<QVBoxLayout*>(widget()->layout())->insertWidget(index, item);
  items_.insert(items_.begin() + index, item);
  item->installEventFilter(this);
  arrange();
  markCurrent();
}

ZDetailItem* ZDetailView::item(int index) const {
  return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)] : nullptr;
}

// Labels get the requested column, or a wider one if they are longer, up to two fifths of the
// width.
void ZDetailView::arrange() {
  int widest = ulo::scaled(this, labelColumn_);
  for (const ZDetailItem* item : items_)
    widest = std::max(widest, item->labelWidth());
  const int column = widest * 5 <= viewport()->width() * 2 ? widest : 0;
  for (ZDetailItem* item : items_)
    item->setLabelColumn(column);
}

void ZDetailView::markCurrent() {
  for (int row = 0; row < count(); ++row)
    item(row)->setCurrent(row == current_ && hasFocus());
}

void ZDetailView::tellCurrent() {
  ZDetailItem* row = item(current_);
  if (row == nullptr || !hasFocus() || !QAccessible::isActive())
    return;
  QAccessibleEvent event(row, QAccessible::Focus);
  QAccessible::updateAccessibility(&event);
}

void ZDetailView::resizeEvent(QResizeEvent* event) {
  arrange();
  QScrollArea::resizeEvent(event);
}

// Scrolls to the end of the current row first, and then moves to the next one.
void ZDetailView::step(int by) {
  const ZDetailItem* row = item(current_);
  if (row == nullptr)
    return;
  QScrollBar* bar = verticalScrollBar();
  const int top = bar->value();
  const int bottom = top + viewport()->height();
  const int line = 3 * QFontMetrics(font()).height();
  if (by > 0 && row->geometry().bottom() >= bottom) {
    bar->setValue(std::min(top + line, row->geometry().bottom() + 1 - viewport()->height()));
    return;
  }
  if (by < 0 && row->y() < top) {
    bar->setValue(std::max(top - line, row->y()));
    return;
  }
  const ZDetailItem* next = item(current_ + by);
  if (next == nullptr)
    return;
  current_ += by;
  markCurrent();
  tellCurrent();
  const QRect place = next->geometry();
  if (by > 0 && place.bottom() >= bottom)
    bar->setValue(std::min(place.y(), place.bottom() + 1 - viewport()->height()));
  else if (by < 0 && place.y() < top)
    bar->setValue(std::max(place.y(), place.bottom() + 1 - viewport()->height()));
}

void ZDetailView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Up:
    step(-1);
    break;
  case Qt::Key_Down:
    step(1);
    break;
  case Qt::Key_PageUp:
  case Qt::Key_PageDown:
  case Qt::Key_Home:
  case Qt::Key_End:
    QScrollArea::keyPressEvent(event);
    break;
  default:
    event->ignore();
  }
}

void ZDetailView::focusInEvent(QFocusEvent* event) {
  QScrollArea::focusInEvent(event);
  markCurrent();
  // After Qt's own notification for the view.
  QTimer::singleShot(0, this, [this] { tellCurrent(); });
}

void ZDetailView::focusOutEvent(QFocusEvent* event) {
  QScrollArea::focusOutEvent(event);
  markCurrent();
}

bool ZDetailView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) {
    const auto found = std::find(items_.begin(), items_.end(), watched);
    if (found != items_.end()) {
      current_ = static_cast<int>(found - items_.begin());
      setFocus(Qt::MouseFocusReason);
      markCurrent();
      tellCurrent();
    }
  }
  return QScrollArea::eventFilter(watched, event);
}
