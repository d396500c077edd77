#include "ZOptionsMenu.h"

#include "ulo/look.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace {

// Menu items have the height of a touch target.
const char menuStyle[] = "QMenu { border: 1px solid palette(mid); background: palette(base); }"
                         "QMenu::item { min-height: %1px; padding: 0 %3px 0 %2px; }"
                         "QMenu::item:selected { background: palette(highlight);"
                         " color: palette(highlighted-text); }"
                         "QMenu::item:disabled { color: palette(placeholder-text); }";

// Handles the function keys of soft keys while a menu is open.
class KeysInMenu : public QObject {
public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::KeyPress)
      return false;
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_F1:
      return press(watched, Qt::Key_Return);
    case Qt::Key_F3:
    case Qt::Key_Back:
      return press(watched, Qt::Key_Escape);
    default:
      return false;
    }
  }

private:
  static bool press(QObject* menu, Qt::Key key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(menu, &press);
    return true;
  }
};

}  // namespace

ZOptMenuParser::~ZOptMenuParser() = default;

ZOptionsMenu::ZOptionsMenu(QWidget* parent, const char* name, unsigned int flags, int,
                           std::unique_ptr<ZOptMenuParser> parser, const QString& menu)
    : QMenu(parent), parser_(std::move(parser)) {
  setObjectName(QString::fromLatin1(name));
  setWindowFlags(windowFlags() | static_cast<Qt::WindowFlags>(flags));
  setStyleSheet(QString::fromLatin1(menuStyle)
                    .arg(ulo::touchHeight(this))
                    .arg(2 * ulo::gap(this))
                    .arg(6 * ulo::gap(this)));
  installEventFilter(new KeysInMenu(this));
  QValueList<ZOptMenuItem> items;
  parser_->fillItems(items, menu);
  for (const ZOptMenuItem& item : items) {
    ids_.append(item.id);
    items_.insert(item.id, menuUnder(item.parent)->addAction(item.text));
  }
}

ZOptionsMenu::~ZOptionsMenu() = default;

QMenu* ZOptionsMenu::menuUnder(int id) {
  QAction* heading = item(id);
  if (heading == nullptr)
    return this;
  if (heading->menu() == nullptr) {
    auto* menu = new QMenu(this);
    menu->installEventFilter(new KeysInMenu(menu));
    heading->setMenu(menu);
  }
  return heading->menu();
}

QValueList<int> ZOptionsMenu::getAllItemIds() const {
  return ids_;
}

QAction* ZOptionsMenu::item(int id) const {
  return items_.value(id);
}

void ZOptionsMenu::showItem(int id, bool shown) {
  if (QAction* action = item(id))
    action->setVisible(shown);
  if (QAction* reason = reasons_.value(id))
    reason->setVisible(shown);
}

void ZOptionsMenu::enableItem(int id, bool enabled, const QString& why) {
  QAction* action = item(id);
  if (action == nullptr)
    return;
  action->setEnabled(enabled);
  delete reasons_.take(id);
  if (enabled || why.isEmpty())
    return;
  auto* menu = qobject_cast<QMenu*>(action->parent());
  const QList<QAction*> all = menu->actions();
  auto* reason = new QAction(QString(why).replace(u'&', QStringLiteral("&&")), menu);
  reason->setEnabled(false);
  reason->setVisible(action->isVisible());
  QFont weak = font();
  weak.setItalic(true);
  reason->setFont(weak);
  menu->insertAction(all.value(all.indexOf(action) + 1), reason);
  reasons_.insert(id, reason);
}

void ZOptionsMenu::checkItem(int id, bool checked) {
  if (QAction* action = item(id)) {
    action->setCheckable(true);
    action->setChecked(checked);
  }
}

bool ZOptionsMenu::connectItem(int id, const QObject* receiver, const char* member) {
  const QAction* action = item(id);
  return action != nullptr && connect(action, SIGNAL(triggered()), receiver, member);
}

bool ZOptionsMenu::changeItem(int id, const QString& text) {
  QAction* action = item(id);
  if (action == nullptr)
    return false;
  // An ampersand would mark a mnemonic.
  action->setText(QString(text).replace(u'&', QStringLiteral("&&")));
  return true;
}

void ZOptionsMenu::openAbove(const QWidget* anchor) {
  Q_EMIT opening();
  const QSize size = sizeHint();
  QPoint corner = anchor->mapToGlobal(QPoint(0, 0));
  if (layoutDirection() == Qt::RightToLeft)
    corner.rx() += anchor->width() - size.width();
  popup(corner - QPoint(0, size.height()));
  // Select the first item for keyboard users.
  const QList<QAction*> all = actions();
  const auto first = std::find_if(all.begin(), all.end(), [](const QAction* action) {
    return action->isVisible() && action->isEnabled();
  });
  if (first == all.end())
    return;
  setActiveAction(*first);
  // Do not open its sub-menu yet.
  if (QMenu* under = (*first)->menu())
    under->hide();
}
