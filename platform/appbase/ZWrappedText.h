// Plain text on as many lines as it needs, wrapped between words, or within a word that is too
// long. Markup and control characters are not interpreted. The text direction is that of its
// letters.
#pragma once

#include "ulo/export.h"

#include <QTextLayout>
#include <QWidget>

class ULO_EXPORT ZWrappedText : public QWidget {
public:
  explicit ZWrappedText(const QString& text, QWidget* parent = nullptr);

  [[nodiscard]] QString text() const { return text_; }
  void setText(const QString& text);
  void setColor(QPalette::ColorRole role);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override;
  // Width of the text on a single line, in pixels.
  [[nodiscard]] int widthOnOneLine() const;

protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  void layOut(int width) const;

  QString text_;
  QPalette::ColorRole color_ = QPalette::WindowText;
  mutable QTextLayout layout_;
  mutable int width_ = -1;  // the width that `layout_` is valid for
  mutable int height_ = 0;
};
