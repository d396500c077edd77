#include "form/note_field.h"

#include "foreign_text.h"
#include "form/text_fit.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QKeyEvent>
#include <QLabel>
#include <QTextBlock>
#include <QVBoxLayout>

namespace tasks {

namespace {

// The remaining number of characters is shown below this limit.
constexpr qsizetype fewLeft = 200;
constexpr int linesSeen = 5;

}  // namespace

NoteEdit::NoteEdit(qsizetype limit, QWidget* parent)
    : QPlainTextEdit(parent), most_(limit), limit_(limit) {
  setTabChangesFocus(true);
  setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  ulo::makeTouchable(this);
  connect(this, &QPlainTextEdit::textChanged, this, &NoteEdit::limit);
}

void NoteEdit::setStored(const QString& text) {
  const QSignalBlocker quietly(this);
  stored_ = text;
  const QString beginning = ulo::wholeLetters(text, most_);
  rest_ = text.sliced(beginning.size());
  setPlainText(beginning);
  shown_ = content();
  before_ = shown_;
  limit_ = rest_.isEmpty() ? most_ : shown_.size();
}

// Unlike toPlainText(), keeps no-break spaces.
QString NoteEdit::content() const {
  return document()->toRawText().replace(QChar(QChar::ParagraphSeparator), QChar(u'\n'));
}

QString NoteEdit::value() const {
  const QString now = content();
  return now == shown_ ? stored_ : now + rest_;
}

qsizetype NoteEdit::left() const {
  // The end of the last paragraph counts as a character.
  return limit_ - (document()->characterCount() - 1);
}

void NoteEdit::limit() {
  const QString text = content();
  const Span surplus = surplusOf(before_, text, textCursor().position(), limit_);
  if (surplus.to == surplus.from) {
    before_ = text;
    return;
  }
  // Joins the insertion to one undo step. Calls this function again.
  QTextCursor cursor = textCursor();
  cursor.joinPreviousEditBlock();
  cursor.setPosition(static_cast<int>(surplus.from));
  cursor.setPosition(static_cast<int>(surplus.to), QTextCursor::KeepAnchor);
  cursor.removeSelectedText();
  cursor.endEditBlock();
}

void NoteEdit::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::InsertLineSeparator)) {
    textCursor().insertBlock();
    return;
  }
  const bool down = event->key() == Qt::Key_Down;
  const bool plain = (down || event->key() == Qt::Key_Up) && event->modifiers() == Qt::NoModifier;
  const int place = textCursor().position();
  QPlainTextEdit::keyPressEvent(event);
  if (plain && textCursor().position() == place) {
    focusNextPrevChild(down);
    event->accept();
  }
}

QSize NoteEdit::sizeHint() const {
  return {ulo::scaled(this, 120), minimumSizeHint().height()};
}

QSize NoteEdit::minimumSizeHint() const {
  return {ulo::touchHeight(this), linesSeen * fontMetrics().lineSpacing() + 2 * ulo::gap(this)};
}

NoteField::NoteField(qsizetype limit, QWidget* parent)
    : QWidget(parent), edit_(new NoteEdit(limit, this)), left_(new QLabel(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(ulo::gap(this) / 2);
  column->addWidget(edit_, 1);
  column->addWidget(left_);
  left_->setTextFormat(Qt::PlainText);
  left_->setForegroundRole(QPalette::PlaceholderText);
  left_->hide();
  setFocusProxy(edit_);
  connect(edit_, &QPlainTextEdit::textChanged, this, [this] {
    tellLeft();
    Q_EMIT edited();
  });
}

void NoteField::setStored(const QString& text) {
  edit_->setStored(text);
  tellLeft();
}

QString NoteField::value() const {
  return edit_->value();
}

void NoteField::tellLeft() {
  const qsizetype left = edit_->left();
  if (left < fewLeft)
    left_->setText(ulo::text("FMT_RID_LABEL_CHARACTERS_LEFT_1", "Characters left: %1").arg(left));
  left_->setVisible(left < fewLeft);
}

}  // namespace tasks
