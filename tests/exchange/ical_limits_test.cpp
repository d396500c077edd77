// Limits, one under, at and one over; and texts that are made to take long.
#include "berlin_time.h"
#include "calendar_text.h"
#include "ical_text.h"
#include "todo_recurrence.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;

// Reads a text that must come back as it is.
TASK_ENG_Ical::Report reportOf(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  EXPECT_TRUE(calendar.text() == text);
  EXPECT_EQ(calendar.count() > 0, calendar.report().failure == TASK_ENG_Ical::none);
  return calendar.report();
}
std::string problemOf(const TASK_ENG_Ical::Report& report) {
  return report.problems.empty() ? "" : report.problems.front().text.toStdString();
}

TEST(IcalLimits, SizeOfText) {
  QByteArray text = todoOf({"SUMMARY:a", "X-A:"});
  const qsizetype rest = static_cast<qsizetype>(ulo::calendarTextLimit) - text.size();
  text.insert(text.indexOf("X-A:") + 4, QByteArray(rest, 'x'));
  EXPECT_EQ(reportOf(text.chopped(1)).failure, TASK_ENG_Ical::none);
  EXPECT_EQ(reportOf(text).failure, TASK_ENG_Ical::none);
  const TASK_ENG_Ical::Report report = reportOf(text + "\n");
  EXPECT_EQ(report.failure, TASK_ENG_Ical::tooLarge);
  EXPECT_EQ(problemOf(report), "the text has more than 64 MiB");
}

TEST(IcalLimits, DepthOfComponents) {
  const auto failure = [](std::size_t depth) {
    const auto count = static_cast<qsizetype>(depth - 2);
    return reportOf(todoOf({QByteArray("BEGIN:X\r\n").repeated(count) + "X-A:b\r\n" +
                            QByteArray("END:X\r\n").repeated(count)}));
  };
  EXPECT_EQ(failure(ulo::calendarNestingLimit - 1).failure, TASK_ENG_Ical::none);
  EXPECT_EQ(failure(ulo::calendarNestingLimit).failure, TASK_ENG_Ical::none);
  const TASK_ENG_Ical::Report report = failure(ulo::calendarNestingLimit + 1);
  EXPECT_EQ(report.failure, TASK_ENG_Ical::tooLarge);
  EXPECT_EQ(problemOf(report), "components are nested deeper than 32 levels");
  EXPECT_EQ(failure(100'000).failure, TASK_ENG_Ical::tooLarge);
}

TEST(IcalLimits, NumberOfComponents) {
  const QByteArray empty = "BEGIN:A\nEND:A\n";
  const auto failure = [&](std::size_t count) {
    return reportOf(
        calendarOf("BEGIN:VTODO\nEND:VTODO\n" + empty.repeated(static_cast<qsizetype>(count - 1))));
  };
  EXPECT_EQ(failure(ulo::componentLimit - 1).failure, TASK_ENG_Ical::none);
  EXPECT_EQ(failure(ulo::componentLimit).failure, TASK_ENG_Ical::none);
  const TASK_ENG_Ical::Report report = failure(ulo::componentLimit + 1);
  EXPECT_EQ(report.failure, TASK_ENG_Ical::tooLarge);
  EXPECT_EQ(problemOf(report), "the text has more than 500000 components");
}

TEST(IcalLimits, LinesOfComponent) {
  // BEGIN and END count.
  const auto failure = [](std::size_t lines) {
    return reportOf(todoOf({QByteArray("a\n").repeated(static_cast<qsizetype>(lines - 3)) + "b"}));
  };
  EXPECT_EQ(failure(ulo::componentLineLimit - 1).failure, TASK_ENG_Ical::none);
  EXPECT_EQ(failure(ulo::componentLineLimit).failure, TASK_ENG_Ical::none);
  const TASK_ENG_Ical::Report report = failure(ulo::componentLineLimit + 1);
  EXPECT_EQ(report.failure, TASK_ENG_Ical::tooLarge);
  EXPECT_EQ(problemOf(report), "the component has more than 250000 lines");
}

TEST(IcalLimits, TextsOfTodos) {
  // Every to-do repeats the lines of the calendar.
  const qsizetype size = qsizetype{1} << 20;
  const auto count = static_cast<qsizetype>(TASK_ENG_Ical::textsLimit) / size;
  const QByteArray frame = "BEGIN:VCALENDAR\nVERSION:2.0\nX-A:";
  const QByteArray todo = "BEGIN:VTODO\nSUMMARY:a\nEND:VTODO\n";
  const QByteArray end = "\nEND:VCALENDAR\n";
  const QByteArray filler(size - frame.size() - todo.size() - 1 - end.size() + 1, 'x');
  const auto read = [&](const QByteArray& more) {
    TASK_ENG_Ical::Report report;
    QByteArray last = todo;
    last.replace("SUMMARY:a", "SUMMARY:" + more);
    const std::size_t todos =
        TASK_ENG_Ical::read(frame + filler + "\n" + todo.repeated(count - 1) + last + end.mid(1),
                            &report)
            .size();
    EXPECT_EQ(todos == 0, report.failure == TASK_ENG_Ical::tooLarge);
    return report;
  };
  EXPECT_EQ(read("").failure, TASK_ENG_Ical::none);
  EXPECT_EQ(read("a").failure, TASK_ENG_Ical::none);
  const TASK_ENG_Ical::Report report = read("aa");
  EXPECT_EQ(report.failure, TASK_ENG_Ical::tooLarge);
  EXPECT_EQ(problemOf(report), "the texts of the to-dos have more than 128 MiB");
}

TEST(IcalLimits, ListedProblems) {
  const auto listed = [](int count) {
    QByteArray text;
    for (int i = 0; i < count; ++i)
      text += "BEGIN:VTODO\r\nSTATUS:odd\r\nEND:VTODO\r\n";
    const TASK_ENG_Ical::Report report = reportOf(calendarOf(text));
    EXPECT_EQ(report.problemCount, static_cast<std::size_t>(count));
    return report.problems.size();
  };
  EXPECT_EQ(listed(99), 99U);
  EXPECT_EQ(listed(100), 100U);
  EXPECT_EQ(listed(101), 100U);
  // Faults of the structure alike.
  const auto faults = [](int count) {
    const TASK_ENG_Ical::Report report =
        reportOf(todoOf({QByteArray("END:X\r\n").repeated(count) + "X-A:b"}));
    EXPECT_EQ(report.problemCount, static_cast<std::size_t>(count));
    return report.problems.size();
  };
  EXPECT_EQ(faults(100), 100U);
  EXPECT_EQ(faults(101), 100U);
}

TEST(IcalLimits, RecurrenceDates) {
  const auto move = [](std::size_t count) {
    // Half of them of each kind.
    const auto half = static_cast<qsizetype>(count / 2 - 1);
    return TASK_ENG_Ical(
               todoOf(
                   {"DTSTART:20261201T100000Z",
                    "RDATE:20261203T100000Z" + QByteArray(",20261204T100000Z").repeated(half),
                    "EXDATE:20261202T100000Z" + QByteArray(",20261202T100000Z")
                                                    .repeated(half + static_cast<int>(count % 2))}))
        .moveToNextDate(0);
  };
  EXPECT_EQ(move(ulo::recurrenceDateLimit - 1), TASK_ENG_Ical::moved);
  EXPECT_EQ(move(ulo::recurrenceDateLimit), TASK_ENG_Ical::moved);
  EXPECT_EQ(move(ulo::recurrenceDateLimit + 1), TASK_ENG_Ical::notComputed);
}

// Reads, edits and moves a to-do; takes the test's time limit if a step is not linear.
void useAll(const QByteArray& text) {
  TASK_ENG_Ical calendar(text);
  EXPECT_TRUE(calendar.text() == text);
  ASSERT_GT(calendar.count(), 0);
  Task task = calendar.task(0);
  EXPECT_FALSE(calendar.replace(0, task));
  task.setString(Task::TASK_FIELD_SUMMARY, "edited");
  task.setString(Task::TASK_FIELD_NOTE, QString());
  task.setString(Task::TASK_FIELD_CATEGORY, QString());
  task.setStatus(0);
  const QDateTime date(QDate(2026, 11, 20), QTime(12, 0));
  for (const auto field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_END, Task::TASK_FIELD_ALARM})
    task.setDateTime(field, date);
  EXPECT_TRUE(calendar.replace(0, task));
  for (const auto field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_END, Task::TASK_FIELD_ALARM})
    task.setDateTime(field, Task::noDate());
  EXPECT_TRUE(calendar.replace(0, task));
  static_cast<void>(calendar.moveToNextDate(0));
  static_cast<void>(calendar.text(0));
  static_cast<void>(calendar.report());
}

TEST(IcalLimits, ManyLinesOfOneKind) {
  for (const QByteArray& line :
       {QByteArray("X-A:b\r\n"), QByteArray("SUMMARY:a\r\n"), QByteArray("DESCRIPTION:a\r\n"),
        QByteArray("DUE:20261201\r\n"), QByteArray("COMPLETED:20261201T100000Z\r\n"),
        QByteArray("CATEGORIES:\r\n"), QByteArray("RRULE:FREQ=DAILY\r\n"),
        QByteArray("EXDATE:20261201\r\n"), QByteArray("END:X\r\n"), QByteArray("\r\n"),
        QByteArray("X;TZID=A:b\r\n"), QByteArray("X\r\n :b\r\n")}) {
    SCOPED_TRACE(line.toStdString());
    useAll(todoOf({line.repeated(100'000) + "X-LAST:1"}));
  }
  useAll(todoOf({QByteArray("BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n").repeated(33'000) +
                 "DUE:soon"}));
}

TEST(IcalLimits, LongLines) {
  const QByteArray x(1'000'000, 'x');
  for (const QByteArray& line :
       {"SUMMARY:" + x, "SUMMARY:a" + QByteArray("\r\n b").repeated(300'000), x + ":a",
        "SUMMARY;" + x + ":a", "SUMMARY;A=\"" + QByteArray("\";A=\"").repeated(200'000) + ":a",
        "SUMMARY;A=" + QByteArray("\"").repeated(999'999) + ":a",
        "SUMMARY" + QByteArray(";A=b").repeated(300'000) + ":a",
        "SUMMARY:" + QByteArray("\\").repeated(1'000'000),
        "SUMMARY:" + QByteArray("\xE4").repeated(1'000'000),
        "CATEGORIES:" + QByteArray("\\,").repeated(500'000),
        "CATEGORIES:" + QByteArray(",").repeated(1'000'000), "DUE:" + x,
        "RRULE:FREQ=DAILY" + QByteArray(";BYDAY=MO").repeated(100'000),
        "RRULE:FREQ=DAILY;BYDAY=MO" + QByteArray(",MO").repeated(300'000),
        "DURATION:P" + QByteArray(1'000'000, '1') + "D"}) {
    SCOPED_TRACE(line.left(30).toStdString());
    useAll(todoOf({line}));
  }
  useAll("BEGIN:VCALENDAR\rVERSION:2.0\rBEGIN:VTODO\rX-A:b" + QByteArray("\r").repeated(200'000) +
         "END:VTODO\rEND:VCALENDAR\r");
}

TEST(IcalLimits, ManyTodosAreReplacedInLinearTime) {
  constexpr int count = 20'000;
  QByteArray todos;
  for (int i = 0; i < count; ++i)
    todos += "BEGIN:VTODO\r\nUID:" + QByteArray::number(i) + "\r\nEND:VTODO\r\n";
  TASK_ENG_Ical calendar(calendarOf(todos));
  ASSERT_EQ(calendar.count(), count);
  for (int i = 0; i < count; ++i) {
    Task task = calendar.task(i);
    task.setPriority(1);
    EXPECT_TRUE(calendar.replace(i, task));
  }
  EXPECT_EQ(calendar.text().count("PRIORITY:1"), count);
  TASK_ENG_Ical all;
  for (int i = 0; i < count; ++i)
    all.append(calendar, i);
  EXPECT_EQ(TASK_ENG_Ical(all.text()).count(), count);
}

}  // namespace
