#include "line_field.h"

#include "foreign_text.h"
#include "look.h"
#include "text_fit.h"

#include <QKeyEvent>
#include <QValidator>

namespace tasks {

namespace {

// Cuts what is put in; refuses nothing.
class Limit : public QValidator {
public:
  Limit(qsizetype limit, QLineEdit* line) : QValidator(line), limit_(limit) {
    connect(line, &QLineEdit::textChanged, this, [this](const QString& text) { before_ = text; });
  }

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

}  // namespace

LineField::LineField(qsizetype limit, QWidget* parent) : QLineEdit(parent) {
  setMinimumHeight(ulo::touchHeight(this));
  setValidator(new Limit(limit, this));
}

void LineField::setStored(const QString& text) {
  stored_ = text;
  setText(text);
  shown_ = this->text();
  home(false);
}

QString LineField::value() const {
  return text() == shown_ ? stored_ : text();
}

void LineField::keyPressEvent(QKeyEvent* event) {
  const bool down = event->key() == Qt::Key_Down;
  if ((down || event->key() == Qt::Key_Up) && event->modifiers() == Qt::NoModifier)
    focusNextPrevChild(down);
  else
    QLineEdit::keyPressEvent(event);
}

}  // namespace tasks
