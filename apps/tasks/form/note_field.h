#pragma once

#include <QPlainTextEdit>

class QLabel;

namespace tasks {

// Lines for a text of limited length. Input beyond the limit is truncated at a whole letter. Tab
// leaves the field; so do Up on its first line and Down on its last one.
class NoteEdit : public QPlainTextEdit {
  Q_OBJECT

public:
  explicit NoteEdit(qsizetype limit, QWidget* parent = nullptr);

  // Shows a text, or its beginning if it is too long, without emitting a signal. Keeps the rest.
  void setStored(const QString& text);
  // The visible text, followed by the rest of a stored text that is too long. If the user has not
  // edited the visible text, the stored text, unit by unit.
  [[nodiscard]] QString value() const;
  // The number of characters of 16 bits that can still be entered.
  [[nodiscard]] qsizetype left() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  [[nodiscard]] QString content() const;
  void limit();

  const qsizetype most_;
  qsizetype limit_;  // of the visible text; lower if a rest is kept
  QString rest_;     // the invisible end of the stored text
  QString before_;   // the content before the last change
  QString stored_;
  QString shown_;  // the stored text as the lines show it
};

// The lines, and below them the number of characters that can still be entered once that is small.
class NoteField : public QWidget {
  Q_OBJECT

public:
  explicit NoteField(qsizetype limit, QWidget* parent = nullptr);

  // See NoteEdit.
  void setStored(const QString& text);
  [[nodiscard]] QString value() const;
  [[nodiscard]] NoteEdit* edit() const { return edit_; }

Q_SIGNALS:
  // Emitted when the user has edited the text.
  void edited();

private:
  void tellLeft();

  NoteEdit* edit_;
  QLabel* left_;
};

}  // namespace tasks
