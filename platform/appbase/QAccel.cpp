#include "QAccel.h"

#include <QShortcut>
#include <QWidget>

#include <algorithm>

namespace {

// Qt 2's code of F1.
constexpr int firstFunctionKey = 0x1030;
constexpr int functionKeys = 35;

int modernKey(int key) {
  return key >= firstFunctionKey && key < firstFunctionKey + functionKeys
             ? Qt::Key_F1 + (key - firstFunctionKey)
             : key;
}

}  // namespace

QAccel::QAccel(QWidget* parent) : QObject(parent) {}

int QAccel::insertItem(int key, int id) {
  const int given = id == -1 ? nextId_ : id;
  nextId_ = std::max(nextId_, given + 1);
  auto* shortcut = new QShortcut(QKeySequence(modernKey(key)), qobject_cast<QWidget*>(parent()));
  connect(shortcut, &QShortcut::activated, this, [this, given] { Q_EMIT activated(given); });
  connect(this, &QObject::destroyed, shortcut, &QObject::deleteLater);
  return given;
}
