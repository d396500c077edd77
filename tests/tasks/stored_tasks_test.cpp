// Pages of a list, and tasks whose category isn't there.

#include "tasks_test.h"

using tasks::readPage;
using tasks::replaceTask;
using testing::ElementsAre;

namespace {

class StoredTasks : public Tasks {
protected:
  tasks::Uids list(const tasks::ListOrder& order = {}) {
    tasks::Uids uids;
    EXPECT_EQ(store_.getAllIDs(uids, order.view, order.sort), ok);
    return uids;
  }
  std::vector<std::string> page(const tasks::Uids& uids, unsigned int from, int count,
                                const tasks::ListOrder& order = {}) {
    tasks::Records records;
    code_ = readPage(store_, uids, from, count, order, records);
    std::vector<std::string> summaries;
    for (const Task& task : records)
      summaries.push_back(task.getString(Task::TASK_FIELD_SUMMARY).toStdString());
    return summaries;
  }

  int code_ = -1;
};

TEST_F(StoredTasks, APageBeginsWhereItIsAsked) {
  for (const char* summary : {"e", "d", "c", "b", "a"})
    add(summary);
  const tasks::Uids uids = list();
  EXPECT_THAT(page(uids, 0, 2), ElementsAre("a", "b"));
  EXPECT_THAT(page(uids, 3, 10), ElementsAre("d", "e"));
  EXPECT_EQ(code_, ok);
  EXPECT_THAT(page(uids, 5, 10), ElementsAre());
  EXPECT_EQ(code_, notFound);
}

TEST_F(StoredTasks, APageHasTheViewsTasksAlone) {
  add({.summary = "done", .status = 0});
  add("todo");
  add({.summary = "done too", .status = 0});
  const tasks::ListOrder completed{ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED,
                                   ZTASK_ENG_Model::TASK_SORT_PRIORITY};
  EXPECT_THAT(page(list(completed), 0, 9, completed), ElementsAre("done too", "done"));
}

TEST_F(StoredTasks, APageEndsWhereTheStoreHasChanged) {
  for (const char* summary : {"d", "c", "b", "a"})
    add(summary);
  const tasks::Uids uids = list();
  ASSERT_EQ(store_.removeTask(uids[2]), ok);
  EXPECT_THAT(page(uids, 0, 9), ElementsAre("a", "b"));
  EXPECT_THAT(page(uids, 2, 9), ElementsAre());
  EXPECT_EQ(code_, notFound);
  EXPECT_THAT(page(uids, 3, 9), ElementsAre("d"));
}

TEST_F(StoredTasks, AReplacedTaskMakesItsCategory) {
  Task task = stored(add("a"));
  task.setString(Task::TASK_FIELD_CATEGORY, "Garden");
  EXPECT_EQ(replaceTask(store_, task), ok);
  EXPECT_EQ(stored(task.getUINT32(Task::TASK_FIELD_UID)).getString(Task::TASK_FIELD_CATEGORY),
            "Garden");
}

TEST_F(StoredTasks, ACategoryThatVanishedBecomesNone) {
  const unsigned int uid = add({.summary = "a", .category = "garden"});
  QString name = "garden";
  ASSERT_EQ(store_.removeCategory(name, false), ok);
  Task task = stored(uid);
  ASSERT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), "None");
  task.setString(Task::TASK_FIELD_SUMMARY, "b");
  EXPECT_EQ(replaceTask(store_, task), ok);
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_TRUE(stored(uid).getString(Task::TASK_FIELD_CATEGORY).isNull());
}

TEST_F(StoredTasks, NoCategoryIsMadeAnewWhereItWasRenamed) {
  Task task = stored(add("a"));
  raw_.run("update task_table_category set name = 'renamed' where name is null");
  task.setString(Task::TASK_FIELD_SUMMARY, "b");
  EXPECT_EQ(replaceTask(store_, task), ok);
  const unsigned int uid = task.getUINT32(Task::TASK_FIELD_UID);
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_TRUE(stored(uid).getString(Task::TASK_FIELD_CATEGORY).isNull());
}

TEST_F(StoredTasks, ARemovedTaskIsNotReplaced) {
  Task task = stored(add("a"));
  task.setString(Task::TASK_FIELD_CATEGORY, "Garden");
  ASSERT_EQ(store_.removeTask(task.getUINT32(Task::TASK_FIELD_UID)), ok);
  EXPECT_EQ(replaceTask(store_, task), notFound);
  EXPECT_THAT(raw_.run("select count(*) from task_table_category where name = 'Garden'"),
              ElementsAre("0"));
}

}  // namespace
