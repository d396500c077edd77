// A read-only list of labeled rows. Up and Down move between rows and scroll through long ones;
// the current row is highlighted while the list has the focus.
#pragma once

#include "ulo/export.h"

#include <QPixmap>
#include <QScrollArea>

#include <vector>

class QLabel;
class ZWrappedText;

// One row: a label and its content.
class ULO_EXPORT ZDetailItem : public QWidget {
  Q_OBJECT

public:
  enum Kind : int {
    text = 5,
    textWithIcon = 6,
  };

  ZDetailItem(int kind, const QString& label, QWidget* parent = nullptr);

  // Appends a line of content; the icon precedes its text.
  void appendTextIconRow(const QString& text);
  // `centered` aligns icon and text vertically at their middle instead of their top edges.
  void appendTextIconRow(const QString& text, const QPixmap& icon, bool centered);

  [[nodiscard]] int kind() const { return kind_; }
  [[nodiscard]] QString label() const;
  // All lines of the content, separated by line feeds.
  [[nodiscard]] QString content() const;
  // The icon of the last line that has one.
  [[nodiscard]] QPixmap icon() const { return icon_; }

  // Puts the label beside the content in a column `width` pixels wide, or above the content for 0.
  void setLabelColumn(int width);
  [[nodiscard]] int labelWidth() const;
  // Marks the row as the current one of a view with focus.
  void setCurrent(bool current);
  [[nodiscard]] bool isCurrent() const { return current_; }

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  class Rows;

  int kind_;
  ZWrappedText* label_;
  Rows* rows_;
  QPixmap icon_;
  bool current_ = false;
};

class ULO_EXPORT ZDetailView : public QScrollArea {
  Q_OBJECT

public:
  // `labelColumn` is the width of the label column on the narrow screen, in pixels. If the labels
  // do not fit beside their contents, they are placed above them.
  ZDetailView(QWidget* parent, const char* name, int labelColumn);

  // Appends the row and takes ownership of it.
  void addItem(ZDetailItem* item);
  // The same, but in front of the row `index`, from 0 to count().
  void insertItem(int index, ZDetailItem* item);
  [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
  // Returns null if there is no such row.
  [[nodiscard]] ZDetailItem* item(int index) const;
  [[nodiscard]] int currentRow() const { return current_; }

protected:
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void arrange();
  void markCurrent();
  // Notifies screen readers of the current row.
  void tellCurrent();
  void step(int by);

  int labelColumn_;
  int current_ = 0;
  std::vector<ZDetailItem*> items_;
};
