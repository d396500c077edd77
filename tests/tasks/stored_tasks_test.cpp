// Pages of a list, and completing tasks.

#include "tasks_test.h"

using tasks::readPage;
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

TEST_F(StoredTasks, CompletesTaskAndTakesItBack) {
  const unsigned int uid = add("a");
  EXPECT_EQ(tasks::setCompleted(store_, uid, true), ok);
  EXPECT_EQ(stored(uid).getStatusValue(), 0);
  EXPECT_EQ(tasks::setCompleted(store_, uid, false), ok);
  EXPECT_EQ(stored(uid).getStatusValue(), 1);
  ASSERT_EQ(store_.removeTask(uid), ok);
  EXPECT_EQ(tasks::setCompleted(store_, uid, true), notFound);
}

}  // namespace
