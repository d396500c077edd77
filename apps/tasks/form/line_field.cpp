#include "form/line_field.h"

#include "foreign_text.h"
#include "form/text_fit.h"
#include "ulo/look.h"

#include <QKeyEvent>
#include <QValidator>

namespace tasks {

// Truncates input and rejects nothing.
class Limit : public QValidator {
public:
  Limit(qsizetype limit, QLineEdit* line) : QValidator(line), limit_(limit) {
    connect(line, &QLineEdit::textChanged, this, [this](const QString& text) { before_ = text; });
  }

  void setLimit(qsizetype limit) { limit_ = limit; }

  State validate(QString& text, int& cursor) const override {
    const Span surplus = surplusOf(before_, text, cursor, limit_);
    if (surplus.to > surplus.from) {
      text.remove(surplus.from, surplus.to - surplus.from);
      cursor = static_cast<int>(surplus.from);
    }
    return Acceptable;
  }

private:
  qsizetype limit_;
  QString before_;
};

LineField::LineField(qsizetype limit, QWidget* parent)
    : QLineEdit(parent), most_(limit), limit_(new Limit(limit, this)) {
  setMinimumHeight(ulo::touchHeight(this));
  setValidator(limit_);
}

void LineField::setStored(const QString& text) {
  stored_ = text;
  const QString beginning = ulo::wholeLetters(text, most_);
  rest_ = text.sliced(beginning.size());
  limit_->setLimit(most_);
  setText(beginning);
  shown_ = this->text();
  if (!rest_.isEmpty())
    limit_->setLimit(shown_.size());
  home(false);
}

QString LineField::value() const {
  return text() == shown_ ? stored_ : text() + rest_;
}

void LineField::keyPressEvent(QKeyEvent* event) {
  const bool down = event->key() == Qt::Key_Down;
  if ((down || event->key() == Qt::Key_Up) && event->modifiers() == Qt::NoModifier)
    focusNextPrevChild(down);
  else
    QLineEdit::keyPressEvent(event);
}

}  // namespace tasks
