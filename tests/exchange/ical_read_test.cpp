// What a to-do of a text is as a record.
#include "berlin_time.h"
#include "ical_text.h"

#include <gtest/gtest.h>

namespace {

using Task = ZTASK_ENG_Task;

std::string due(std::initializer_list<QByteArray> lines) {
  return dateText(taskOf(lines), Task::TASK_FIELD_DUE);
}
std::string alarm(std::initializer_list<QByteArray> lines) {
  return dateText(taskOf(lines), Task::TASK_FIELD_ALARM);
}

TEST(IcalRead, ReadsEveryField) {
  const Task task = taskOf(
      {"UID:4711@example.org", "DTSTAMP:20261101T080000Z", "LAST-MODIFIED:20261102T090000Z",
       "SUMMARY:Buy milk\\, bread", "DESCRIPTION:One\\nTwo\\NThree\\; four \\\\ five",
       "CATEGORIES:Home\\, sweet,Errands", "CATEGORIES:Third", "PRIORITY:3", "STATUS:IN-PROCESS",
       "DUE;VALUE=DATE:20261201", "COMPLETED:20261130T080000Z", "BEGIN:VALARM", "ACTION:DISPLAY",
       "TRIGGER;VALUE=DATE-TIME:20261130T070000Z", "END:VALARM"});
  EXPECT_EQ(taskText(task), "summary \"Buy milk, bread\"\n"
                            "note \"One\\nTwo\\nThree; four \\\\ five\"\n"
                            "category \"Home, sweet\"\nstatus 2\npriority 3\n"
                            "due 20261130T230000Z\nend 20261130T080000Z\n"
                            "alarm 20261130T070000Z\n");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_UUID), "4711@example.org");
  EXPECT_EQ(dateText(task, Task::TASK_FIELD_REVISION), "20261102T090000Z");
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
}

TEST(IcalRead, EmptyTodoHasDefaults) {
  const Task task = taskOf({});
  EXPECT_EQ(
      taskText(task),
      "summary null\nnote null\ncategory null\nstatus 1\npriority 0\ndue -\nend -\nalarm -\n");
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_UUID).isNull());
}

TEST(IcalRead, IgnoresLetterCaseAndFolding) {
  const Task task = taskOf({"summ\r\n ary;language=de:Gr\xC3\r\n \xBC\xC3\x9F\r\n\t e",
                            "Status:completed", "priority: 2 "});
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY).toStdString(), "Gr\xC3\xBC\xC3\x9F e");
  EXPECT_EQ(task.getStatusValue(), 0);
  EXPECT_EQ(task.getPriorityValue(), 2);
}

TEST(IcalRead, DoesNotTruncateTexts) {
  const QByteArray longText(10000, 'x');
  const Task task = taskOf({"SUMMARY:" + longText, "DESCRIPTION:" + longText});
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY).size(), 10000);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE).size(), 10000);
}

TEST(IcalRead, ReadsInvalidUtf8AsLatin1) {
  const QByteArray text = todoOf({"SUMMARY:K\xE4se", "DESCRIPTION:K\xC3\xA4se"});
  const Task task = TASK_ENG_Ical(text).task(0);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY).toStdString(), "K\xC3\xA4se");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE).toStdString(), "K\xC3\xA4se");
  EXPECT_EQ(problemsOf(text), "5: SUMMARY: not valid UTF-8; read as Latin-1\n");
  EXPECT_EQ(TASK_ENG_Ical(text).text(), text);
}

TEST(IcalRead, LeavesOutZeroBytes) {
  const Task task = taskOf({QByteArray("SUMMARY:a\0b", 11)});
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "ab");
}

TEST(IcalRead, StatusFollowsFromCompletion) {
  const auto status = [](std::initializer_list<QByteArray> lines) {
    return taskOf(lines).getStatusValue();
  };
  EXPECT_EQ(status({"COMPLETED:20261130T080000Z"}), 0);
  EXPECT_EQ(status({"PERCENT-COMPLETE:100"}), 0);
  EXPECT_EQ(status({"PERCENT-COMPLETE:99"}), 1);
  EXPECT_EQ(status({"STATUS:NEEDS-ACTION", "PERCENT-COMPLETE:100"}), 1);
  EXPECT_EQ(status({"STATUS:CANCELLED"}), 6);
}

TEST(IcalRead, PriorityMayHavePlusSign) {
  EXPECT_EQ(problemsOf(todoOf({"PRIORITY:+3"})), "");
  EXPECT_NE(problemsOf(todoOf({"PRIORITY:+"})), "");
}

TEST(IcalRead, ReportsValuesThatAreNotUnderstood) {
  EXPECT_EQ(problemsOf(todoOf({"STATUS:DONE", "PRIORITY:high", "DUE:tomorrow",
                               "COMPLETED:20261399T000000Z", "LAST-MODIFIED:20261101T250000Z",
                               "BEGIN:VALARM", "TRIGGER:soon", "END:VALARM", "BEGIN:VALARM",
                               "TRIGGER:-PT5M", "END:VALARM"})),
            "6: PRIORITY: not a number from 0 to 9; the to-do has none\n"
            "5: STATUS: not a known status; \"needs action\" is used\n"
            "7: DUE: \"tomorrow\" is not a valid date; it is ignored\n"
            "8: COMPLETED: \"20261399T000000Z\" is not a valid date; it is ignored\n"
            "9: LAST-MODIFIED: \"20261101T250000Z\" is not a valid date; it is ignored\n"
            "11: TRIGGER: \"soon\" is not a valid date; it is ignored\n"
            "14: TRIGGER: the to-do has no date to which the alarm is relative\n");
}

TEST(IcalRead, DueHasEveryForm) {
  EXPECT_EQ(due({"DUE;VALUE=DATE:20261201"}), "20261130T230000Z");
  EXPECT_EQ(due({"DUE:20261201"}), "20261130T230000Z");
  EXPECT_EQ(due({"DUE:20261201T180000"}), "20261201T170000Z");
  EXPECT_EQ(due({"DUE:20260701T180000"}), "20260701T160000Z");
  EXPECT_EQ(due({"DUE:20261201T180000Z"}), "20261201T180000Z");
  EXPECT_EQ(due({"DUE;TZID=America/New_York:20261201T180000"}), "20261201T230000Z");
  EXPECT_EQ(due({"DUE;TZID=\"America/New_York\":20261201T180000Z"}), "20261201T180000Z");
  // A leap second.
  EXPECT_EQ(due({"DUE:20161231T235960Z"}), "20161231T235959Z");
}

TEST(IcalRead, DueFollowsFromStartAndDuration) {
  EXPECT_EQ(due({"DTSTART:20261201T180000Z", "DURATION:PT1H30M"}), "20261201T193000Z");
  EXPECT_EQ(due({"DTSTART;VALUE=DATE:20261201", "DURATION:P1W"}), "20261207T230000Z");
  // Days are those of the calendar; hours are not.
  EXPECT_EQ(due({"DTSTART:20260328T120000", "DURATION:P1D"}), "20260329T100000Z");
  EXPECT_EQ(due({"DTSTART:20260328T120000", "DURATION:PT24H"}), "20260329T110000Z");
  EXPECT_EQ(due({"DTSTART:20261201T180000Z", "DURATION:P1D", "DUE:20261205T000000Z"}),
            "20261205T000000Z");
  EXPECT_EQ(due({"DURATION:P1D"}), "-");
  EXPECT_EQ(due({"DTSTART:20261201T180000Z", "DURATION:1 day"}), "-");
}

TEST(IcalRead, DatesOutsideTheRangeOfRecordsAreReported) {
  EXPECT_EQ(due({"DUE;VALUE=DATE:19700102"}), "19700101T230000Z");
  EXPECT_EQ(due({"DUE;VALUE=DATE:20380117"}), "20380116T230000Z");
  EXPECT_EQ(due({"DUE:20380117T235959"}), "20380117T225959Z");
  for (const char* date :
       {"DUE;VALUE=DATE:19700101", "DUE;VALUE=DATE:20380118", "DUE:19700101T225959Z",
        "DUE:20380117T230000Z", "DUE:99991231T235959Z", "DUE:00010101T000000Z"}) {
    EXPECT_EQ(due({date}), "-") << date;
    EXPECT_EQ(problemsOf(todoOf({date})),
              "5: DUE: a date outside January 2, 1970 to January 17, 2038 is ignored\n")
        << date;
  }
}

TEST(IcalRead, AlarmIsAbsoluteOrRelative) {
  EXPECT_EQ(alarm({"BEGIN:VALARM", "TRIGGER:20261130T070000Z", "END:VALARM"}), "20261130T070000Z");
  EXPECT_EQ(alarm({"DTSTART:20261130T070000Z", "DUE:20261201T070000Z", "BEGIN:VALARM",
                   "TRIGGER:-PT15M", "END:VALARM"}),
            "20261130T064500Z");
  EXPECT_EQ(
      alarm({"DUE:20261201T070000Z", "BEGIN:VALARM", "TRIGGER;RELATED=START:-PT15M", "END:VALARM"}),
      "20261201T064500Z");
  EXPECT_EQ(alarm({"DTSTART:20261130T070000Z", "DUE:20261201T070000Z", "BEGIN:VALARM",
                   "TRIGGER;related=end:-P1D", "END:VALARM"}),
            "20261130T070000Z");
  EXPECT_EQ(alarm({"DTSTART:20261130T070000Z", "DURATION:P1D", "BEGIN:VALARM",
                   "TRIGGER;RELATED=END:PT0S", "END:VALARM"}),
            "20261201T070000Z");
  EXPECT_EQ(alarm({"DUE;VALUE=DATE:20261201", "BEGIN:VALARM", "TRIGGER:PT9H", "END:VALARM"}),
            "20261201T080000Z");
}

TEST(IcalRead, FirstAlarmWithTimeCounts) {
  EXPECT_EQ(alarm({"BEGIN:VALARM", "TRIGGER:-PT15M", "END:VALARM", "BEGIN:VALARM", "ACTION:NONE",
                   "TRIGGER:19760401T005545Z", "END:VALARM", "BEGIN:VALARM", "BEGIN:X-INNER",
                   "TRIGGER:20270101T000000Z", "END:X-INNER", "TRIGGER:20261130T070000Z",
                   "END:VALARM", "BEGIN:VALARM", "TRIGGER:20261130T080000Z", "END:VALARM"}),
            "20261130T070000Z");
}

TEST(IcalRead, PropertiesOfNestedComponentsAreNotThoseOfTheTodo) {
  const Task task =
      taskOf({"BEGIN:VALARM", "SUMMARY:inner", "DESCRIPTION:inner", "END:VALARM", "SUMMARY:outer"});
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "outer");
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_NOTE).isNull());
}

}  // namespace
