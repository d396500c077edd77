#include "form/date_field.h"

#include "UTIL_DateTime.h"
#include "modal.h"
#include "task_texts.h"
#include "ulo/look.h"

namespace tasks {

DateField::DateField(DateDialog::Kind kind, Wording wording, QWidget* parent)
    : QPushButton(parent), kind_(kind), wording_(std::move(wording)) {
  setMinimumHeight(ulo::touchHeight(this));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  // So that Enter presses it.
  setAutoDefault(true);
  connect(this, &QPushButton::clicked, this, &DateField::ask);
  setDate({});
}

void DateField::setDate(const std::optional<QDateTime>& date) {
  date_ = date;
  setText(date ? wordsOf(*date) : wording_.none);
  setAccessibleName(wording_.title + u' ' + text());
}

QString DateField::wordsOf(const QDateTime& date) const {
  return kind_ == DateDialog::Kind::day
             ? dayText(date.date(), QDate::currentDate())
             : UTIL_DateTime::dateToString(date, UTIL_DateTime::dateAndTime);
}

void DateField::ask() {
  ulo::Modal<DateDialog> dialog(wording_.title, wording_.none, kind_, date_, this);
  // A key that follows at once may store the form before exec() returns.
  connect(dialog.get(), &QDialog::accepted, this, [this, &dialog] {
    setDate(dialog->chosen());
    Q_EMIT chosen();
  });
  dialog.exec();
}

}  // namespace tasks
