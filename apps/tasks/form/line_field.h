#pragma once

#include <QLineEdit>

namespace tasks {

class Limit;

// A line for a text of limited length. Input beyond the limit is truncated at a whole letter. Up
// and Down move to the neighboring fields.
class LineField : public QLineEdit {
  Q_OBJECT

public:
  // In characters of 16 bits.
  explicit LineField(qsizetype limit, QWidget* parent = nullptr);

  // Shows the beginning of a text, as far as it fits into the limit and a single line. Keeps the
  // rest.
  void setStored(const QString& text);
  // The visible text, followed by the rest of a stored text that is too long. If the user has not
  // edited the visible text, the stored text, unit by unit.
  [[nodiscard]] QString value() const;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  const qsizetype most_;
  Limit* limit_;
  QString stored_;
  QString rest_;   // the invisible end of the stored text
  QString shown_;  // the stored text as the line shows it
};

}  // namespace tasks
