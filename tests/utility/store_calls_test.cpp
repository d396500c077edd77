// What the store asks of the platform, call by call, and what it makes of every answer.

#include "store_calls.h"

#include "../../utility/store_steps.h"

#include <map>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// A store that is not open.

TEST_F(StoreCalls, AClosedStoreAsksNothing) {
  Store& store = closed();
  ZTASK_ENG_Task task;
  QString name("work");
  unsigned int uid = 55;
  int count = 55;
  QValueList<unsigned int> uids;
  QValueList<QString> names;
  QValueList<ZTASK_ENG_Task> tasks;
  EXPECT_EQ(store.addTask(task), 7);
  EXPECT_EQ(store.getTask(1, task), 7);
  EXPECT_EQ(store.updateTask(task), 7);
  EXPECT_EQ(store.removeTask(1), 7);
  EXPECT_EQ(store.removeTasks(uids), 7);
  EXPECT_EQ(store.addCategory(name, uid), 7);
  EXPECT_EQ(store.renameCategory(name, name), 7);
  EXPECT_EQ(store.removeCategory(name, true), 7);
  EXPECT_EQ(store.removeTasksWithCategoryId(1), 7);
  EXPECT_EQ(store.getAllCategories(names), 7);
  EXPECT_EQ(store.getCount(count), 7);
  EXPECT_EQ(count, 55);
  EXPECT_EQ(store.getCount(count, ZTASK_ENG_Model::TASK_CATEGORY_DUE), 7);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(store.getAllIDs(uids), 7);
  EXPECT_EQ(
      store.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_ALL, ZTASK_ENG_Model::TASK_SORT_DUE), 7);
  EXPECT_EQ(store.removeAll(), 7);
  EXPECT_EQ(store.getMatchTasks(tasks, name), 7);
  EXPECT_EQ(store.getMatchTasks(tasks, task), 7);
  EXPECT_THAT(calls::list(), ElementsAre());
  EXPECT_EQ(store.getTasks(tasks, task, 0, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                           ZTASK_ENG_Model::TASK_SORT_DUE),
            7);
  EXPECT_THAT(calls::list(), ElementsAre("log DB is not alive!!!"));
  EXPECT_EQ(uid, 55U);
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), ZTASK_ENG_Task::notStored);
}

// Single tasks.

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

// Categories.

TEST_F(StoreCalls, TakesANegativeUidOfACategoryForAFailure) {
  Store& store = open({.answers = {{"category_uid_by_name", {0, {{0, -1}}, 1}}}});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), 6);
  calls::begin({.answers = {{"category_uid_by_name", {0, {{0, 0}}, 1}}}});
  EXPECT_EQ(store.addCategory(name, uid), 8);
  EXPECT_EQ(uid, 55U);
}

TEST_F(StoreCalls, RenamesInLowerCase) {
  Store& store = open();
  QString oldName(QString::fromUtf8("ÄB"));
  QString newName("NEW");
  EXPECT_EQ(store.renameCategory(oldName, newName), 0);
  EXPECT_THAT(calls::list(), ElementsAre("block 2", "0 = 'äb'", "1 = 'new'",
                                         "exec rename_category by block", "free block"));
  EXPECT_EQ(newName, QString("NEW"));
  QString none;
  calls::begin({});
  EXPECT_EQ(store.renameCategory(none, none), 0);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf({"0 = null", "1 = null"}));
}

// Half of a surrogate pair takes the three bytes that its code would have.
TEST_F(StoreCalls, BindsNamesAsUtf8) {
  const struct {
    std::vector<QChar> units;
    const char* bound;
  } cases[] = {
      {{QChar(0xFEFF), QChar(0xE4)}, "0 = '\xEF\xBB\xBF\xC3\xA4'"},
      {{QChar(0xD83D), QChar(0xDE00)}, "0 = '\xF0\x9F\x98\x80'"},
      {{QChar(0xD800), QChar('z')}, "0 = '\xED\xA0\x80z'"},
      {{QChar('a'), QChar(0xDFFF)}, "0 = 'a\xED\xBF\xBF'"},
      {{}, "0 = ''"},
  };
  for (const auto& one : cases) {
    Store& store = open();
    QString name =
        QString("") + QString(one.units.data(), static_cast<qsizetype>(one.units.size()));
    EXPECT_EQ(store.removeCategory(name, false), 0);
    EXPECT_THAT(calls::list(), testing::Contains(one.bound));
  }
}

TEST_F(StoreCalls, RemovesACategoryWithItsTasks) {
  Store& store = open({.answers = {{"category_uid_by_name", found7},
                                   {"remove_tasks_of_category", {0, {{0, 5}, {0, 3}, {1}}, 1}}}});
  QString name("work");
  EXPECT_EQ(store.removeCategory(name, true), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 1", "0 = 7",
                          "query remove_tasks_of_category by block", "free block",
                          "report 5 3 -1 " + engine, "report 3 3 -1 " + engine, "free rows",
                          "block 1", "0 = 'work'", "exec remove_category by block", "free block"));
}

TEST_F(StoreCalls, ReportsTasksOfACategoryWithoutEndRow) {
  Store& store = open({.answers = {{"remove_tasks_of_category", {0, {{0, 5}, {0, 3}}, 1}}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(7), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                          "free block", "report 5 3 -1 " + engine, "report 3 3 -1 " + engine,
                          "free rows"));
}

TEST_F(StoreCalls, ClosesCursorBeforeLoggingThatNothingWasFound) {
  Store& store =
      open({.answers = {{"remove_tasks_of_category", flagTrue},
                        {"page_of_tasks", {0, {{0, 0, {}, {}, {}, 0, 0, 0, 0, 0, 0, 0}}, 1}}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(7), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                          "free block", "free rows", "log No task with such category!"));
  QValueList<ZTASK_ENG_Task> tasks;
  ZTASK_ENG_Task start = milk();
  EXPECT_EQ(store.getTasks(tasks, start, 1, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                           ZTASK_ENG_Model::TASK_SORT_DUE),
            3);
  const std::vector<std::string> asked = calls::list();
  ASSERT_GE(asked.size(), 2U);
  EXPECT_EQ(asked.at(asked.size() - 2), "free rows");
  EXPECT_EQ(asked.back(), "log Record not found!! [ret=0]");
}

TEST_F(StoreCalls, AbortsWhenTasksOfACategoryCannotBeRemoved) {
  for (const int result : {full, otherFailure}) {
    Store& store = open({.answers = {{"remove_tasks_of_category", {result, {}, 0}}}});
    EXPECT_EQ(store.removeTasksWithCategoryId(7), result == full ? 1 : 6);
    EXPECT_THAT(calls::list(),
                ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                            "free block",
                            "log RemoveAll failed! [ret=" + std::to_string(result) + "]", "abort"));
  }
}

// Counts and lists of UIDs.

TEST_F(StoreCalls, CountsWhatTheFilterShows) {
  const calls::Answer five{0, {{5}}, 1};
  const std::map<std::string, calls::Answer> answers = {
      {"count_tasks", five}, {"count_tasks_by_status", five}, {"count_due_tasks", five}};
  const struct {
    int category;
    std::vector<std::string> calls;
  } cases[] = {
      {0, {"query count_tasks", "free rows"}},
      {1,
       {"block 1", "0 = " + std::to_string(lastSecondOfToday), "query count_due_tasks by block",
        "free block", "free rows"}},
      {2, {"block 1", "0 = 1", "query count_tasks_by_status by block", "free block", "free rows"}},
      {3, {"block 1", "0 = 0", "query count_tasks_by_status by block", "free block", "free rows"}},
      {7, {"block 1", "0 = 0", "query count_tasks_by_status by block", "free block", "free rows"}},
      {-1, {"block 1", "0 = 0", "query count_tasks_by_status by block", "free block", "free rows"}},
  };
  for (const auto& one : cases) {
    Store& store = open({.answers = answers});
    int count = 0;
    EXPECT_EQ(store.getCount(count, ZTASK_ENG_Model::TASK_CATEGORY(one.category)), 0);
    EXPECT_EQ(count, 5);
    EXPECT_THAT(calls::list(), ElementsAreArray(one.calls)) << one.category;
  }
}

TEST_F(StoreCalls, ListsWhatTheFilterShows) {
  const calls::Answer rows{0, {{9, 1}, {4, 1}, {0, 0}, {77, 1}}, 1};
  const std::map<std::string, calls::Answer> answers = {
      {"uids_in_order", rows}, {"uids_by_status", rows}, {"due_uids", rows}};
  for (const int sort : {0, 1, 2, -1}) {
    const std::string index = sort == 0 ? "task_index_due" : "task_index_priority";
    const struct {
      int category;
      std::vector<std::string> calls;
    } cases[] = {
        {0, {"query uids_in_order " + index, "free rows"}},
        {1,
         {"block 1", "0 = " + std::to_string(lastSecondOfToday),
          "query due_uids " + index + " by block", "free block", "free rows"}},
        {2,
         {"block 1", "0 = 1", "query uids_by_status " + index + " by block", "free block",
          "free rows"}},
        {7,
         {"block 1", "0 = 0", "query uids_by_status " + index + " by block", "free block",
          "free rows"}},
    };
    for (const auto& one : cases) {
      Store& store = open({.answers = answers});
      QValueList<unsigned int> uids;
      uids.append(1);
      EXPECT_EQ(store.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY(one.category),
                                ZTASK_ENG_Model::TASK_SORT_FIELD(sort)),
                0);
      EXPECT_THAT(std::vector<unsigned int>(uids.begin(), uids.end()), ElementsAre(1, 9, 4));
      EXPECT_THAT(calls::list(), ElementsAreArray(one.calls)) << one.category;
    }
  }
}

TEST_F(StoreCalls, RemovesAllInOneTransactionAndReportsOneBatch) {
  Store& store = open({.answers = {{"all_uids", {0, {{5}, {3}}, 1}}}});
  EXPECT_EQ(store.removeAll(), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("begin 0", "query all_uids", "free rows", "exec remove_all_tasks",
                          "commit", "begin batch " + engine, "report 5 3 -1 " + engine,
                          "report 3 3 -1 " + engine, "end batch " + engine));
}

TEST_F(StoreCalls, RemovesNothingFromAnEmptyStore) {
  Store& store = open();
  EXPECT_EQ(store.removeAll(), 0);
  EXPECT_THAT(calls::list(), ElementsAre("begin 0", "query all_uids", "free rows", "abort"));
}

TEST_F(StoreCalls, AbortsWhenNotAllCanBeRemoved) {
  Store* store = &open({.answers = {{"all_uids", refused}}});
  EXPECT_EQ(store->removeAll(), 6);
  EXPECT_THAT(calls::list(),
              ElementsAre("begin 0", "query all_uids", "log GetAllIDs failed! [ret=9]", "abort",
                          "log GetAllIDs failed! [ret=6]"));
  for (const int result : {full, otherFailure}) {
    store =
        &open({.answers = {{"all_uids", {0, {{5}}, 1}}, {"remove_all_tasks", {result, {}, 0}}}});
    EXPECT_EQ(store->removeAll(), result == full ? 1 : 6);
    EXPECT_THAT(calls::list(),
                ElementsAre("begin 0", "query all_uids", "free rows", "exec remove_all_tasks",
                            "log RemoveAll failed! [ret=" + std::to_string(result) + "]", "abort"));
  }
}

// Whole tasks.

TEST_F(StoreCalls, AsksForARangeOfDates) {
  const calls::Answer none{0, {{0, 0, {}, {}, {}, 0, 0, 0, 0, 0, 0, 1}}, 1};
  for (int field = -1; field <= 9; ++field) {
    const bool due = field == ZTASK_ENG_Task::TASK_FIELD_DUE;
    Store& store = open({.answers = {{"tasks_in_range", none}}});
    QValueList<ZTASK_ENG_Task> tasks;
    EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_T(field), -5, 70), 3);
    EXPECT_THAT(calls::list(),
                ElementsAre("block 2", "0 = -5", "1 = 70",
                            std::string("query tasks_in_range ") +
                                (due ? "task_index_due due due" : "task_index_end end end") +
                                " by block",
                            "free block", "free rows"));
  }
  Store& store = open();
  QValueList<ZTASK_ENG_Task> tasks;
  EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, 2, 1), 2);
  EXPECT_THAT(calls::list(), ElementsAre());
  // Compared as they are, then held to what a date can be.
  EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, 5000000001, 5000000000), 2);
  EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, -5000000000, 5000000000), 0);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf({"0 = -2147483648", "1 = 2147483647"}));
}

// No stored date is in a range that 32 bits cannot reach, so the one that is asked for is empty.
TEST_F(StoreCalls, AsksForNothingBeyondStoredDates) {
  const calls::Answer none{0, {{0, 0, {}, {}, {}, 0, 0, 0, 0, 0, 0, 1}}, 1};
  const struct {
    std::int64_t from;
    std::int64_t to;
    std::vector<std::string> bound;
  } cases[] = {
      {3000000000, 4000000000, {"0 = 2147483647", "1 = -2147483648"}},
      {2147483648, 2147483648, {"0 = 2147483647", "1 = -2147483648"}},
      {-4000000000, -3000000000, {"0 = 2147483647", "1 = -2147483648"}},
      {-2147483649, -2147483649, {"0 = 2147483647", "1 = -2147483648"}},
      {2147483647, 2147483648, {"0 = 2147483647", "1 = 2147483647"}},
      {2147483647, 2147483647, {"0 = 2147483647", "1 = 2147483647"}},
      {-2147483649, -2147483648, {"0 = -2147483648", "1 = -2147483648"}},
      {-3000000000, 5, {"0 = -2147483648", "1 = 5"}},
      {5, 3000000000, {"0 = 5", "1 = 2147483647"}},
  };
  for (const auto& one : cases) {
    if (one.from != static_cast<long>(one.from) || one.to != static_cast<long>(one.to))
      continue;  // a long of 32 bits
    Store& store = open({.answers = {{"tasks_in_range", none}}});
    QValueList<ZTASK_ENG_Task> tasks;
    EXPECT_EQ(store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, static_cast<long>(one.from),
                             static_cast<long>(one.to)),
              3);
    std::vector<std::string> asked = calls::list();
    ASSERT_GE(asked.size(), 3U);
    EXPECT_EQ(asked.at(0), "block 2");
    EXPECT_THAT(std::vector<std::string>(asked.begin() + 1, asked.begin() + 3),
                ElementsAreArray(one.bound))
        << one.from << " to " << one.to;
  }
}

TEST_F(StoreCalls, AsksForAPage) {
  ZTASK_ENG_Task start = milk();
  start.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, 31);
  const calls::Answer row{0,
                          {{1, 0, {}, {}, {}, 0, 0, 0, 0, 7, 31, 1},
                           {1, 0, {}, {}, {}, 0, 0, 0, 0, 7, 32, 1},
                           {0, 0, {}, {}, {}, 0, 0, 0, 0, 0, 0, 0},
                           {1, 0, {}, {}, {}, 0, 0, 0, 0, 7, 33, 1}},
                          1};
  const std::map<std::string, calls::Answer> answers = {
      {"page_of_tasks", row}, {"page_by_status", row}, {"page_of_due_tasks", row}};
  for (const bool due : {true, false}) {
    const std::string index = due ? " task_index_due by block" : " task_index_priority by block";
    const std::vector<std::string> key =
        due ? std::vector<std::string>{"0 = 22", "1 = 3", "2 = 31"}
            : std::vector<std::string>{"0 = 3", "1 = 22", "2 = 31"};
    const struct {
      int category;
      std::vector<std::string> calls;
    } cases[] = {
        {0, std::vector<std::string>{"block 4"} + key +
                std::vector<std::string>{"3 = 10", "query page_of_tasks" + index}},
        {1, std::vector<std::string>{"block 5"} + key +
                std::vector<std::string>{"3 = 10", "4 = " + std::to_string(lastSecondOfToday),
                                         "query page_of_due_tasks" + index}},
        {2, std::vector<std::string>{"block 5"} + key +
                std::vector<std::string>{"3 = 10", "4 = 1", "query page_by_status" + index}},
        {3, std::vector<std::string>{"block 5"} + key +
                std::vector<std::string>{"3 = 10", "4 = 0", "query page_by_status" + index}},
        {7, std::vector<std::string>{"block 5"} + key +
                std::vector<std::string>{"3 = 10", "4 = 0", "query page_by_status" + index}},
    };
    for (const auto& one : cases) {
      Store& store = open({.answers = answers});
      QValueList<ZTASK_ENG_Task> tasks;
      EXPECT_EQ(store.getTasks(tasks, start, 10, ZTASK_ENG_Model::TASK_CATEGORY(one.category),
                               ZTASK_ENG_Model::TASK_SORT_FIELD(due ? 0 : 1)),
                0);
      ASSERT_EQ(tasks.count(), 2U);
      EXPECT_EQ(tasks.at(0).getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), 31U);
      EXPECT_EQ(tasks.at(1).getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), 32U);
      std::vector<std::string> asked = calls::list();
      asked.resize(one.calls.size());
      EXPECT_THAT(asked, ElementsAreArray(one.calls)) << one.category;
    }
  }
}

}  // namespace
