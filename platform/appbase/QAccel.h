// Keyboard accelerators with Qt 2's key codes, over Qt 6's shortcuts.
#pragma once

#include "export.h"

#include <QObject>

class QWidget;

class ULO_EXPORT QAccel : public QObject {
  Q_OBJECT

public:
  // Works while the window of `parent`, which owns it, is active.
  explicit QAccel(QWidget* parent);

  // Adds a key by its Qt 2 code: a function key (0x1030, which is F1, to 0x1052, F35) or the code
  // of a character. Gives the id that `activated` carries: `id`, or a new one for -1.
  int insertItem(int key, int id = -1);

Q_SIGNALS:
  void activated(int id);

private:
  int nextId_ = 0;
};
