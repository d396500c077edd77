// What others are told of changes: one entry of the journal for each stored change.

#include "store_test.h"

namespace {

using testing::ElementsAre;

class StoreReports : public StoreTest {
protected:
  unsigned int addTo(const QString& category) {
    Task added = task("s");
    added.setString(Task::TASK_FIELD_CATEGORY, category);
    return add(added);
  }
};

TEST_F(StoreReports, TellOfEachChangeOnce) {
  Task first = task("a");
  add(first);
  add(task("b"));
  EXPECT_THAT(reports(), ElementsAre("1 1", "2 1"));
  EXPECT_EQ(store().updateTask(first), ok);
  EXPECT_THAT(reports(), ElementsAre("1 2"));
  EXPECT_EQ(store().removeTask(2), ok);
  EXPECT_THAT(reports(), ElementsAre("2 3"));
}

TEST_F(StoreReports, DoNotTellOfWhatWasNotStored) {
  Task unknown = task("a");
  EXPECT_EQ(store().updateTask(unknown), notFound);
  unknown.setString(Task::TASK_FIELD_CATEGORY, "unheard of");
  EXPECT_EQ(store().updateTask(unknown), notFound);
  EXPECT_EQ(store().removeTask(1), notFound);
  EXPECT_EQ(store().removeTasksWithCategoryId(1), ok);
  EXPECT_EQ(store().removeAll(), ok);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreReports, TellOfTheRemovedTasksOfAList) {
  for (int i = 0; i < 4; ++i)
    add(task("s"));
  reports();
  QValueList<unsigned int> list;
  for (const unsigned int uid : {3U, 1U, 99U, 2U})
    list.append(uid);
  EXPECT_EQ(store().removeTasks(list), databaseFailure);
  EXPECT_THAT(reports(), ElementsAre("3 3", "1 3"));
}

TEST_F(StoreReports, TellOfEveryTaskOfARemovedCategory) {
  for (const char* category : {"party", "meeting", "party", "party"})
    addTo(category);
  reports();
  QString party("party");
  EXPECT_EQ(store().removeCategory(party, true), ok);
  EXPECT_THAT(reports(), testing::UnorderedElementsAre("1 3", "3 3", "4 3"));
  QString meeting("meeting");
  EXPECT_EQ(store().removeCategory(meeting, false), ok);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreReports, TellOfEveryTaskWhenAllAreRemoved) {
  for (int i = 0; i < 3; ++i)
    add(task("s"));
  reports();
  EXPECT_EQ(store().removeAll(), ok);
  EXPECT_THAT(reports(), ElementsAre("1 3", "2 3", "3 3"));
}

TEST_F(StoreReports, DoNotTellOfCategories) {
  unsigned int uid = addCategory("work");
  EXPECT_EQ(uid, 7U);
  QString work("work");
  QString job("job");
  EXPECT_EQ(store().renameCategory(work, job), ok);
  EXPECT_EQ(store().removeCategory(job, false), ok);
  EXPECT_THAT(reports(), ElementsAre());
}

// What can't be journaled is not stored.
TEST_F(StoreReports, AreStoredWithTheChangeOrNeitherIs) {
  const unsigned int uid = add(task("a"));
  reports();
  RawDatabase(directory_.path()).run("DROP TABLE ulo_changes");
  Task other = task("b");
  EXPECT_EQ(store().addTask(other), databaseFailure);
  EXPECT_EQ(store().removeTask(uid), databaseFailure);
  EXPECT_EQ(count(), 1);
  RawDatabase(directory_.path())
      .run("CREATE TABLE ulo_changes (entry INTEGER PRIMARY KEY, time, uid, type)");
  EXPECT_EQ(store().removeTask(uid), ok);
  EXPECT_EQ(count(), 0);
}

}  // namespace
