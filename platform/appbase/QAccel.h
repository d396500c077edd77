// Keyboard accelerators with Qt 2 key codes, implemented with Qt 6 shortcuts.
#pragma once

#include "ulo/export.h"

#include <QObject>

class QWidget;

class ULO_EXPORT QAccel : public QObject {
  Q_OBJECT

public:
  // Active while the window of `parent` is active. `parent` becomes the owner.
  explicit QAccel(QWidget* parent);

  // Adds a key by its Qt 2 code: a function key (0x1030, which is F1, to 0x1052, F35) or a
  // character code. Returns the ID passed to `activated`: `id`, or a new one if `id` is -1.
  int insertItem(int key, int id = -1);

Q_SIGNALS:
  void activated(int id);

private:
  int nextId_ = 0;
};
