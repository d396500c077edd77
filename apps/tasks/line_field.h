#pragma once

#include <QLineEdit>

namespace tasks {

// A line to type a text of limited length into. What is put in and is too long is cut at a whole
// letter. Up and Down go to the field before and behind.
class LineField : public QLineEdit {
  Q_OBJECT

public:
  // In characters of 16 bits.
  explicit LineField(qsizetype limit, QWidget* parent = nullptr);

  // Shows a text as far as a line can show it.
  void setStored(const QString& text);
  // The stored text, unit by unit, where the user has not changed what is shown.
  [[nodiscard]] QString value() const;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  QString stored_;
  QString shown_;  // what the line made of it
};

}  // namespace tasks
