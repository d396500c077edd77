#pragma once

#include <QPlainTextEdit>

class QLabel;

namespace tasks {

// Lines to type a text of limited length into. What is put in and is too long is cut at a whole
// letter. Tab leaves the field; so do Up on its first line and Down on its last.
class NoteEdit : public QPlainTextEdit {
  Q_OBJECT

public:
  explicit NoteEdit(qsizetype limit, QWidget* parent = nullptr);

  // Shows a text, its beginning where it is too long, without a signal. The rest is kept.
  void setStored(const QString& text);
  // The text that is shown, followed by the rest of a stored one that is too long; the stored text,
  // unit by unit, if the user has not edited the visible text.
  [[nodiscard]] QString value() const;
  // How many characters of 16 bits may still be put in.
  [[nodiscard]] qsizetype left() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  [[nodiscard]] QString content() const;
  void limit();

  const qsizetype most_;
  qsizetype limit_;  // for the visible text; lower if a rest is kept
  QString rest_;     // of the stored text, which is not shown
  QString before_;   // the content before the last change
  QString stored_;
  QString shown_;  // what the lines made of it
};

// The lines, and below them how much may still be put in once that is little.
class NoteField : public QWidget {
  Q_OBJECT

public:
  explicit NoteField(qsizetype limit, QWidget* parent = nullptr);

  // As the functions of NoteEdit.
  void setStored(const QString& text);
  [[nodiscard]] QString value() const;
  [[nodiscard]] NoteEdit* edit() const { return edit_; }

Q_SIGNALS:
  // The user has changed the text.
  void edited();

private:
  void tellLeft();

  NoteEdit* edit_;
  QLabel* left_;
};

}  // namespace tasks
