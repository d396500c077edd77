// Dialogs: a title with an icon, content and soft keys. As wide as the screen if that is narrow.
#pragma once

#include "ulo/export.h"

#include <QDialog>
#include <QPixmap>

class QVBoxLayout;
class ZSoftKey;
namespace ulo {
class TitleBar;
}

// The base of all dialogs. F1 or Enter accepts, F3 or Escape rejects.
class ULO_EXPORT ZPopup : public QDialog {
  Q_OBJECT

public:
  explicit ZPopup(const QString& title, QWidget* parent = nullptr);

  void setTitleIcon(const QPixmap& icon);
  [[nodiscard]] QPixmap titleIcon() const;
  // Sets the content between title and keys and takes ownership of it. It scrolls if too high.
  void setContent(QWidget* content);
  // A key with an empty text is disabled.
  void setKeys(const QString& accept, const QString& reject);
  [[nodiscard]] ZSoftKey* keys() const { return keys_; }

  // Shows the dialog and returns when the user closes it.
  int exec() override;
  // Shows the dialog and returns at once.
  void open() override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void place();

  QVBoxLayout* column_;
  ulo::TitleBar* title_;
  ZSoftKey* keys_;
};
