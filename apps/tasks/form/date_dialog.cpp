#include "form/date_dialog.h"

#include "dates.h"
#include "field_look.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QBoxLayout>
#include <QCalendarWidget>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QTableView>
#include <QTextCharFormat>
#include <QTimeEdit>
#include <QToolButton>

#include <algorithm>

namespace tasks {

namespace {

// The rows for the month, the names of the days, and the weeks.
constexpr int calendarRows = 8;
// Smaller type is not legible.
constexpr int leastPoints = 9;

// The button for the previous or next month.
void setUpStep(QCalendarWidget& calendar, const char* name, Qt::ArrowType arrow) {
  auto* button = calendar.findChild<QToolButton*>(QLatin1String(name));
  if (button == nullptr)
    return;
  button->setIcon(arrowIcon(arrow, &calendar));
  button->setMinimumSize(ulo::touchHeight(&calendar), ulo::touchHeight(&calendar));
}

QDateTime nextHour() {
  const QDateTime soon = QDateTime::currentDateTime().addSecs(3600);
  return ulo::localTimeOrStart(soon.date(), QTime(soon.time().hour(), 0));
}

}  // namespace

DateDialog::DateDialog(const QString& title, const QString& none, Kind kind,
                       const std::optional<QDateTime>& start, QWidget* parent)
    : ZPopup(title, parent), start_(start), calendar_(new QCalendarWidget) {
  setKeys(ulo::text("TXT_RID_SOFTKEY_OK", "OK"), ulo::text("TXT_RID_SOFTKEY_CANCEL", "Cancel"));
  const QDateTime shown =
      start.value_or(kind == Kind::day ? QDateTime::currentDateTime() : nextHour());
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(ulo::gap(this));
  setUpCalendar(shown.date());
  column->addWidget(calendar_, 1);
  auto* line = new QBoxLayout(QBoxLayout::LeftToRight);
  column->addLayout(line);
  if (kind == Kind::dayAndTime) {
    addTime(shown.time());
    line->addWidget(time_, 1);
  }
  auto* nothing = new QPushButton(none);
  nothing->setAutoDefault(true);
  nothing->setMinimumHeight(ulo::touchHeight(this));
  connect(nothing, &QPushButton::clicked, this, &DateDialog::takeNone);
  line->addWidget(nothing, 1);
  if (line->minimumSize().width() > roomFor(parentWidget()->window()->size()).width())
    line->setDirection(QBoxLayout::TopToBottom);
  styleFields(content);
  setContent(content);
  calendar_->setFocus();
}

void DateDialog::setUpCalendar(const QDate& day) {
  calendar_->setLocale(QLocale());
  calendar_->setFirstDayOfWeek(QLocale().firstDayOfWeek());
  calendar_->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
  calendar_->setDateEditEnabled(false);
  // Other programs may have stored a day outside of the range.
  calendar_->setDateRange(std::min(ulo::earliestDay(), day), std::max(ulo::latestDay(), day));
  calendar_->setSelectedDate(day);
  // Days off differ between users, so none are marked.
  for (const Qt::DayOfWeek dayOff : {Qt::Saturday, Qt::Sunday})
    calendar_->setWeekdayTextFormat(dayOff, QTextCharFormat());
  connect(calendar_, &QCalendarWidget::activated, this, &DateDialog::accept);
  fitCalendar();
  const bool mirrored = layoutDirection() == Qt::RightToLeft;
  setUpStep(*calendar_, "qt_calendar_prevmonth", mirrored ? Qt::RightArrow : Qt::LeftArrow);
  setUpStep(*calendar_, "qt_calendar_nextmonth", mirrored ? Qt::LeftArrow : Qt::RightArrow);
  connect(calendar_, &QCalendarWidget::selectionChanged, this, &DateDialog::revealDay);
}

void DateDialog::showEvent(QShowEvent* event) {
  ZPopup::showEvent(event);
  revealDay();
}

// Scrolls to the selected day if the calendar is higher than the screen.
void DateDialog::revealDay() {
  const auto* days = calendar_->findChild<QTableView*>();
  auto* scroll = findChild<QScrollArea*>(QString(), Qt::FindDirectChildrenOnly);
  const QRect day = days->visualRect(days->currentIndex());
  const QPoint place = days->viewport()->mapTo(scroll->widget(), day.center());
  scroll->ensureVisible(place.x(), place.y(), 0, day.height());
}

// The room for the calendar on a screen of this size.
QSize DateDialog::roomFor(const QSize& screen) const {
  const int margin = 2 * ulo::gap(this);
  // Without the frame, the title, the keys and the row below the calendar.
  return {std::min(screen.width() - margin, ulo::scaled(this, 320)) - 2 - 2 * margin,
          screen.height() - 4 * margin - 3 * ulo::touchHeight(this)};
}

// As high as is convenient to touch, if the screen allows it. If there is little room, the names of
// the days are one letter each, and large type becomes smaller.
void DateDialog::fitCalendar() {
  const QSize room = roomFor(parentWidget()->window()->size());
  const auto fits = [this, room] {
    const QSize least = calendar_->minimumSizeHint();
    return least.width() <= room.width() && least.height() <= room.height();
  };
  if (calendar_->minimumSizeHint().width() > room.width())
    calendar_->setHorizontalHeaderFormat(QCalendarWidget::SingleLetterDayNames);
  QFont font = calendar_->font();
  for (int size = font.pointSize() - 1; !fits() && size >= leastPoints; --size) {
    font.setPointSize(size);
    calendar_->setFont(font);
  }
  // All days share the width.
  for (auto* header : calendar_->findChildren<QHeaderView*>())
    header->setMinimumSectionSize(1);
  const int row = ulo::touchHeight(this);
  const QSize least = calendar_->minimumSizeHint();
  calendar_->setMinimumSize(least.width(),
                            std::max(least.height(), std::min(calendarRows * row, room.height())));
}

void DateDialog::addTime(const QTime& time) {
  time_ = new QTimeEdit;
  time_->setLocale(QLocale());
  time_->setDisplayFormat(QLocale().timeFormat(QLocale::ShortFormat));
  time_->setTime(time);
  time_->setMinimumHeight(ulo::touchHeight(this));
  time_->setAccessibleName(ulo::text("TXT_RID_LABEL_TIME", "Time"));
}

void DateDialog::takeNone() {
  none_ = true;
  accept();
}

void DateDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete)
    takeNone();
  else
    ZPopup::keyPressEvent(event);
}

std::optional<QDateTime> DateDialog::chosen() const {
  if (none_)
    return std::nullopt;
  const QDate day = calendar_->selectedDate();
  if (time_ == nullptr)
    return day.startOfDay();
  // The same local time may be another moment if the clocks show an hour twice.
  const bool same = start_ && start_->date() == day && start_->time() == time_->time();
  return same ? *start_ : ulo::localTimeOrStart(day, time_->time());
}

}  // namespace tasks
