// A list of labelled rows, to be read. Up and Down go from row to row and scroll through long
// ones; the current row is marked while the list has the focus.
#pragma once

#include "export.h"

#include <QPixmap>
#include <QScrollArea>

#include <vector>

class QLabel;
class ZWrappedText;

// One row: a label and what it labels.
class ULO_EXPORT ZDetailItem : public QWidget {
  Q_OBJECT

public:
  enum Kind : int {
    text = 5,
    textWithIcon = 6,
  };

  ZDetailItem(int kind, const QString& label, QWidget* parent = nullptr);

  // Appends a line of content; the icon stands before its text.
  void appendTextIconRow(const QString& text);
  // `centred`: icon and text stand on one middle line, else their upper edges do.
  void appendTextIconRow(const QString& text, const QPixmap& icon, bool centred);

  [[nodiscard]] int kind() const { return kind_; }
  [[nodiscard]] QString label() const;
  // All lines of the content, with line feeds between them.
  [[nodiscard]] QString content() const;
  // Of the last line that has one.
  [[nodiscard]] QPixmap icon() const { return icon_; }

  // The label beside the content, in a column of so many pixels; above it for 0.
  void setLabelColumn(int width);
  [[nodiscard]] int labelWidth() const;
  // The current row of a view that has the focus.
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
  // `labelColumn`: width of the column of labels on the narrow screen, in pixels. Where the labels
  // don't fit beside their contents, they stand above them.
  ZDetailView(QWidget* parent, const char* name, int labelColumn);

  // Takes the row.
  void addItem(ZDetailItem* item);
  [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
  // Null beyond the last.
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
  // Has screen readers know of the current row.
  void tellCurrent();
  void step(int by);

  int labelColumn_;
  int current_ = 0;
  std::vector<ZDetailItem*> items_;
};
