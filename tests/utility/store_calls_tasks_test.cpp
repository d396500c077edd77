// Single tasks: what the store asks of the platform, call by call, and what it makes of every
// answer.

#include "store_calls.h"

#include "../../utility/store_steps.h"

namespace {

using testing::ElementsAre;

TEST_F(StoreCalls, AddsATask) {
  Store& store =
      open({.answers = {{"category_uid_by_name", found7}, {"insert_task", {0, {}, 31}}}});
  ZTASK_ENG_Task task = milk();
  EXPECT_EQ(store.addTask(task), 0);
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), 31U);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 10", "0 = 3", "1 = 2", "2 = u''",
                          "3 = u'604f6100'", "4 = u'7500'", "5 = 11", "6 = 22", "7 = 2147483647",
                          "8 = 7", "9 = 44", "exec insert_task by block", "free block", "tag",
                          "report 31 1 -1 " + engine));
}

TEST_F(StoreCalls, AddsATaskWithItsCategory) {
  Store& store = open({.answers = {{"category_uid_by_name", notFound},
                                   {"insert_category", {0, {}, 8}},
                                   {"insert_task", {0, {}, 31}}}});
  ZTASK_ENG_Task task = milk();
  task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, QString());
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString());
  EXPECT_EQ(store.addTask(task), 0);
  EXPECT_THAT(
      calls::list(),
      ElementsAre(
          "block 1", "0 = 'work'", "query category_uid_by_name by block", "free block",
          "log The category work is not exist!", "free rows", "log No such category!Add it to DB.",
          "block 1", "0 = 'work'", "query category_uid_by_name by block", "free block",
          "log The category work is not exist!", "free rows", "block 1", "0 = 'work'",
          "exec insert_category by block", "free block", "tag", "block 10", "0 = 3", "1 = 2",
          "2 = null", "3 = null", "4 = u'7500'", "5 = 11", "6 = 22", "7 = 2147483647", "8 = 8",
          "9 = 44", "exec insert_task by block", "free block", "tag", "report 31 1 -1 " + engine));
}

TEST_F(StoreCalls, ExchangesBytesOfUnitsAndLogsNullText) {
  open();
  const LogPlace place{"utility/ZTASK_ENG_Model.cpp", 1};
  unsigned short units[] = {7, 7, 7};
  toExchangedUnits(QString(), units, place);
  EXPECT_THAT(units, ElementsAre(7, 7, 7));
  EXPECT_THAT(calls::list(), ElementsAre("log The qstring is null!"));
  toExchangedUnits(QString(QChar(0x4f60)), units, place);
  EXPECT_THAT(units, ElementsAre(0x604f, 0, 7));
  toExchangedUnits(QString(""), units, place);
  EXPECT_THAT(units, ElementsAre(0, 0, 7));
  EXPECT_THAT(calls::list(), ElementsAre("log The qstring is null!"));
}

TEST_F(StoreCalls, StoresATaskWhoseCategoryCannotBeAddedWithoutOne) {
  Store& store = open({.answers = {{"category_uid_by_name", notFound},
                                   {"insert_category", refusedAsFull},
                                   {"insert_task", {0, {}, 31}}}});
  ZTASK_ENG_Task task = milk();
  EXPECT_EQ(store.addTask(task), 0);
  EXPECT_THAT(calls::list(), testing::Contains("8 = 0"));
  EXPECT_THAT(calls::list(), testing::Contains("log AddCategory failed! [ret=12]"));
}

// Everything from the look-up on is one transaction.
TEST_F(StoreCalls, LocksOutWritersFromLookupToInsert) {
  Store& store = open({.answers = {{"category_uid_by_name", notFound}}});
  ZTASK_ENG_Task task = milk();
  EXPECT_EQ(store.addTask(task), 0);
  QString name("work");
  unsigned int uid = 0;
  EXPECT_EQ(store.addCategory(name, uid), 0);
  EXPECT_THAT(calls::unlocked(), ElementsAre());
}

TEST_F(StoreCalls, ReportsNoTaskWhoseCommitFails) {
  for (const int result : {full, otherFailure}) {
    Store& store = open({.answers = {{"category_uid_by_name", found7}}, .commitResult = result});
    ZTASK_ENG_Task task = milk();
    EXPECT_EQ(store.addTask(task), result == full ? 1 : 6);
    EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), ZTASK_ENG_Task::notStored);
    EXPECT_EQ(calls::list().back(), "log AddTask failed! [ret=" + std::to_string(result) + "]");
  }
}

TEST_F(StoreCalls, ReportsCategoryWhoseCommitFails) {
  for (const int result : {full, otherFailure}) {
    Store& store = open({.answers = {{"category_uid_by_name", notFound}}, .commitResult = result});
    QString name("work");
    unsigned int uid = 55;
    EXPECT_EQ(store.addCategory(name, uid), result == full ? 1 : 6);
    EXPECT_EQ(uid, 55U);
    EXPECT_EQ(calls::list().back(), "log AddCategory failed! [ret=" + std::to_string(result) + "]");
  }
}

TEST_F(StoreCalls, AddsNothingWithoutWriteLock) {
  Store& store = open({.beginWriteResult = otherFailure});
  ZTASK_ENG_Task task = milk();
  EXPECT_EQ(store.addTask(task), 6);
  EXPECT_THAT(calls::list(), ElementsAre("log AddTask failed! [ret=9]"));

  calls::begin({.answers = {{"category_uid_by_name", notFound}}, .beginWriteResult = full});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), 1);
  EXPECT_EQ(uid, 55U);
  EXPECT_THAT(calls::list(), testing::Not(testing::Contains("exec insert_category by block")));
  EXPECT_THAT(calls::list(), testing::Contains("log AddCategory failed! [ret=12]"));
}

// Finding a category needs no lock.
TEST_F(StoreCalls, FindsCategoryPresentWithoutWriteLock) {
  Store& store =
      open({.answers = {{"category_uid_by_name", found7}}, .beginWriteResult = otherFailure});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), 8);
  EXPECT_EQ(uid, 55U);
}

TEST_F(StoreCalls, ReadsATask) {
  Store& store = open({.answers = {{"get_task", {0, {{3, 2, {}, u"s", u"", 11, 22, 33, 44, 7}}, 1}},
                                   {"category_name_by_uid", {0, {{"work"}}, 1}}}});
  ZTASK_ENG_Task task = milk();
  EXPECT_EQ(store.getTask(0x80000001U, task), 0);
  EXPECT_THAT(calls::list(), ElementsAre("query get_task -2147483647", "tag", "block 1", "0 = 7",
                                         "query category_name_by_uid by block", "free block",
                                         "free rows", "free rows"));
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), 0x80000001U);
  EXPECT_EQ(task.getPriorityValue(), 3);
  EXPECT_EQ(task.getStatusValue(), 2);
  EXPECT_TRUE(task.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE).isNull());
  EXPECT_EQ(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY), QString("s"));
  EXPECT_FALSE(task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID).isNull());
  EXPECT_EQ(task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID), QString(""));
  EXPECT_EQ(task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY), QString("work"));
  EXPECT_EQ(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM).toSecsSinceEpoch(), 11);
  EXPECT_EQ(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE).toSecsSinceEpoch(), 22);
  EXPECT_EQ(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_END).toSecsSinceEpoch(), 33);
  EXPECT_EQ(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION).toSecsSinceEpoch(), 44);
}

// A record and the name of its category are of one state of the database.
TEST_F(StoreCalls, ReadsRecordsAndNamesInOneState) {
  const calls::Row found = {3, 2, {}, u"s", u"", 11, 22, 33, 44, 7, 1, 0};
  calls::Row inPage = found;
  inPage.back() = 1;
  Store& store = open({.answers = {{"get_task", {0, {found}, 1}},
                                   {"category_uid_by_name", found7},
                                   {"tasks_in_range", {0, {found}, 1}},
                                   {"tasks_of_category", {0, {found}, 1}},
                                   {"page_of_tasks", {0, {inPage}, 1}},
                                   {"count_tasks", {0, {{1}}, 1}},
                                   {"all_tasks", {0, {found}, 1}}}});
  ZTASK_ENG_Task task = milk();
  QString text("s");
  QValueList<ZTASK_ENG_Task> tasks;
  EXPECT_EQ(store.getTask(1, task), 0);
  EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, 1, 2), 0);
  EXPECT_EQ(store.getTasks(tasks, text), 0);
  EXPECT_EQ(store.getTasks(tasks, task, 1, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                           ZTASK_ENG_Model::TASK_SORT_DUE),
            0);
  EXPECT_EQ(store.getMatchTasks(tasks, text), 0);
  ZTASK_ENG_Task example;
  EXPECT_EQ(store.getMatchTasks(tasks, example), 0);
  EXPECT_GE(tasks.count(), 5U);
  EXPECT_THAT(calls::queriedAlone(), ElementsAre());
}

TEST_F(StoreCalls, UpdatesATask) {
  Store& store = open({.answers = {{"category_uid_by_name", found7}, {"update_task", flagTrue}}});
  ZTASK_ENG_Task task = milk();
  task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, 31);
  task.setStatus(0);
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString());
  EXPECT_EQ(store.updateTask(task), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 11", "0 = 31", "1 = 3", "2 = 0",
                          "3 = u''", "log The summary isNull!!!", "4 = null", "5 = u'7500'",
                          "6 = 11", "7 = 22", "8 = " + std::to_string(noon), "9 = 7",
                          "10 = " + std::to_string(noon), "query update_task by block",
                          "free block", "report 31 2 -1 " + engine, "free rows"));
}

TEST_F(StoreCalls, UpdatesATaskForWhichNoUuidCanBeMade) {
  Store& store = open(
      {.answers = {{"category_uid_by_name", found7}, {"update_task", flagTrue}}, .noUuid = true});
  ZTASK_ENG_Task task = milk();
  task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, QString());
  EXPECT_EQ(store.updateTask(task), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 11", "0 = -1", "1 = 3", "2 = 2",
                          "3 = u''", "4 = u'604f6100'", "log The uuid isNull!!!", "5 = null",
                          "6 = 11", "7 = 22", "8 = 2147483647", "9 = 7",
                          "10 = " + std::to_string(noon), "query update_task by block",
                          "free block", "report 4294967295 2 -1 " + engine, "free rows"));
}

TEST_F(StoreCalls, RemovesATask) {
  Store& store = open({.answers = {{"remove_task", flagTrue}}});
  EXPECT_EQ(store.removeTask(31), 0);
  EXPECT_THAT(calls::list(), ElementsAre("block 1", "0 = 31", "query remove_task by block",
                                         "free block", "report 31 3 -1 " + engine, "free rows"));
}

TEST_F(StoreCalls, RemovesTasksUntilOneFails) {
  Store& store = open({.answers = {{"remove_task", flagFalse}}});
  QValueList<unsigned int> uids;
  EXPECT_EQ(store.removeTasks(uids), 2);
  EXPECT_THAT(calls::list(), ElementsAre("log The parameter taskList is null!"));
  uids.append(5);
  uids.append(6);
  calls::begin({.answers = {{"remove_task", flagFalse}}});
  EXPECT_EQ(store.removeTasks(uids), 6);
  EXPECT_THAT(calls::list(), ElementsAre("block 1", "0 = 5", "query remove_task by block",
                                         "free block", "log The task with uid 5 is not exist!",
                                         "free rows", "log Remove task with uid 5 failed!"));
}

}  // namespace
