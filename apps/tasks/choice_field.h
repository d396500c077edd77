#pragma once

#include <QComboBox>

namespace tasks {

// A field that shows one of several choices and opens their list for Enter or a touch. Up and Down
// go to the field before and behind; dragging over it changes nothing.
class ChoiceField : public QComboBox {
public:
  explicit ChoiceField(QWidget* parent = nullptr);

  [[nodiscard]] QSize minimumSizeHint() const override;

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

// Status and priority: each choice's data is the task's code.
[[nodiscard]] ChoiceField* newStatusField(QWidget* parent);
[[nodiscard]] ChoiceField* newPriorityField(QWidget* parent);

}  // namespace tasks
