// What replacing fields changes in a text.
#include "berlin_time.h"
#include "ical_text.h"
#include "test_clock.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;
using Field = Task::TASK_FIELD_T;

QDateTime utc(const char* text) {
  return UTIL_TimeConversion::fromISO8601(QCString(text));
}

// The lines of every change.
const std::string stamps = "+DTSTAMP:20261120T120000Z\n+LAST-MODIFIED:20261120T120000Z\n"
                           "+SEQUENCE:1\n";

class IcalWrite : public testing::Test {
protected:
  IcalWrite() { setEngineNow(utc("20261120T120000Z")); }
  ~IcalWrite() override { setEngineNow(QDateTime()); }

  // What changes if a field of a to-do with these lines is edited. Leaves out the lines of `stamps`
  // if they are there as expected.
  template <typename Edit>
  static std::string changesOf(std::initializer_list<QByteArray> lines, Edit edit) {
    const QByteArray text = todoOf(lines);
    TASK_ENG_Ical calendar(text);
    Task task = calendar.task(0);
    edit(task);
    const bool isReplaced = calendar.replace(0, task);
    EXPECT_EQ(isReplaced, calendar.text() != text);
    const std::string changes = differenceOf(text, calendar.text());
    // Doing it again changes nothing.
    const QByteArray written = calendar.text();
    EXPECT_FALSE(calendar.replace(0, task));
    EXPECT_FALSE(TASK_ENG_Ical(written).replace(0, task));
    EXPECT_EQ(calendar.text(), written);
    const std::size_t place = changes.find(stamps);
    return place == std::string::npos
               ? changes
               : changes.substr(0, place) + changes.substr(place + stamps.size());
  }
  static std::string withText(std::initializer_list<QByteArray> lines, Field field,
                              const QString& text) {
    return changesOf(lines, [&](Task& task) { task.setString(field, text); });
  }
  static std::string withDate(std::initializer_list<QByteArray> lines, Field field,
                              const char* text) {
    return changesOf(lines, [&](Task& task) {
      task.setDateTime(field, text == nullptr ? Task::noDate() : utc(text));
    });
  }
  static std::string withStatus(std::initializer_list<QByteArray> lines, int status) {
    return changesOf(lines, [&](Task& task) { task.setStatus(status); });
  }
};

TEST_F(IcalWrite, ChangesNothingIfNothingDiffers) {
  EXPECT_EQ(changesOf({"SUMMARY:a", "DUE:tomorrow", "STATUS:odd", "PRIORITY:x", "COMPLETED:never",
                       "BEGIN:VALARM", "TRIGGER:soon", "END:VALARM"},
                      [](Task&) {}),
            "");
}

TEST_F(IcalWrite, ReplacesSummaryAndKeepsItsParameters) {
  EXPECT_EQ(withText({"summary;LANGUAGE=en:a", "X-A:b", "DESCRIPTION:note"},
                     Task::TASK_FIELD_SUMMARY, "c, d; e\\f\r\ng\rh"),
            "-summary;LANGUAGE=en:a\n+summary;LANGUAGE=en:c\\, d\\; e\\\\f\\ng\\nh\n");
}

TEST_F(IcalWrite, LineWithoutColonIsNotReplaced) {
  EXPECT_EQ(withText({"SUMMARY;X", "SUMMARY"}, Task::TASK_FIELD_SUMMARY, "a"), "+SUMMARY:a\n");
  EXPECT_EQ(
      withDate({"STATUS:COMPLETED", "COMPLETED;TZI"}, Task::TASK_FIELD_END, "20261102T000000Z"),
      "+COMPLETED:20261102T000000Z\n");
  EXPECT_EQ(withDate({"DUE;TZI", "DUE:20261101T000000Z"}, Task::TASK_FIELD_DUE, "20261102T000000Z"),
            "-DUE:20261101T000000Z\n+DUE:20261102T000000Z\n");
}

TEST_F(IcalWrite, AddsAndRemovesTexts) {
  EXPECT_EQ(withText({"X-A:b"}, Task::TASK_FIELD_NOTE, "note"), "+DESCRIPTION:note\n");
  EXPECT_EQ(withText({"SUMMARY:a", "SUMMARY:b"}, Task::TASK_FIELD_SUMMARY, ""),
            "-SUMMARY:a\n-SUMMARY:b\n");
  EXPECT_EQ(withText({"SUMMARY:"}, Task::TASK_FIELD_SUMMARY, QString()), "");
}

TEST_F(IcalWrite, KeepsTextsThatTheRecordTruncated) {
  // The limit falls between the halves of a letter.
  const QByteArray summary = QByteArray(511, 'x') + "\xF0\x9F\x98\x80" + "more";
  const QString whole = QString::fromUtf8(summary);
  EXPECT_EQ(withText({"SUMMARY:" + summary}, Task::TASK_FIELD_SUMMARY, whole.left(511)), "");
  EXPECT_EQ(
      withText({"SUMMARY:" + QByteArray(513, 'x')}, Task::TASK_FIELD_SUMMARY, QString(512, 'x')),
      "");
  EXPECT_EQ(
      withText({"DESCRIPTION:" + QByteArray(4003, 'x')}, Task::TASK_FIELD_NOTE, QString(4002, 'x')),
      "");
  // Another length is an edit.
  EXPECT_NE(
      withText({"SUMMARY:" + QByteArray(513, 'x')}, Task::TASK_FIELD_SUMMARY, QString(511, 'x')),
      "");
  EXPECT_NE(
      withText({"SUMMARY:" + QByteArray(512, 'x')}, Task::TASK_FIELD_SUMMARY, QString(511, 'x')),
      "");
}

TEST_F(IcalWrite, FoldsAndKeepsLineEnds) {
  const QByteArray text = "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VTODO\nSUMMARY:a\n b\r\nEND:VTODO\n"
                          "END:VCALENDAR";
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(0);
  QString summary(66, 'x');
  for (int i = 0; i < 20; ++i)
    summary += QChar(0xE4);
  task.setString(Task::TASK_FIELD_SUMMARY, summary);
  task.setPriority(4);
  EXPECT_TRUE(calendar.replace(0, task));
  QByteArray a1 = "\xC3\xA4";
  EXPECT_EQ(calendar.text().toStdString(),
            "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VTODO\nSUMMARY:" + std::string(66, 'x') + "\r\n " +
                a1.repeated(20).toStdString() +
                "\r\nPRIORITY:4\nDTSTAMP:20261120T120000Z\nLAST-MODIFIED:20261120T120000Z\n"
                "SEQUENCE:1\nEND:VTODO\nEND:VCALENDAR");
}

TEST_F(IcalWrite, ReplacesFirstCategoryOnly) {
  const Field category = Task::TASK_FIELD_CATEGORY;
  EXPECT_EQ(withText({"CATEGORIES:a\\,b,c,d", "CATEGORIES:e"}, category, "x,y"),
            "-CATEGORIES:a\\,b,c,d\n+CATEGORIES:x\\,y,c,d\n");
  EXPECT_EQ(withText({"X-A:b"}, category, "x"), "+CATEGORIES:x\n");
  EXPECT_EQ(withText({"CATEGORIES:a"}, category, QString()), "-CATEGORIES:a\n");
  // The others stay; the second one is then the first.
  const QByteArray text = todoOf({"CATEGORIES:a,b"});
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(0);
  task.setString(category, QString());
  EXPECT_TRUE(calendar.replace(0, task));
  EXPECT_EQ(calendar.task(0).getString(category), "b");
}

TEST_F(IcalWrite, ReplacesPriority) {
  const auto with = [](std::initializer_list<QByteArray> lines, int priority) {
    return changesOf(lines, [&](Task& task) { task.setPriority(priority); });
  };
  EXPECT_EQ(with({"PRIORITY:1"}, 5), "-PRIORITY:1\n+PRIORITY:5\n");
  EXPECT_EQ(with({"PRIORITY:1"}, 0), "-PRIORITY:1\n+PRIORITY:0\n");
  EXPECT_EQ(with({"X-A:b"}, 0), "");
  EXPECT_EQ(with({"PRIORITY:9"}, 10), "");
}

TEST_F(IcalWrite, CompletesAndReopens) {
  EXPECT_EQ(withStatus({"STATUS:NEEDS-ACTION"}, 0),
            "-STATUS:NEEDS-ACTION\n+STATUS:COMPLETED\n+PERCENT-COMPLETE:100\n");
  EXPECT_EQ(withStatus({"STATUS:COMPLETED", "PERCENT-COMPLETE:100"}, 1),
            "-STATUS:COMPLETED\n-PERCENT-COMPLETE:100\n+STATUS:NEEDS-ACTION\n"
            "+PERCENT-COMPLETE:0\n");
  EXPECT_EQ(withStatus({"STATUS:COMPLETED", "PERCENT-COMPLETE:70"}, 6),
            "-STATUS:COMPLETED\n+STATUS:CANCELLED\n");
  EXPECT_EQ(withStatus({"PERCENT-COMPLETE:100"}, 0), "");
  // Opening what only its percentage completes.
  EXPECT_EQ(withStatus({"PERCENT-COMPLETE:100"}, 1),
            "-PERCENT-COMPLETE:100\n+PERCENT-COMPLETE:0\n+STATUS:NEEDS-ACTION\n");
}

TEST_F(IcalWrite, StatusWithoutWordKeepsNeedsAction) {
  for (const int status : {-1, 1, 3, 4, 5, 7, 8}) {
    EXPECT_EQ(withStatus({"STATUS:needs-action"}, status), "") << status;
    EXPECT_EQ(withStatus({"STATUS:IN-PROCESS"}, status),
              "-STATUS:IN-PROCESS\n+STATUS:NEEDS-ACTION\n")
        << status;
  }
}

TEST_F(IcalWrite, ReplacesEnd) {
  const Field end = Task::TASK_FIELD_END;
  EXPECT_EQ(withDate({"COMPLETED;X-A=b:20261101T000000Z"}, end, "20261102T000000Z"),
            "-COMPLETED;X-A=b:20261101T000000Z\n+COMPLETED;X-A=b:20261102T000000Z\n");
  EXPECT_EQ(withDate({"STATUS:COMPLETED"}, end, "20261102T000000Z"),
            "+COMPLETED:20261102T000000Z\n");
  EXPECT_EQ(withDate({"STATUS:COMPLETED", "COMPLETED:20261101T000000Z"}, end, nullptr),
            "-COMPLETED:20261101T000000Z\n");
}

TEST_F(IcalWrite, DueKeepsItsForm) {
  const Field due = Task::TASK_FIELD_DUE;
  // Local midnight is a day.
  EXPECT_EQ(withDate({"X-A:b"}, due, "20261130T230000Z"), "+DUE;VALUE=DATE:20261201\n");
  EXPECT_EQ(withDate({"X-A:b"}, due, "20261130T220000Z"), "+DUE:20261130T220000Z\n");
  EXPECT_EQ(withDate({"DUE:20261101T100000Z"}, due, "20261130T230000Z"),
            "-DUE:20261101T100000Z\n+DUE;VALUE=DATE:20261201\n");
  EXPECT_EQ(withDate({"DUE;VALUE=DATE:20261101"}, due, "20261130T220000Z"),
            "-DUE;VALUE=DATE:20261101\n+DUE:20261130T220000Z\n");
  EXPECT_EQ(withDate({"DUE:20261101T100000"}, due, "20261130T220000Z"),
            "-DUE:20261101T100000\n+DUE:20261130T230000\n");
  EXPECT_EQ(withDate({"DUE;X-A=b;TZID=America/New_York:20261101T100000"}, due, "20261130T220000Z"),
            "-DUE;X-A=b;TZID=America/New_York:20261101T100000\n"
            "+DUE;X-A=b;TZID=America/New_York:20261130T170000\n");
  EXPECT_EQ(withDate({"DUE;X-A=b;TZID=Nowhere:20261101T100000"}, due, "20261130T220000Z"),
            "-DUE;X-A=b;TZID=Nowhere:20261101T100000\n+DUE;X-A=b:20261130T220000Z\n");
  // The second of two hours that the clock shows alike has no local form.
  EXPECT_EQ(withDate({"DUE:20261101T100000"}, due, "20261025T013000Z"),
            "-DUE:20261101T100000\n+DUE:20261025T013000Z\n");
  EXPECT_EQ(withDate({"DUE:20261101T100000Z"}, due, nullptr), "-DUE:20261101T100000Z\n");
}

TEST_F(IcalWrite, DueHasTimeIfStartHas) {
  const Field due = Task::TASK_FIELD_DUE;
  EXPECT_EQ(withDate({"DTSTART;TZID=Europe/Berlin:20261101T100000"}, due, "20261130T230000Z"),
            "+DUE;TZID=Europe/Berlin:20261201T000000\n");
  EXPECT_EQ(withDate({"DTSTART:20261101T100000Z", "DUE:20261102T100000"}, due, "20261130T230000Z"),
            "-DUE:20261102T100000\n+DUE:20261201T000000\n");
  EXPECT_EQ(
      withDate({"DTSTART;VALUE=DATE:20261101", "DUE;VALUE=DATE:20261102"}, due, "20261130T230000Z"),
      "-DUE;VALUE=DATE:20261102\n+DUE;VALUE=DATE:20261201\n");
}

TEST_F(IcalWrite, StartMovesWithDueThatWouldPrecedeIt) {
  const Field due = Task::TASK_FIELD_DUE;
  // On the clock: the change to summer time is on March 28.
  EXPECT_EQ(withDate({"DTSTART;X-A=b;TZID=Europe/Berlin:20270330T100000",
                      "DUE;TZID=Europe/Berlin:20270401T180000"},
                     due, "20270320T170000Z"),
            "-DTSTART;X-A=b;TZID=Europe/Berlin:20270330T100000\n"
            "-DUE;TZID=Europe/Berlin:20270401T180000\n"
            "+DTSTART;X-A=b;TZID=Europe/Berlin:20270318T100000\n"
            "+DUE;TZID=Europe/Berlin:20270320T180000\n");
  EXPECT_EQ(withDate({"DTSTART;TZID=Europe/Berlin:20270330T100000", "DUE:20270401T160000Z"}, due,
                     "20270320T170000Z"),
            "-DTSTART;TZID=Europe/Berlin:20270330T100000\n-DUE:20270401T160000Z\n"
            "+DTSTART;TZID=Europe/Berlin:20270318T100000\n+DUE:20270320T170000Z\n");
  EXPECT_EQ(withDate({"DTSTART:20270330T100000Z", "DURATION:P2D"}, due, "20270320T100000Z"),
            "-DTSTART:20270330T100000Z\n-DURATION:P2D\n+DTSTART:20270318T100000Z\n"
            "+DUE:20270320T100000Z\n");
  EXPECT_EQ(
      withDate({"DTSTART;VALUE=DATE:20270330", "DUE;VALUE=DATE:20270401"}, due, "20270319T230000Z"),
      "-DTSTART;VALUE=DATE:20270330\n-DUE;VALUE=DATE:20270401\n"
      "+DTSTART;VALUE=DATE:20270318\n+DUE;VALUE=DATE:20270320\n");
  // The same day is not before the due date.
  EXPECT_EQ(
      withDate({"DTSTART;VALUE=DATE:20270330", "DUE;VALUE=DATE:20270331"}, due, "20270329T220000Z"),
      "-DTSTART;VALUE=DATE:20270330\n-DUE;VALUE=DATE:20270331\n"
      "+DTSTART;VALUE=DATE:20270329\n+DUE;VALUE=DATE:20270330\n");
  EXPECT_EQ(withDate({"DTSTART:20270330T100000Z", "DUE:20270330T110000Z"}, due, "20270330T100000Z"),
            "-DTSTART:20270330T100000Z\n-DUE:20270330T110000Z\n+DTSTART:20270330T090000Z\n"
            "+DUE:20270330T100000Z\n");
}

TEST_F(IcalWrite, StartOnDayOfDueStaysThere) {
  EXPECT_EQ(withDate({"DTSTART;VALUE=DATE:20270330", "DUE;VALUE=DATE:20270330"},
                     Task::TASK_FIELD_DUE, "20270319T230000Z"),
            "-DTSTART;VALUE=DATE:20270330\n-DUE;VALUE=DATE:20270330\n"
            "+DTSTART;VALUE=DATE:20270320\n+DUE;VALUE=DATE:20270320\n");
}

TEST_F(IcalWrite, StartThatCannotPrecedeDueIsRemoved) {
  const Field due = Task::TASK_FIELD_DUE;
  EXPECT_EQ(withDate({"DTSTART:20270424T100000Z"}, due, "20270228T230000Z"),
            "-DTSTART:20270424T100000Z\n+DUE;VALUE=DATE:20270301\n");
  EXPECT_EQ(withDate({"DTSTART;VALUE=DATE:20270424"}, due, "20270423T220000Z"),
            "-DTSTART;VALUE=DATE:20270424\n+DUE;VALUE=DATE:20270424\n");
  EXPECT_EQ(withDate({"DTSTART:20270424T100000Z", "DUE:20270424T100000Z"}, due, "20270423T100000Z"),
            "-DTSTART:20270424T100000Z\n-DUE:20270424T100000Z\n+DUE:20270423T100000Z\n");
  // The start of a to-do cannot be a day if the due date has a time.
  EXPECT_EQ(
      withDate({"DTSTART;VALUE=DATE:20270424", "DUE;VALUE=DATE:20270425"}, due, "20270425T160000Z"),
      "-DTSTART;VALUE=DATE:20270424\n-DUE;VALUE=DATE:20270425\n+DUE:20270425T160000Z\n");
}

TEST_F(IcalWrite, AlarmsOfRemovedStartAreRelativeToDue) {
  EXPECT_EQ(changesOf({"DTSTART:20270424T100000Z", "BEGIN:VALARM", "TRIGGER;X-A=b:-PT1H",
                       "END:VALARM", "BEGIN:VALARM", "TRIGGER;X-A=b;RELATED=END:-PT2H",
                       "END:VALARM", "BEGIN:VALARM", "TRIGGER;RELATED=START:-PT3H", "END:VALARM"},
                      [](Task& task) {
                        task.setDateTime(Task::TASK_FIELD_DUE, utc("20270301T100000Z"));
                        task.setDateTime(Task::TASK_FIELD_ALARM, utc("20270301T090000Z"));
                      }),
            "-DTSTART:20270424T100000Z\n+DUE:20270301T100000Z\n-TRIGGER;X-A=b:-PT1H\n"
            "+TRIGGER;RELATED=END;X-A=b:-PT1H\n-TRIGGER;RELATED=START:-PT3H\n"
            "+TRIGGER;RELATED=END:-PT3H\n");
}

TEST_F(IcalWrite, RepeatingTodoKeepsStart) {
  const Field due = Task::TASK_FIELD_DUE;
  EXPECT_EQ(withDate({"DTSTART:20270424T100000Z", "RRULE:FREQ=WEEKLY"}, due, "20270301T100000Z"),
            "-DTSTART:20270424T100000Z\n+DTSTART:20270301T100000Z\n+DUE:20270301T100000Z\n");
  // A day that gets a time is the same day for the rule.
  EXPECT_EQ(withDate({"DTSTART;VALUE=DATE:20270424", "DUE;VALUE=DATE:20270425",
                      "RRULE:FREQ=WEEKLY;BYDAY=SA"},
                     due, "20270425T160000Z"),
            "-DTSTART;VALUE=DATE:20270424\n-DUE;VALUE=DATE:20270425\n"
            "+DTSTART:20270424T000000\n+DUE:20270425T180000\n");
  EXPECT_EQ(withDate({"DTSTART;VALUE=DATE:20270424", "DUE;VALUE=DATE:20270425", "RDATE:20270501"},
                     due, "20270420T160000Z"),
            "-DTSTART;VALUE=DATE:20270424\n-DUE;VALUE=DATE:20270425\n"
            "+DTSTART:20270419T000000\n+DUE:20270420T180000\n");
}

TEST_F(IcalWrite, OtherEditsKeepStartThatIsNotBeforeDue) {
  EXPECT_EQ(withText({"DTSTART;VALUE=DATE:20270424", "DUE:20270301T100000Z"},
                     Task::TASK_FIELD_SUMMARY, "a"),
            "+SUMMARY:a\n");
}

TEST_F(IcalWrite, DurationBecomesDue) {
  const Field due = Task::TASK_FIELD_DUE;
  EXPECT_EQ(withDate({"DTSTART:20261101T100000Z", "DURATION;X-A=b:PT1H", "X-C:d"}, due,
                     "20261101T120000Z"),
            "-DURATION;X-A=b:PT1H\n+DUE:20261101T120000Z\n");
  EXPECT_EQ(withDate({"DTSTART:20261101T100000Z", "DURATION:PT1H"}, due, nullptr),
            "-DURATION:PT1H\n");
}

TEST_F(IcalWrite, KeepsDueThatARecordCannotHold) {
  const Field due = Task::TASK_FIELD_DUE;
  EXPECT_EQ(withText({"DUE:20991231T000000Z"}, Task::TASK_FIELD_SUMMARY, "a"), "+SUMMARY:a\n");
  EXPECT_EQ(withDate({"DUE:20991231T000000Z"}, due, "20261101T120000Z"),
            "-DUE:20991231T000000Z\n+DUE:20261101T120000Z\n");
  EXPECT_EQ(withDate({"DUE:20991231T000000Z"}, due, "20991231T000000Z"), "");
}

TEST_F(IcalWrite, AlarmThatMovedWithDueIsKept) {
  const auto move = [](const char* alarm) {
    return changesOf({"DUE:20261101T100000Z", "BEGIN:VALARM", "TRIGGER;RELATED=END;X-A=b:-PT1H",
                      "X-SNOOZED:1", "END:VALARM"},
                     [&](Task& task) {
                       task.setDateTime(Task::TASK_FIELD_DUE, utc("20261102T100000Z"));
                       task.setDateTime(Task::TASK_FIELD_ALARM, utc(alarm));
                     });
  };
  EXPECT_EQ(move("20261102T090000Z"), "-DUE:20261101T100000Z\n+DUE:20261102T100000Z\n");
  EXPECT_EQ(move("20261101T090000Z"),
            "-DUE:20261101T100000Z\n+DUE:20261102T100000Z\n-TRIGGER;RELATED=END;X-A=b:-PT1H\n"
            "+TRIGGER;VALUE=DATE-TIME;X-A=b:20261101T090000Z\n");
}

TEST_F(IcalWrite, AddsAndRemovesAlarms) {
  const Field alarm = Task::TASK_FIELD_ALARM;
  EXPECT_EQ(withDate({"SUMMARY:a,b"}, alarm, "20261101T090000Z"),
            "+BEGIN:VALARM\n+ACTION:DISPLAY\n+DESCRIPTION:a\\,b\n"
            "+TRIGGER;VALUE=DATE-TIME:20261101T090000Z\n+END:VALARM\n");
  EXPECT_EQ(
      withDate({"BEGIN:VALARM", "TRIGGER:-PT1H", "X-A:b", "END:VALARM"}, alarm, "20261101T090000Z"),
      "+BEGIN:VALARM\n+ACTION:DISPLAY\n+DESCRIPTION:Reminder\n"
      "+TRIGGER;VALUE=DATE-TIME:20261101T090000Z\n+END:VALARM\n")
      << "an alarm that cannot be computed stays";
  const QByteArray two =
      todoOf({"BEGIN:VALARM", "TRIGGER:20261101T090000Z", "X-A:1", "END:VALARM", "BEGIN:VALARM",
              "TRIGGER:20261101T100000Z", "X-A:2", "END:VALARM"});
  TASK_ENG_Ical calendar(two);
  Task task = calendar.task(0);
  task.setDateTime(alarm, Task::noDate());
  EXPECT_TRUE(calendar.replace(0, task));
  EXPECT_FALSE(calendar.text().contains("X-A:1"));
  EXPECT_EQ(dateText(calendar.task(0), alarm), "20261101T100000Z");
}

TEST_F(IcalWrite, NewAlarmIsNotPartOfAnUnfinishedComponent) {
  for (const QByteArray& last : {QByteArray("X-A:b"), QByteArray("END:VALARM")}) {
    TASK_ENG_Ical calendar(todoOf({"BEGIN:VALARM", "TRIGGER:soon", "END:VALARM", "BEGIN:X", last}));
    Task task = calendar.task(0);
    task.setDateTime(Task::TASK_FIELD_ALARM, utc("20261101T090000Z"));
    EXPECT_TRUE(calendar.replace(0, task));
    EXPECT_EQ(dateText(TASK_ENG_Ical(calendar.text()).task(0), Task::TASK_FIELD_ALARM),
              "20261101T090000Z");
    EXPECT_LT(calendar.text().indexOf("TRIGGER:soon"), calendar.text().indexOf("20261101T090000Z"));
  }
}

TEST_F(IcalWrite, RelativeAlarmThatLosesItsDateBecomesAbsolute) {
  EXPECT_EQ(withDate({"DUE:20261101T100000Z", "BEGIN:VALARM", "TRIGGER:-PT1H", "END:VALARM"},
                     Task::TASK_FIELD_DUE, nullptr),
            "-DUE:20261101T100000Z\n-TRIGGER:-PT1H\n+TRIGGER;VALUE=DATE-TIME:20261101T090000Z\n");
}

TEST_F(IcalWrite, RemovesRelativeAlarmTogetherWithItsDate) {
  EXPECT_EQ(changesOf({"DUE:20261101T100000Z", "BEGIN:VALARM", "TRIGGER:-PT1H", "END:VALARM"},
                      [](Task& task) {
                        task.setDateTime(Task::TASK_FIELD_DUE, Task::noDate());
                        task.setDateTime(Task::TASK_FIELD_ALARM, Task::noDate());
                      }),
            "-DUE:20261101T100000Z\n-BEGIN:VALARM\n-TRIGGER:-PT1H\n-END:VALARM\n");
}

TEST_F(IcalWrite, StampsAreThoseOfTheTask) {
  const QByteArray text = todoOf(
      {"DTSTAMP:20200101T000000Z", "LAST-MODIFIED:20200101T000000Z", "SEQUENCE:41", "SUMMARY:a"});
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(0);
  task.setDateTime(Task::TASK_FIELD_REVISION, utc("20261111T111111Z"));
  EXPECT_FALSE(calendar.replace(0, task)) << "a revision alone is not a change";
  task.setString(Task::TASK_FIELD_SUMMARY, "b");
  EXPECT_TRUE(calendar.replace(0, task));
  EXPECT_EQ(differenceOf(text, calendar.text()),
            "-DTSTAMP:20200101T000000Z\n-LAST-MODIFIED:20200101T000000Z\n-SEQUENCE:41\n"
            "-SUMMARY:a\n+DTSTAMP:20261111T111111Z\n+LAST-MODIFIED:20261111T111111Z\n"
            "+SEQUENCE:42\n+SUMMARY:b\n");
}

TEST_F(IcalWrite, SequenceEndsAtItsLastNumber) {
  const auto next = [](const QByteArray& sequence) {
    TASK_ENG_Ical calendar(todoOf({"SEQUENCE:" + sequence}));
    Task task = calendar.task(0);
    task.setPriority(1);
    EXPECT_TRUE(calendar.replace(0, task));
    const QByteArray text = calendar.text();
    const qsizetype at = text.indexOf("SEQUENCE:") + 9;
    return text.mid(at, text.indexOf("\r\n", at) - at).toStdString();
  };
  EXPECT_EQ(next("2147483646"), "2147483647");
  EXPECT_EQ(next("2147483647"), "2147483647");
  EXPECT_EQ(next("many"), "1");
  EXPECT_EQ(next("-5"), "1");
}

TEST_F(IcalWrite, NeverReplacesUid) {
  EXPECT_EQ(withText({"UID:a"}, Task::TASK_FIELD_UUID, "b"), "");
}

Task fullTask() {
  Task task;
  task.setString(Task::TASK_FIELD_UUID, "00000000-0000-4000-8000-000000000001");
  task.setString(Task::TASK_FIELD_SUMMARY, "Buy milk, bread");
  task.setString(Task::TASK_FIELD_NOTE, "One\nTwo");
  task.setString(Task::TASK_FIELD_CATEGORY, "home");
  task.setPriority(1);
  task.setStatus(2);
  task.setDateTime(Task::TASK_FIELD_DUE, utc("20261130T230000Z"));
  task.setDateTime(Task::TASK_FIELD_ALARM, utc("20261130T080000Z"));
  task.setDateTime(Task::TASK_FIELD_REVISION, utc("20261111T111111Z"));
  return task;
}

TEST_F(IcalWrite, WritesNewTodo) {
  EXPECT_EQ(TASK_ENG_Ical::write(fullTask()).toStdString(),
            linesOf({"BEGIN:VCALENDAR",
                     "VERSION:2.0",
                     "PRODID:-//ulotaskengine//ulotaskengine//EN",
                     "BEGIN:VTODO",
                     "UID:00000000-0000-4000-8000-000000000001",
                     "DTSTAMP:20261111T111111Z",
                     "LAST-MODIFIED:20261111T111111Z",
                     "SUMMARY:Buy milk\\, bread",
                     "DESCRIPTION:One\\nTwo",
                     "CATEGORIES:home",
                     "PRIORITY:1",
                     "STATUS:IN-PROCESS",
                     "DUE;VALUE=DATE:20261201",
                     "BEGIN:VALARM",
                     "ACTION:DISPLAY",
                     "DESCRIPTION:Buy milk\\, bread",
                     "TRIGGER;VALUE=DATE-TIME:20261130T080000Z",
                     "END:VALARM",
                     "END:VTODO",
                     "END:VCALENDAR"})
                .toStdString());
}

TEST_F(IcalWrite, ReadsBackWhatItWrites) {
  const Task task = fullTask();
  const Task read = TASK_ENG_Ical(TASK_ENG_Ical::write(task)).task(0);
  EXPECT_EQ(taskText(read), taskText(task));
  EXPECT_EQ(read.getString(Task::TASK_FIELD_UUID), task.getString(Task::TASK_FIELD_UUID));
  EXPECT_EQ(dateText(read, Task::TASK_FIELD_REVISION), "20261111T111111Z");
}

TEST_F(IcalWrite, NewTodoGetsUid) {
  const Task read = TASK_ENG_Ical(TASK_ENG_Ical::write(Task())).task(0);
  EXPECT_EQ(read.getString(Task::TASK_FIELD_UUID).size(), 36);
  EXPECT_EQ(read.getStatusValue(), 1);
}

TEST_F(IcalWrite, WritesOverPreviousText) {
  const QByteArray previous = todoOf({"UID:a", "SUMMARY:a", "X-A:b"});
  Task task = TASK_ENG_Ical(previous).task(0);
  EXPECT_EQ(TASK_ENG_Ical::write(task, previous), previous);
  task.setString(Task::TASK_FIELD_SUMMARY, "c");
  EXPECT_TRUE(TASK_ENG_Ical::write(task, previous).contains("\r\nX-A:b\r\n"));
  // A text that cannot be read is not continued.
  EXPECT_TRUE(TASK_ENG_Ical::write(task, "BEGIN:VCALENDAR").startsWith("BEGIN:VCALENDAR\r\nVER"));
}

}  // namespace
