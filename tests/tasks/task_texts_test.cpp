// The texts of tasks.

#include "task_texts.h"
#include "tasks_test.h"

namespace {

Task withSummary(const QString& summary) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, summary);
  return task;
}

TEST(TaskTexts, TitleIsOneLineWithoutControlCharacters) {
  EXPECT_EQ(tasks::titleText(withSummary(QStringLiteral("a\r\nb\tc\u0007\u202Ed"))), "a b cd");
  EXPECT_EQ(tasks::titleText(withSummary(QString())), "Untitled");
  EXPECT_EQ(tasks::titleText(withSummary(QStringLiteral(" \n\u0001"))), "Untitled");
}

TEST(TaskTexts, RecognizesNamesThatMeanNoCategory) {
  for (const QString& name : {QString(), QString(""), QString("none"), QString("None")}) {
    EXPECT_TRUE(tasks::isNoCategory(name));
    EXPECT_EQ(tasks::categoryText(name), "No Category");
  }
  EXPECT_FALSE(tasks::isNoCategory("nones"));
}

TEST(TaskTexts, DefaultCategoriesAreTranslated) {
  application().setLanguages({"de"});
  EXPECT_EQ(tasks::categoryText("meeting"), "Besprechung");
  EXPECT_EQ(tasks::categoryText("Garten\n1"), "Garten 1");
  application().setLanguages({"en"});
  EXPECT_EQ(tasks::categoryText("meeting"), "Meeting");
}

TEST(TaskTexts, TaskIsOverdueAfterItsDueDay) {
  const QDate today(2027, 3, 5);
  Task task = withSummary("a");
  task.setStatus(1);
  EXPECT_FALSE(tasks::isOverdue(task, today));
  task.setDateTime(Task::TASK_FIELD_DUE, QDateTime(today, QTime(0, 0)));
  EXPECT_FALSE(tasks::isOverdue(task, today));
  EXPECT_TRUE(tasks::isOverdue(task, today.addDays(1)));
  task.setStatus(0);
  EXPECT_FALSE(tasks::isOverdue(task, today.addDays(1)));
}

TEST(TaskTexts, DaysNearTodayHaveNames) {
  const QDate today(2027, 3, 5);
  EXPECT_EQ(tasks::dayText(today.addDays(-1), today), "Yesterday");
  EXPECT_EQ(tasks::dayText(today, today), "Today");
  EXPECT_EQ(tasks::dayText(today.addDays(1), today), "Tomorrow");
  EXPECT_THAT(tasks::dayText(today.addDays(2), today).toStdString(), testing::HasSubstr("7"));
}

}  // namespace
