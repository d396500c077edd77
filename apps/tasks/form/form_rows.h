#pragma once

#include <QScrollArea>

#include <vector>

class QVBoxLayout;

namespace tasks {

class FormRow;

// Rows of a label and a field. The label is above the field on narrow screens and beside it on wide
// ones. Scrolls to the field with the focus.
class FormRows : public QScrollArea {
  Q_OBJECT

public:
  explicit FormRows(QWidget* parent = nullptr);

  // Takes ownership of the field. A field that `grows` gets the remaining height.
  void addRow(const QString& label, QWidget* field, bool grows = false);

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  void reveal(QWidget* field);

  QVBoxLayout* column_;
  std::vector<FormRow*> rows_;
};

}  // namespace tasks
