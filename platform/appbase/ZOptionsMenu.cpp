#include "ZOptionsMenu.h"

#include "look.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace {

// Menu items as high as a finger needs them.
const char menuStyle[] = "QMenu { border: 1px solid palette(mid); background: palette(base); }"
                         "QMenu::item { min-height: %1px; padding: 0 %3px 0 %2px; }"
                         "QMenu::item:selected { background: palette(highlight);"
                         " color: palette(highlighted-text); }"
                         "QMenu::item:disabled { color: palette(placeholder-text); }";

// What the soft keys' keys mean while a menu is open.
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

bool ZOptionsMenu::connectItem(int id, const QObject* receiver, const char* member) {
  const QAction* action = item(id);
  return action != nullptr && connect(action, SIGNAL(triggered()), receiver, member);
}

bool ZOptionsMenu::changeItem(int id, const QString& text) {
  QAction* action = item(id);
  if (action == nullptr)
    return false;
  // An ampersand would mark a letter for the keyboard.
  action->setText(QString(text).replace(u'&', QStringLiteral("&&")));
  return true;
}

void ZOptionsMenu::openAbove(const QWidget* anchor) {
  const QSize size = sizeHint();
  QPoint corner = anchor->mapToGlobal(QPoint(0, 0));
  if (layoutDirection() == Qt::RightToLeft)
    corner.rx() += anchor->width() - size.width();
  popup(corner - QPoint(0, size.height()));
  // Whoever came by keyboard goes on by keyboard.
  if (const QList<QAction*> all = actions(); !all.isEmpty())
    setActiveAction(all.first());
}
