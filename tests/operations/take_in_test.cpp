#include "take_in.h"

#include "store_test.h"

#include <algorithm>

namespace {

class TakeIn : public StoreTest {
protected:
  QString text(unsigned int uid, Task::TASK_FIELD_T field) { return get(uid).getString(field); }

  // Takes the task in and returns what was stored.
  Task takeIn(Task task, std::vector<ulo::ShortenedText>* shortened = nullptr) {
    EXPECT_EQ(ulo::takeIn(store(), task, shortened), TASK_ENG_OK);
    return get(task.getUINT32(Task::TASK_FIELD_UID));
  }
};

TEST_F(TakeIn, SetsOnlyMissingStatus) {
  Task without = task("a");
  without.setStatus(-1);
  EXPECT_EQ(takeIn(without).getStatusValue(), 1);
  Task delegated = task("b");
  delegated.setStatus(7);
  EXPECT_EQ(takeIn(delegated).getStatusValue(), 7);
}

TEST_F(TakeIn, SetsTimeOfChange) {
  Task old = task("a");
  old.setDateTime(Task::TASK_FIELD_REVISION, QDateTime(QDate(2020, 1, 2), QTime(3, 4)));
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  const QDateTime revision = takeIn(old).getDateTime(Task::TASK_FIELD_REVISION);
  EXPECT_GE(revision, before);
  EXPECT_LE(revision, QDateTime::currentDateTimeUtc());
}

TEST_F(TakeIn, AddsCategory) {
  Task shopping = task("a");
  shopping.setString(Task::TASK_FIELD_CATEGORY, "shopping");
  EXPECT_EQ(takeIn(shopping).getString(Task::TASK_FIELD_CATEGORY), "shopping");
  QValueList<QString> names;
  ASSERT_EQ(store().getAllCategories(names), TASK_ENG_OK);
  EXPECT_EQ(std::count(names.begin(), names.end(), QString("shopping")), 1);
}

TEST_F(TakeIn, KeepsTextsAtTheLimit) {
  Task longest = task("a");
  longest.setString(Task::TASK_FIELD_SUMMARY, QString(512, 's'));
  longest.setString(Task::TASK_FIELD_NOTE, QString(4002, 'n'));
  std::vector<ulo::ShortenedText> shortened;
  const Task stored = takeIn(longest, &shortened);
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_SUMMARY).size(), 512);
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_NOTE).size(), 4002);
  EXPECT_TRUE(shortened.empty());
}

TEST_F(TakeIn, ShortensAndReportsLongerTexts) {
  Task longer = task("a");
  longer.setString(Task::TASK_FIELD_SUMMARY, QString(513, 's'));
  longer.setString(Task::TASK_FIELD_NOTE, QString(4003, 'n'));
  std::vector<ulo::ShortenedText> shortened;
  const Task stored = takeIn(longer, &shortened);
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_SUMMARY), QString(512, 's'));
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_NOTE), QString(4002, 'n'));
  ASSERT_EQ(shortened.size(), 2U);
  EXPECT_EQ(shortened[0].field, Task::TASK_FIELD_SUMMARY);
  EXPECT_EQ(shortened[0].length, 513);
  EXPECT_EQ(shortened[0].kept, 512);
  EXPECT_EQ(shortened[1].field, Task::TASK_FIELD_NOTE);
  EXPECT_EQ(shortened[1].length, 4003);
  EXPECT_EQ(shortened[1].kept, 4002);
}

TEST_F(TakeIn, KeepsLettersWhole) {
  // A bicycle is a surrogate pair; the second letter is an "a" with a combining ring.
  for (const QString& letter :
       {QString::fromUtf8("\xF0\x9F\x9A\xB2"), QString::fromUtf8("a\xCC\x8A")}) {
    Task longer = task("a");
    longer.setString(Task::TASK_FIELD_SUMMARY, QString(511, 's') + letter);
    EXPECT_EQ(takeIn(longer).getString(Task::TASK_FIELD_SUMMARY), QString(511, 's'));
  }
}

TEST_F(TakeIn, LeavesReportUnchangedIfNothingWasStored) {
  Task other = task("a");
  other.setString(Task::TASK_FIELD_SUMMARY, QString(513, 's'));
  std::vector<ulo::ShortenedText> shortened;
  store();
  sql("CREATE TRIGGER refuse BEFORE INSERT ON task_table_task BEGIN SELECT RAISE(ABORT, "
      "'refused'); END");
  EXPECT_NE(ulo::takeIn(store(), other, &shortened), TASK_ENG_OK);
  EXPECT_TRUE(shortened.empty());
}

}  // namespace
