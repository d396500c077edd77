#include "ZPopup.h"

#include "ZSoftKey.h"
#include "title_bar.h"
#include "ulo/look.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

ZPopup::ZPopup(const QString& title, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), column_(new QVBoxLayout(this)),
      title_(new ulo::TitleBar(this)), keys_(new ZSoftKey(QStringLiteral("CST_2"), this)) {
  setModal(true);
  setWindowTitle(title);
  column_->setContentsMargins(1, 1, 1, 1);
  column_->setSpacing(0);
  title_->setTitle(title);
  column_->addWidget(title_);
  column_->addWidget(keys_);
  keys_->setClickedSlot(ZSoftKey::left, this, SLOT(accept()));
  keys_->setClickedSlot(ZSoftKey::right, this, SLOT(reject()));
}

void ZPopup::setTitleIcon(const QPixmap& icon) {
  title_->setIcon(icon);
}

QPixmap ZPopup::titleIcon() const {
  return title_->icon();
}

void ZPopup::setContent(QWidget* content) {
  const int margin = 2 * ulo::gap(this);
  auto* scroll = new QScrollArea(this);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidgetResizable(true);
  ulo::makeTouchable(scroll);
  auto* frame = new QWidget;
  auto* inside = new QVBoxLayout(frame);
  inside->setContentsMargins(margin, margin, margin, margin);
  inside->addWidget(content);
  scroll->setWidget(frame);
  column_->insertWidget(1, scroll, 1);
}

void ZPopup::setKeys(const QString& accept, const QString& reject) {
  keys_->setText(ZSoftKey::left, accept);
  keys_->setText(ZSoftKey::right, reject);
}

// As wide as its parent window or the screen allows, up to 320 pixels of the narrow screen, and as
// high as necessary.
void ZPopup::place() {
  const QWidget* behind = parentWidget() != nullptr ? parentWidget()->window() : nullptr;
  const QRect room = behind != nullptr ? behind->geometry() : screen()->availableGeometry();
  const int margin = ulo::gap(this);
  const int width = std::min(room.width() - 2 * margin, ulo::scaled(this, 320));
  const int most = room.height() - 2 * margin;
  int height = 2 + title_->sizeHint().height() + keys_->sizeHint().height();
  if (auto* scroll = findChild<QScrollArea*>(QString(), Qt::FindDirectChildrenOnly)) {
    const QLayout* inside = scroll->widget()->layout();
    height += inside->hasHeightForWidth() ? inside->totalHeightForWidth(width - 2)
                                          : scroll->widget()->sizeHint().height();
    // A scroll bar would take space from a text that fits without it.
    scroll->setVerticalScrollBarPolicy(height <= most ? Qt::ScrollBarAlwaysOff
                                                      : Qt::ScrollBarAsNeeded);
  }
  height = std::min(height, most);
  setFixedSize(width, height);
  move(room.center() - QPoint(width / 2, height / 2));
}

int ZPopup::exec() {
  place();
  return QDialog::exec();
}

void ZPopup::open() {
  place();
  show();
}

void ZPopup::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  painter.setPen(palette().color(QPalette::Shadow));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void ZPopup::keyPressEvent(QKeyEvent* event) {
  if (keys_->handleKey(event->key()))
    return;
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                     event->key() == Qt::Key_Select;
  if (enter)
    keys_->click(ZSoftKey::left);
  else
    QDialog::keyPressEvent(event);
}
