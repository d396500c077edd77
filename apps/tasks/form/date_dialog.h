#pragma once

#include "ZPopup.h"

#include <QDateTime>

#include <optional>

class QCalendarWidget;
class QTimeEdit;

namespace tasks {

// Asks for a day, or for a day and a time, or for none. Arrow keys go through the calendar, Enter
// takes the day, Backspace takes none.
class DateDialog : public ZPopup {
  Q_OBJECT

public:
  enum class Kind { day, dayAndTime };

  // `none` is what the choice of no date is called. The dialog begins with `start`, with today, or
  // with the full hour that comes.
  DateDialog(const QString& title, const QString& none, Kind kind,
             const std::optional<QDateTime>& start, QWidget* parent);

  // What was accepted: with Kind::day the first moment of the day. The very `start` when its day
  // and time were not changed.
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
  QTimeEdit* time_ = nullptr;  // null for days alone
  bool none_ = false;
};

}  // namespace tasks
