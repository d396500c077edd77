#pragma once

#include <QScrollArea>

#include <vector>

class QVBoxLayout;

namespace tasks {

class FormRow;

// Rows of a label and a field each: the label above the field where the screen is narrow, beside
// it where it is wide. The field with the focus is scrolled into view.
class FormRows : public QScrollArea {
  Q_OBJECT

public:
  explicit FormRows(QWidget* parent = nullptr);

  // Takes the field. One that `grows` gets the height that others leave.
  void addRow(const QString& label, QWidget* field, bool grows = false);

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  void reveal(QWidget* field);

  QVBoxLayout* column_;
  std::vector<FormRow*> rows_;
};

}  // namespace tasks
