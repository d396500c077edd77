// The bar of two or three keys at the bottom of a screen. Each key responds to touch and to a
// function key of the keyboard: F1 on the left, F2 in the middle, F3 on the right.
#pragma once

#include "ulo/export.h"

#include <QWidget>

#include <array>

class QToolButton;
class ZOptionsMenu;

class ULO_EXPORT ZSoftKey : public QWidget {
  Q_OBJECT

public:
  // Position numbers of the keys.
  enum Position : int { left = 0, right = 1, middle = 2 };

  // `style` is "CST_2", or "CST_3" for a middle key. A key without text is disabled.
  ZSoftKey(const QString& style, QWidget* parent, const char* name = nullptr);

  // Positions that the style does not have are ignored.
  void setText(int position, const QString& text);
  [[nodiscard]] QString text(int position) const;
  // Connects clicks to SLOT(member()), replacing the previous connection.
  void setClickedSlot(int position, const QObject* receiver, const char* member);
  // A click opens the menu above the key. Does not take ownership of the menu.
  void setOptMenu(int position, ZOptionsMenu* menu);
  void setKeyEnabled(int position, bool enabled);
  void click(int position);

  // Clicks the key that a function key belongs to. Returns false for any other keyboard key. Called
  // for keys that the window's other widgets ignored.
  bool handleKey(int key);

protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  [[nodiscard]] QToolButton* key(int position) const;
  void fitKeys();

  std::array<QToolButton*, 3> keys_{};
};
