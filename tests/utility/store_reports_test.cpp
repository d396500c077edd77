// Reports of changes: one entry of the journal for each stored change.

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

TEST_F(StoreReports, ContainEachChangeOnce) {
  Task first = task("a");
  add(first);
  add(task("b"));
  EXPECT_THAT(reports(), ElementsAre(addition(1), addition(2)));
  EXPECT_EQ(store().updateTask(first), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre(update(1)));
  EXPECT_EQ(store().removeTask(2), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre(removal(2)));
}

TEST_F(StoreReports, OmitFailedChanges) {
  Task unknown = task("a");
  EXPECT_EQ(store().updateTask(unknown), TASK_ENG_NOT_FOUND);
  unknown.setString(Task::TASK_FIELD_CATEGORY, "unheard of");
  EXPECT_EQ(store().updateTask(unknown), TASK_ENG_NOT_FOUND);
  EXPECT_EQ(store().removeTask(1), TASK_ENG_NOT_FOUND);
  EXPECT_EQ(store().removeTasksWithCategoryId(1), TASK_ENG_OK);
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreReports, ContainTasksRemovedBeforeFailure) {
  for (int i = 0; i < 4; ++i)
    add(task("s"));
  reports();
  QValueList<unsigned int> list;
  for (const unsigned int uid : {3U, 1U, 99U, 2U})
    list.append(uid);
  EXPECT_EQ(store().removeTasks(list), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(reports(), ElementsAre(removal(3), removal(1)));
}

TEST_F(StoreReports, ContainEveryTaskOfRemovedCategory) {
  for (const char* category : {"party", "meeting", "party", "party"})
    addTo(category);
  reports();
  QString party("party");
  EXPECT_EQ(store().removeCategory(party, true), TASK_ENG_OK);
  EXPECT_THAT(reports(), testing::UnorderedElementsAre(removal(1), removal(3), removal(4)));
  QString meeting("meeting");
  EXPECT_EQ(store().removeCategory(meeting, false), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreReports, ContainEveryTaskIfAllAreRemoved) {
  for (int i = 0; i < 3; ++i)
    add(task("s"));
  reports();
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre(removal(1), removal(2), removal(3)));
}

TEST_F(StoreReports, OmitCategories) {
  unsigned int uid = addCategory("work");
  EXPECT_EQ(uid, 7U);
  QString work("work");
  QString job("job");
  EXPECT_EQ(store().renameCategory(work, job), TASK_ENG_OK);
  EXPECT_EQ(store().removeCategory(job, false), TASK_ENG_OK);
  EXPECT_THAT(reports(), ElementsAre());
}

// A change that cannot be written to the journal is not stored.
TEST_F(StoreReports, AreStoredTogetherWithChange) {
  const unsigned int uid = add(task("a"));
  reports();
  RawDatabase(directory_.path()).run("DROP TABLE ulo_changes");
  Task other = task("b");
  EXPECT_EQ(store().addTask(other), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(store().removeTask(uid), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(count(), 1);
  RawDatabase(directory_.path())
      .run("CREATE TABLE ulo_changes (entry INTEGER PRIMARY KEY, time, uid, type)");
  EXPECT_EQ(store().removeTask(uid), TASK_ENG_OK);
  EXPECT_EQ(count(), 0);
}

}  // namespace
