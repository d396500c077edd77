#include "notice_bar.h"

#include "ZWrappedText.h"
#include "look.h"
#include "texts.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

#include <chrono>

namespace tasks {

NoticeBar::NoticeBar(QWidget* parent)
    : QWidget(parent), text_(new ZWrappedText(QString(), this)), undo_(new QToolButton(this)) {
  auto* line = new QHBoxLayout(this);
  const int gap = ulo::gap(this);
  line->setContentsMargins(2 * gap, gap / 2, gap, gap / 2);
  line->setSpacing(gap);
  line->addWidget(text_, 1, Qt::AlignVCenter);
  line->addWidget(undo_);
  undo_->setText(ulo::text("TXT_RID_STANDARD_UNDO", "Undo"));
  undo_->setMinimumHeight(ulo::touchHeight(this));
  undo_->setFocusPolicy(Qt::TabFocus);
  text_->setColour(QPalette::BrightText);
  text_->setMinimumHeight(text_->fontMetrics().height());
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
  show();
}

void NoticeBar::showUndoable(const QString& text) {
  time_.stop();
  showText(text, true);
}

void NoticeBar::showMessage(const QString& text) {
  showText(text, false);
  time_.start();
}

void NoticeBar::hideUndoable() {
  if (undo_->isVisibleTo(this))
    hide();
}

void NoticeBar::paintEvent(QPaintEvent*) {
  QPainter(this).fillRect(rect(), palette().color(QPalette::Shadow).darker(130));
}

}  // namespace tasks
