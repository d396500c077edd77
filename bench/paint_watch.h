#pragma once

#include <QEvent>
#include <QObject>

// Records that a widget was painted.
class PaintWatch : public QObject {
public:
  bool eventFilter(QObject*, QEvent* event) override {
    painted = painted || event->type() == QEvent::Paint;
    return false;
  }
  bool painted = false;
};
