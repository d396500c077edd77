// Dialogs: a title with an icon, a content, soft keys. As wide as the screen where that is narrow.
#pragma once

#include "export.h"

#include <QDialog>
#include <QPixmap>

class QVBoxLayout;
class ZSoftKey;
namespace ulo {
class TitleBar;
}

// The frame that all dialogs share. F1 or Enter accepts, F3 or Escape rejects.
class ULO_EXPORT ZPopup : public QDialog {
  Q_OBJECT

public:
  explicit ZPopup(const QString& title, QWidget* parent = nullptr);

  void setTitleIcon(const QPixmap& icon);
  [[nodiscard]] QPixmap titleIcon() const;
  // What the dialog is about, between title and keys; scrolls where it is too high. Taken over.
  void setContent(QWidget* content);
  // Empty for a key that does nothing.
  void setKeys(const QString& accept, const QString& reject);
  [[nodiscard]] ZSoftKey* keys() const { return keys_; }

  // Shows the dialog and returns once the user is done with it.
  int exec() override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void place();

  QVBoxLayout* column_;
  ulo::TitleBar* title_;
  ZSoftKey* keys_;
};
