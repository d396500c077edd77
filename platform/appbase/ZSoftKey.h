// The bar of two or three keys at the bottom of a screen. Each answers to touch and to its key of
// the keyboard: F1 on the left, F2 in the middle, F3 on the right.
#pragma once

#include "export.h"

#include <QWidget>

#include <array>

class QToolButton;
class ZOptionsMenu;

class ULO_EXPORT ZSoftKey : public QWidget {
  Q_OBJECT

public:
  // Where a key is, by its position number.
  enum Position : int { left = 0, right = 1, middle = 2 };

  // `style` is "CST_2" or, with a key in the middle, "CST_3". A key without a text can't be used.
  ZSoftKey(const QString& style, QWidget* parent, const char* name = nullptr);

  // Positions that the style does not have are ignored.
  void setText(int position, const QString& text);
  [[nodiscard]] QString text(int position) const;
  // What a click calls, as SLOT(member()), in place of what it called before.
  void setClickedSlot(int position, const QObject* receiver, const char* member);
  // A click opens the menu above the key. The menu stays its owner's.
  void setOptMenu(int position, ZOptionsMenu* menu);
  void setKeyEnabled(int position, bool enabled);
  void click(int position);

  // Takes the function keys that the window's other widgets left; false for any other key.
  bool handleKey(int key);

protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  [[nodiscard]] QToolButton* key(int position) const;
  void fitKeys();

  std::array<QToolButton*, 3> keys_{};
};
