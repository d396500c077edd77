#pragma once

#include <QPixmap>
#include <QWidget>

namespace ulo {

// The title bar of screens and dialogs: an icon and one line of text, elided if too long.
class TitleBar : public QWidget {
public:
  explicit TitleBar(QWidget* parent);

  void setTitle(const QString& title);
  void setIcon(const QPixmap& icon);
  [[nodiscard]] const QPixmap& icon() const { return icon_; }
  [[nodiscard]] QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  QString title_;
  QPixmap icon_;
};

}  // namespace ulo
