// Compares what is read from each text in tests/golden/ical, and each text after an edit of every
// field, with the expected files. ULO_RENEW_GOLDEN=1 rewrites these.
#include "berlin_time.h"
#include "golden_files.h"
#include "ical_text.h"
#include "test_clock.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Task = ZTASK_ENG_Task;

const fs::path goldenDirectory = fs::path(ULO_SOURCE_DIR) / "tests/golden/ical";

QDateTime local(const char* text) {
  return UTIL_TimeConversion::fromISO8601(QCString(text));
}

void editEveryField(Task& task) {
  task.setString(Task::TASK_FIELD_SUMMARY, "Edited; with, signs");
  task.setString(Task::TASK_FIELD_NOTE, "One\nTwo");
  task.setString(Task::TASK_FIELD_CATEGORY, "edited");
  task.setPriority(5);
  task.setStatus(0);
  task.setDateTime(Task::TASK_FIELD_DUE, local("20261205T101500"));
  task.setDateTime(Task::TASK_FIELD_END, local("20261121T080000"));
  task.setDateTime(Task::TASK_FIELD_ALARM, local("20261204T080000"));
  task.setDateTime(Task::TASK_FIELD_REVISION, local("20261121T080000"));
}

class IcalGolden : public testing::TestWithParam<std::string> {};

TEST_P(IcalGolden, MatchesExpectedFiles) {
  setEngineNow(local("20261120T130000"));
  const QByteArray text =
      QByteArray::fromStdString(contentOf(goldenDirectory / (GetParam() + ".in")));
  TASK_ENG_Ical calendar(text);
  EXPECT_EQ(calendar.text(), text);
  const TASK_ENG_Ical::Report report = calendar.report();
  std::string fields = "failure " + std::to_string(report.failure) + ", " +
                       std::to_string(report.todos) + " to-dos, " +
                       std::to_string(report.otherComponents) + " others\n" + problemsOf(text);
  for (int i = 0; i < calendar.count(); ++i)
    fields += "\nuuid " + quoted(calendar.task(i).getString(Task::TASK_FIELD_UUID)) + "\n" +
              taskText(calendar.task(i)) + "repeats " + std::to_string(int{calendar.repeats(i)}) +
              "\n";
  compareWithFile(fields, goldenDirectory / (GetParam() + ".tasks"));

  for (int i = 0; i < calendar.count(); ++i) {
    EXPECT_EQ(calendar.moveToNextDate(i),
              calendar.repeats(i) ? TASK_ENG_Ical::moved : TASK_ENG_Ical::noRule);
    Task task = calendar.task(i);
    editEveryField(task);
    calendar.replace(i, task);
  }
  compareWithFile(calendar.text().toStdString(), goldenDirectory / (GetParam() + ".edited"));
  setEngineNow(QDateTime());
}

INSTANTIATE_TEST_SUITE_P(Ical, IcalGolden, testing::ValuesIn(caseNames(goldenDirectory)),
                         [](const auto& info) { return info.param; });

}  // namespace
