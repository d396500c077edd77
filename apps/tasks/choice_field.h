#pragma once

#include <QComboBox>

namespace tasks {

// A field that shows one of several choices. Enter or a touch opens their list, Up and Down move to
// the neighboring fields, and the wheel changes nothing.
class ChoiceField : public QComboBox {
public:
  explicit ChoiceField(QWidget* parent = nullptr);

  [[nodiscard]] QSize minimumSizeHint() const override;
  void showPopup() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

// Fields for the status and the priority. The data of a choice is its ulo::Status or ulo::Priority,
// as a number.
[[nodiscard]] ChoiceField* newStatusField(QWidget* parent);
[[nodiscard]] ChoiceField* newPriorityField(QWidget* parent);

}  // namespace tasks
