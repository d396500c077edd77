#pragma once

#include "form/date_dialog.h"

#include <QPushButton>

namespace tasks {

// A button that shows a date and, when pressed, asks for another one.
class DateField : public QPushButton {
  Q_OBJECT

public:
  // The title of the dialog, and the text for no date.
  struct Wording {
    QString title;
    QString none;
  };

  DateField(DateDialog::Kind kind, Wording wording, QWidget* parent = nullptr);

  void setDate(const std::optional<QDateTime>& date);
  [[nodiscard]] const std::optional<QDateTime>& date() const { return date_; }

Q_SIGNALS:
  // Emitted when the user has chosen a date, or none.
  void chosen();

private:
  void ask();
  [[nodiscard]] QString wordsOf(const QDateTime& date) const;

  DateDialog::Kind kind_;
  Wording wording_;
  std::optional<QDateTime> date_;
};

}  // namespace tasks
