#pragma once

#include <QLineEdit>

namespace tasks {

class Limit;

// A line to type a text of limited length into. What is put in and is too long is cut at a whole
// letter. Up and Down go to the field before and behind.
class LineField : public QLineEdit {
  Q_OBJECT

public:
  // In characters of 16 bits.
  explicit LineField(qsizetype limit, QWidget* parent = nullptr);

  // Shows a text as far as a line can show it, its beginning where it is too long. The rest is
  // kept.
  void setStored(const QString& text);
  // The text that is shown, followed by the rest of a stored one that is too long; the stored text,
  // unit by unit, if the user has not edited the visible text.
  [[nodiscard]] QString value() const;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  const qsizetype most_;
  Limit* limit_;
  QString stored_;
  QString rest_;   // of the stored text, which is not shown
  QString shown_;  // what the line made of it
};

}  // namespace tasks
