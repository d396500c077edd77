// The dialog for dates.

#include "form/date_dialog.h"

#include "ZSoftKey.h"
#include "dialogs_test.h"
#include "form/date_field.h"
#include "tasks_test.h"

#include <QCalendarWidget>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTimeEdit>

using tasks::DateDialog;
using Kind = DateDialog::Kind;

namespace {

class DateDialogs : public testing::Test {
protected:
  DateDialogs() {
    behind_.resize(240, 320);
    behind_.show();
  }
  ~DateDialogs() override { QLocale::setDefault(QLocale::c()); }

  static QDateTime evening(int day) { return {QDate(2027, 3, day), QTime(18, 30, 5)}; }
  using Answer = std::optional<std::optional<QDateTime>>;
  // The result of the dialog after these actions; none if it was rejected.
  template <typename Work> Answer answer(Kind kind, std::optional<QDateTime> start, Work work) {
    DateDialog dialog("Date", "None", kind, start, &behind_);
    bool accepted = false;
    inDialog<DateDialog>([&] { accepted = dialog.exec() == QDialog::Accepted; }, work);
    return accepted ? Answer(std::in_place, dialog.chosen()) : std::nullopt;
  }
  static auto pressing(std::initializer_list<Qt::Key> keys) {
    return [keys](DateDialog& dialog) {
      for (const Qt::Key key : keys)
        ::pressing(key)(dialog);
    };
  }

  QWidget behind_;
};

TEST_F(DateDialogs, ArrowKeysAndEnterChooseDay) {
  const auto chosen =
      answer(Kind::day, evening(5), pressing({Qt::Key_Right, Qt::Key_Down, Qt::Key_Return}));
  EXPECT_EQ(chosen, QDate(2027, 3, 13).startOfDay());
}

TEST_F(DateDialogs, SoftKeysWorkInCalendar) {
  EXPECT_EQ(answer(Kind::day, evening(5), pressing({Qt::Key_Left, Qt::Key_F1})),
            QDate(2027, 3, 4).startOfDay());
  EXPECT_FALSE(answer(Kind::day, evening(5), pressing({Qt::Key_F3})).has_value());
  EXPECT_FALSE(answer(Kind::day, evening(5), pressing({Qt::Key_Escape})).has_value());
}

TEST_F(DateDialogs, ClickAndOkChooseDay) {
  const auto chosen = answer(Kind::day, evening(5), [](DateDialog& dialog) {
    dialog.findChild<QCalendarWidget*>()->setSelectedDate(QDate(2027, 4, 1));
    dialog.keys()->click(ZSoftKey::left);
  });
  EXPECT_EQ(chosen, QDate(2027, 4, 1).startOfDay());
}

TEST_F(DateDialogs, NoDateCanBeChosen) {
  const Answer none(std::in_place, std::nullopt);
  EXPECT_EQ(answer(Kind::day, evening(5), pressing({Qt::Key_Backspace})), none);
  EXPECT_EQ(answer(Kind::dayAndTime, evening(5),
                   [](DateDialog& dialog) {
                     for (auto* button : dialog.findChildren<QPushButton*>())
                       if (button->text() == "None")
                         button->click();
                   }),
            none);
}

TEST_F(DateDialogs, AlarmKeepsItsTimeToTheSecond) {
  EXPECT_EQ(answer(Kind::dayAndTime, evening(5), pressing({Qt::Key_F1})), evening(5));
  EXPECT_EQ(answer(Kind::dayAndTime, evening(5), pressing({Qt::Key_Right, Qt::Key_F1})),
            evening(6));
  const auto later = answer(Kind::dayAndTime, evening(5), [](DateDialog& dialog) {
    dialog.findChild<QTimeEdit*>()->setTime(QTime(7, 15));
    dialog.keys()->click(ZSoftKey::left);
  });
  EXPECT_EQ(later, QDateTime(QDate(2027, 3, 5), QTime(7, 15)));
}

TEST_F(DateDialogs, UnchangedAlarmKeepsItsMomentInRepeatedHour) {
  // 2:30 for the first and for the second time.
  for (const int hours : {1, 2}) {
    const QDateTime start = QDateTime(QDate(2027, 10, 31), QTime(1, 30)).addSecs(hours * 3600);
    ASSERT_EQ(start.time(), QTime(2, 30));
    const auto chosen = answer(Kind::dayAndTime, start, pressing({Qt::Key_F1}));
    ASSERT_TRUE(chosen && *chosen);
    EXPECT_EQ((*chosen)->toSecsSinceEpoch(), start.toSecsSinceEpoch());
  }
}

TEST_F(DateDialogs, OfferDaysThatUsersCanEnter) {
  using Days = std::pair<QDate, QDate>;
  const auto offered = [this](const QDate& start) {
    Days days;
    answer(Kind::day, start.startOfDay(), [&](DateDialog& dialog) {
      const auto* calendar = dialog.findChild<QCalendarWidget*>();
      days = {calendar->minimumDate(), calendar->maximumDate()};
      EXPECT_EQ(calendar->selectedDate(), start);
      dialog.reject();
    });
    return days;
  };
  const QDate earliest(1970, 1, 2);
  const QDate latest(2038, 1, 17);
  EXPECT_EQ(offered({2027, 3, 5}), Days(earliest, latest));
  // Stored by other programs.
  EXPECT_EQ(offered({1950, 3, 5}), Days(QDate(1950, 3, 5), latest));
  EXPECT_EQ(offered({2050, 3, 5}), Days(earliest, QDate(2050, 3, 5)));
}

TEST_F(DateDialogs, StartNowWithoutDate) {
  const QDateTime before = QDateTime::currentDateTime();
  const auto day = answer(Kind::day, std::nullopt, pressing({Qt::Key_F1}));
  const auto time = answer(Kind::dayAndTime, std::nullopt, pressing({Qt::Key_F1}));
  const QDateTime after = QDateTime::currentDateTime();
  ASSERT_TRUE(day && *day && time && *time);
  EXPECT_GE((*day)->date(), before.date());
  EXPECT_LE((*day)->date(), after.date());
  EXPECT_GT(**time, before);
  EXPECT_LE(**time, after.addSecs(3600));
  EXPECT_EQ((*time)->time().minute(), 0);
}

TEST_F(DateDialogs, WeeksBeginAsInLocale) {
  for (const auto& [language, day] :
       {std::pair("de_DE", Qt::Monday), std::pair("en_US", Qt::Sunday)}) {
    QLocale::setDefault(QLocale(language));
    const DateDialog dialog("Date", "None", Kind::dayAndTime, evening(5), &behind_);
    EXPECT_EQ(dialog.findChild<QCalendarWidget*>()->firstDayOfWeek(), day);
    EXPECT_EQ(dialog.findChild<QTimeEdit*>()->displayFormat(),
              QLocale(language).timeFormat(QLocale::ShortFormat));
  }
}

TEST_F(DateDialogs, FitOnNarrowScreen) {
  for (const char* language : {"en_US", "de_DE", "zh_CN"})
    for (const Kind kind : {Kind::day, Kind::dayAndTime}) {
      QLocale::setDefault(QLocale(language));
      static_cast<void>(answer(kind, evening(5), [&](DateDialog& dialog) {
        QCoreApplication::processEvents();
        EXPECT_LE(dialog.width(), 240);
        EXPECT_LE(dialog.height(), 320);
        const auto* scroll = dialog.findChild<QScrollArea*>();
        EXPECT_LE(scroll->widget()->width(), scroll->viewport()->width()) << language;
        EXPECT_LE(scroll->widget()->height(), scroll->viewport()->height()) << language;
        dialog.reject();
      }));
    }
}

TEST_F(DateDialogs, FieldShowsChosenDate) {
  tasks::DateField field(Kind::day, {"Due Date", "No Due Date"}, &behind_);
  QSignalSpy chosen(&field, &tasks::DateField::chosen);
  EXPECT_EQ(field.text(), "No Due Date");
  inDialog<DateDialog>([&] { QTest::keyClick(&field, Qt::Key_Return); }, pressing({Qt::Key_F1}));
  EXPECT_EQ(field.text(), "Today");
  EXPECT_EQ(field.accessibleName(), "Due Date Today");
  EXPECT_EQ(chosen.count(), 1);
  inDialog<DateDialog>([&] { field.click(); }, pressing({Qt::Key_F3}));
  EXPECT_EQ(chosen.count(), 1);
  inDialog<DateDialog>([&] { field.click(); }, pressing({Qt::Key_Backspace}));
  EXPECT_EQ(field.text(), "No Due Date");
  EXPECT_EQ(chosen.count(), 2);
}

TEST_F(DateDialogs, FieldMayBeDeletedWhileDialogIsOpen) {
  auto* field = new tasks::DateField(Kind::day, {"Due Date", "No Due Date"}, &behind_);
  QSignalSpy chosen(field, &tasks::DateField::chosen);
  inDialog<DateDialog>([&] { field->click(); }, [&](DateDialog&) { delete field; });
  EXPECT_EQ(chosen.count(), 0);
}

}  // namespace
