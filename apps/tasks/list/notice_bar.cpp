#include "list/notice_bar.h"

#include "ZWrappedText.h"
#include "screen_reader.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QAccessibleWidget>
#include <QBoxLayout>
#include <QPainter>
#include <QToolButton>

#include <chrono>
#include <utility>

namespace tasks {

namespace {

// Screen readers speak an alert when it is shown.
QAccessibleInterface* alertOf(const QString&, QObject* object) {
  auto* bar = qobject_cast<NoticeBar*>(object);
  return bar == nullptr ? nullptr : new QAccessibleWidget(bar, QAccessible::AlertMessage);
}

}  // namespace

NoticeBar::NoticeBar(QWidget* parent)
    : QWidget(parent), line_(new QBoxLayout(QBoxLayout::LeftToRight, this)),
      text_(new ZWrappedText(QString(), this)), undo_(new QToolButton(this)) {
  QAccessible::installFactory(alertOf);
  const int gap = ulo::gap(this);
  line_->setContentsMargins(2 * gap, gap / 2, gap, gap / 2);
  line_->setSpacing(gap);
  line_->addWidget(text_, 1);
  line_->addWidget(undo_);
  undo_->setText(ulo::text("TXT_RID_STANDARD_UNDO", "Undo"));
  undo_->setMinimumHeight(ulo::touchHeight(this));
  undo_->setFocusPolicy(Qt::TabFocus);
  text_->setColor(QPalette::BrightText);
  text_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  time_.setObjectName(QStringLiteral("message"));
  time_.setSingleShot(true);
  time_.setInterval(std::chrono::seconds(5));
  connect(&time_, &QTimer::timeout, this, &QWidget::hide);
  connect(undo_, &QToolButton::clicked, this, &NoticeBar::undoAsked);
  hide();
}

void NoticeBar::showText(const QString& text, bool isUndoable) {
  text_->setText(text);
  setAccessibleName(text);
  undo_->setVisible(isUndoable);
  arrange();
  if (isVisible())
    ulo::announce(this, text);
  show();
}

// Puts the button below a text that would get less than half of the bar.
void NoticeBar::arrange() {
  const int beside = undo_->isHidden() ? 0 : undo_->sizeHint().width();
  const bool fits = text_->widthOnOneLine() + beside + 4 * ulo::gap(this) <= width();
  line_->setDirection(fits || beside < width() / 3 ? QBoxLayout::LeftToRight
                                                   : QBoxLayout::TopToBottom);
  // A text of several lines gets the height that it needs.
  line_->setAlignment(text_, fits ? Qt::AlignVCenter : Qt::Alignment());
}

void NoticeBar::resizeEvent(QResizeEvent* event) {
  arrange();
  QWidget::resizeEvent(event);
}

void NoticeBar::showUndoable(const QString& text) {
  time_.stop();
  showText(text, true);
}

void NoticeBar::showMessage(const QString& text) {
  if (!isHidden() && !undo_->isHidden()) {
    next_ = text;
    return;
  }
  time_.stop();
  showText(text, false);
  if (isVisible())
    time_.start();
}

// The screen may be shown later.
void NoticeBar::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  ulo::announce(this, text_->text());
  if (undo_->isHidden() && !time_.isActive())
    time_.start();
}

void NoticeBar::hideUndoable() {
  if (!undo_->isHidden())
    hide();
  if (const QString next = std::exchange(next_, {}); !next.isEmpty())
    showMessage(next);
}

void NoticeBar::paintEvent(QPaintEvent*) {
  QPainter(this).fillRect(rect(), palette().color(QPalette::Shadow).darker(130));
}

}  // namespace tasks
