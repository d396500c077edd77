#pragma once

#include "form/date_dialog.h"

#include <QPushButton>

namespace tasks {

// A button that shows a date and asks for another when it is pressed.
class DateField : public QPushButton {
  Q_OBJECT

public:
  // What it is called in the dialog's title, and what it shows when there is no date.
  struct Wording {
    QString title;
    QString none;
  };

  DateField(DateDialog::Kind kind, Wording wording, QWidget* parent = nullptr);

  void setDate(const std::optional<QDateTime>& date);
  [[nodiscard]] const std::optional<QDateTime>& date() const { return date_; }

Q_SIGNALS:
  // The user has chosen.
  void chosen();

private:
  void ask();
  [[nodiscard]] QString wordsOf(const QDateTime& date) const;

  DateDialog::Kind kind_;
  Wording wording_;
  std::optional<QDateTime> date_;
};

}  // namespace tasks
