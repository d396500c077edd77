#include "ZSoftKey.h"

#include "ZOptionsMenu.h"
#include "ulo/look.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOptionToolButton>
#include <QToolButton>

#include <algorithm>

namespace {

// A flat key in the bar's colors, with elided text and a frame when it has the focus.
class Key : public QToolButton {
public:
  using QToolButton::QToolButton;

  [[nodiscard]] QSize minimumSizeHint() const override {
    return {ulo::touchHeight(this), ulo::touchHeight(this)};
  }
  [[nodiscard]] QSize sizeHint() const override {
    return {fontMetrics().horizontalAdvance(text()) + 2 * ulo::gap(this), ulo::touchHeight(this)};
  }

  void setSide(Qt::Alignment side) { side_ = side; }

protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    const int room = width() - fontMetrics().horizontalAdvance(text());
    const int margin = std::clamp(room / 2, 2, ulo::gap(this));
    const QRect inside = rect().adjusted(margin, 0, -margin, 0);
    painter.setFont(fittingFont(inside.width()));
    if (isDown())
      painter.fillRect(rect(), palette().color(QPalette::Shadow).darker(130));
    QColor color = palette().color(QPalette::BrightText);
    color.setAlphaF(isEnabled() ? 1.0F : 0.5F);
    painter.setPen(color);
    const QString shown = painter.fontMetrics().elidedText(text(), Qt::ElideRight, inside.width());
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), side_);
    painter.drawText(inside, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
    if (hasFocus())
      painter.drawRect(rect().adjusted(1, 1, -2, -2));
  }

private:
  // Returns a smaller font if the text needs it, as long as it remains legible.
  [[nodiscard]] QFont fittingFont(int room) const {
    constexpr double least = 0.7;
    QFont fitting = font();
    const double wanted = QFontMetricsF(fitting).horizontalAdvance(text());
    if (wanted > room)
      fitting.setPointSizeF(fitting.pointSizeF() * std::max(least, room / (wanted + 1)));
    return fitting;
  }

  Qt::Alignment side_ = Qt::AlignHCenter;
};

struct Place {
  int position;
  int key;
  Qt::Alignment side;
};
// From left to right.
constexpr Place places[] = {{ZSoftKey::left, Qt::Key_F1, Qt::AlignLeft},
                            {ZSoftKey::middle, Qt::Key_F2, Qt::AlignHCenter},
                            {ZSoftKey::right, Qt::Key_F3, Qt::AlignRight}};

}  // namespace

ZSoftKey::ZSoftKey(const QString& style, QWidget* parent, const char* name) : QWidget(parent) {
  setObjectName(QString::fromLatin1(name));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  for (const Place& place : places) {
    if (place.position == middle && style != QLatin1String("CST_3"))
      continue;
    auto* key = new Key(this);
    key->setObjectName(QStringLiteral("softkey%1").arg(place.position));
    key->setFocusPolicy(Qt::TabFocus);
    key->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    key->setSide(place.side);
    key->setEnabled(false);
    keys_[static_cast<std::size_t>(place.position)] = key;
    row->addWidget(key);
  }
}

QToolButton* ZSoftKey::key(int position) const {
  return position >= left && position <= middle ? keys_[static_cast<std::size_t>(position)]
                                                : nullptr;
}

void ZSoftKey::setText(int position, const QString& text) {
  if (QToolButton* button = key(position)) {
    button->setText(text);
    button->setAccessibleName(text);
    button->setEnabled(!text.isEmpty());
    fitKeys();
  }
}

QString ZSoftKey::text(int position) const {
  const QToolButton* button = key(position);
  return button == nullptr ? QString() : button->text();
}

void ZSoftKey::setClickedSlot(int position, const QObject* receiver, const char* member) {
  if (QToolButton* button = key(position)) {
    button->disconnect(SIGNAL(clicked()));
    connect(button, SIGNAL(clicked()), receiver, member);
  }
}

void ZSoftKey::setOptMenu(int position, ZOptionsMenu* menu) {
  if (QToolButton* button = key(position)) {
    button->disconnect(SIGNAL(clicked()));
    connect(button, &QToolButton::clicked, menu, [menu, button] { menu->openAbove(button); });
  }
}

void ZSoftKey::setKeyEnabled(int position, bool enabled) {
  if (QToolButton* button = key(position))
    button->setEnabled(enabled && !button->text().isEmpty());
}

void ZSoftKey::click(int position) {
  if (QToolButton* button = key(position))
    button->click();
}

bool ZSoftKey::handleKey(int pressed) {
  for (const Place& place : places)
    if (place.key == pressed && key(place.position) != nullptr) {
      click(place.position);
      return true;
    }
  return false;
}

void ZSoftKey::paintEvent(QPaintEvent*) {
  QPainter(this).fillRect(rect(), palette().color(QPalette::Shadow));
}

// Gives each key a share of the bar in proportion to its text.
void ZSoftKey::fitKeys() {
  for (QToolButton* key : keys_)
    if (key != nullptr)
      static_cast<QBoxLayout*>(layout())->setStretchFactor(
          key, std::max(key->sizeHint().width(), ulo::touchHeight(this)));
}

void ZSoftKey::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange && layout() != nullptr)
    fitKeys();
  QWidget::changeEvent(event);
}
