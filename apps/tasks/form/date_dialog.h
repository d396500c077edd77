#pragma once

#include "ZPopup.h"

#include <QDateTime>

#include <optional>

class QCalendarWidget;
class QTimeEdit;

namespace tasks {

// Asks for a day, for a day and a time, or for no date. Arrow keys move in the calendar, Enter
// chooses the day, Backspace chooses no date.
class DateDialog : public ZPopup {
  Q_OBJECT

public:
  enum class Kind { day, dayAndTime };

  // `none` is the label of the button for no date. The dialog starts with `start`; without one,
  // with today or the next full hour.
  DateDialog(const QString& title, const QString& none, Kind kind,
             const std::optional<QDateTime>& start, QWidget* parent);

  // The accepted date: for Kind::day the first moment of the day. Returns `start` itself if neither
  // its day nor its time was changed.
  [[nodiscard]] std::optional<QDateTime> chosen() const;

protected:
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void setUpCalendar(const QDate& day);
  [[nodiscard]] QSize roomFor(const QSize& screen) const;
  void fitCalendar();
  void addTime(const QTime& time);
  void revealDay();
  void takeNone();

  std::optional<QDateTime> start_;
  QCalendarWidget* calendar_;
  QTimeEdit* time_ = nullptr;  // null for Kind::day
  bool none_ = false;
};

}  // namespace tasks
