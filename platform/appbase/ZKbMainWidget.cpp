#include "ZKbMainWidget.h"

#include "ZSoftKey.h"
#include "title_bar.h"
#include "ulo/look.h"

#include <QKeyEvent>
#include <QVBoxLayout>

ZKbMainWidget::ZKbMainWidget(QWidget* parent, const char* name, unsigned int flags)
    : QWidget(parent, static_cast<Qt::WindowFlags>(flags)), column_(new QVBoxLayout(this)),
      bar_(new ulo::TitleBar(this)) {
  setObjectName(QString::fromLatin1(name));
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
  column_->addWidget(bar_);
  column_->addStretch(0);
}

void ZKbMainWidget::setAppTitle(const QString& title) {
  title_ = title;
  bar_->setTitle(title);
  setWindowTitle(title.simplified());
}

void ZKbMainWidget::setContentWidget(QWidget* content) {
  delete content_;
  content_ = content;
  column_->insertWidget(1, content, 1);
}

void ZKbMainWidget::setCSTWidget(ZSoftKey* keys) {
  delete keys_;
  keys_ = keys;
  column_->addWidget(keys);
}

QSize ZKbMainWidget::sizeHint() const {
  return {ulo::scaled(this, 240), ulo::scaled(this, 320)};
}

void ZKbMainWidget::keyPressEvent(QKeyEvent* event) {
  if (keys_ == nullptr || !keys_->handleKey(event->key()))
    QWidget::keyPressEvent(event);
}
