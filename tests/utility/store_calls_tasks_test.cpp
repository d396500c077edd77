// The calls that the store makes to add, read, update and remove single tasks.

#include "store_calls.h"

#include "../../utility/store_steps.h"

namespace {

using namespace calls;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST_F(StoreCalls, AddTaskLooksUpCategoryAndInserts) {
  Store& store =
      open({.outcomes = {{"category_uid_by_name", foundWork}, {"insert_task", addsRow(31)}}});
  Task task = milk();
  EXPECT_EQ(store.addTask(task), TASK_ENG_OK);
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), 31U);
  EXPECT_THAT(calls::list(),
              AreSteps(lookedUpCategory(varchar("work")), freedRows(),
                       withParameters({milkPriority, milkStatus, milkNote, milkSummary, milkUuid,
                                       milkAlarm, milkDue, noDate, workUid, milkRevision},
                                      executed("insert_task")),
                       readTag(), reported(31, SVC_CT_ADDED)));
}

// addCategory looks the category up once more: another program may have added it since then.
TEST_F(StoreCalls, AddTaskAddsUnknownCategoryFirst) {
  constexpr int newUid = 8;
  Store& store = open({.outcomes = {{"category_uid_by_name", unknownCategory},
                                    {"insert_category", addsRow(newUid)},
                                    {"insert_task", addsRow(31)}}});
  Task task = milk();
  task.setString(Task::TASK_FIELD_NOTE, QString());
  task.setString(Task::TASK_FIELD_SUMMARY, QString());
  EXPECT_EQ(store.addTask(task), TASK_ENG_OK);
  const std::string unknown = logged("The category work is not exist!");
  EXPECT_THAT(calls::list(),
              AreSteps(lookedUpCategory(varchar("work")), unknown, freedRows(),
                       logged("No such category!Add it to DB."),  //
                       lookedUpCategory(varchar("work")), unknown, freedRows(),
                       withParameters({varchar("work")}, executed("insert_category")), readTag(),
                       withParameters({milkPriority, milkStatus, null, null, milkUuid, milkAlarm,
                                       milkDue, noDate, newUid, milkRevision},
                                      executed("insert_task")),
                       readTag(), reported(31, SVC_CT_ADDED)));
}

TEST_F(StoreCalls, AddTaskStoresTaskWithoutCategoryThatCannotBeAdded) {
  Store& store = open({.outcomes = {{"category_uid_by_name", unknownCategory},
                                    {"insert_category", failsWith(diskFull)},
                                    {"insert_task", addsRow(31)}}});
  Task task = milk();
  EXPECT_EQ(store.addTask(task), TASK_ENG_OK);
  constexpr int categoryParameter = 8;
  constexpr int noCategory = 0;
  EXPECT_THAT(calls::list(), Contains(bound(categoryParameter, noCategory)));
  EXPECT_THAT(calls::list(), Contains(logged("AddCategory failed! " + ret(diskFull))));
}

// Everything from the look-up on is one transaction.
TEST_F(StoreCalls, LocksOutWritersFromLookupToInsert) {
  Store& store = open({.outcomes = {{"category_uid_by_name", unknownCategory}}});
  Task task = milk();
  EXPECT_EQ(store.addTask(task), TASK_ENG_OK);
  QString name("work");
  unsigned int uid = 0;
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_OK);
  EXPECT_THAT(ranOutsideWriteTransaction(), ElementsAre());
}

TEST_F(StoreCalls, LocksOutWritersFromLookupToUpdate) {
  Store& store = open({.outcomes = {{"category_uid_by_name", foundWork}}});
  Task task = milk();
  store.updateTask(task);
  EXPECT_THAT(ranOutsideWriteTransaction(), ElementsAre());
}

TEST_F(StoreCalls, AddTaskFailsIfCommitFails) {
  for (const int code : {diskFull, otherFailure}) {
    Store& store = open({.outcomes = {{"category_uid_by_name", foundWork}}, .commitCode = code});
    Task task = milk();
    EXPECT_EQ(store.addTask(task), codeOfFailedChange(code));
    EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
    EXPECT_EQ(calls::list().back(), logged("AddTask failed! " + ret(code)));
  }
}

TEST_F(StoreCalls, AddsNothingWithoutWriteLock) {
  Store& store = open({.beginWriteCode = otherFailure});
  Task task = milk();
  EXPECT_EQ(store.addTask(task), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(calls::list(), AreSteps(logged("AddTask failed! " + ret(otherFailure))));

  calls::begin(
      {.outcomes = {{"category_uid_by_name", unknownCategory}}, .beginWriteCode = diskFull});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_MEMORY_FULL);
  EXPECT_EQ(uid, 55U);
  EXPECT_THAT(calls::list(), Not(Contains(byBlock(executed("insert_category")))));
  EXPECT_THAT(calls::list(), Contains(logged("AddCategory failed! " + ret(diskFull))));
}

TEST_F(StoreCalls, GetTaskReadsRecordAndCategoryName) {
  const TaskRow row{.priority = 3,
                    .status = 2,
                    .note = null,
                    .summary = u"s",
                    .uuid = u"",
                    .alarm = 11,
                    .due = 22,
                    .end = 33,
                    .revision = 44,
                    .category = workUid};
  Store& store = open({.outcomes = {{"get_task", returns({row.flagged(true)})},
                                    {"category_name_by_uid", returns({{"work"}})}}});
  Task task = milk();
  // UIDs have 32 bits; scripts take them as signed numbers.
  EXPECT_EQ(store.getTask(0x80000001U, task), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), AreSteps(queried("get_task", {"-2147483647"}), readTag(),
                                      withParameters({workUid}, queried("category_name_by_uid")),
                                      freedRows(), freedRows()));
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), 0x80000001U);
  EXPECT_EQ(task.getPriorityValue(), 3);
  EXPECT_EQ(task.getStatusValue(), 2);
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_NOTE).isNull());
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), QString("s"));
  EXPECT_FALSE(task.getString(Task::TASK_FIELD_UUID).isNull());
  EXPECT_EQ(task.getString(Task::TASK_FIELD_UUID), QString(""));
  EXPECT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), QString("work"));
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_ALARM).toSecsSinceEpoch(), 11);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE).toSecsSinceEpoch(), 22);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_END).toSecsSinceEpoch(), 33);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_REVISION).toSecsSinceEpoch(), 44);
}

TEST_F(StoreCalls, GetTaskReadsRecordWithoutCategoryNameThatCannotBeLookedUp) {
  const struct {
    int blocks;
    std::string reason;
  } cases[] = {{0, "Db memary is full!"}, {1, "GetCategory failed! " + ret(otherFailure)}};
  for (const auto& [blocks, reason] : cases) {
    Store& store =
        open({.parameterBlocks = blocks,
              .outcomes = {{"get_task", returns({TaskRow{.category = workUid}.flagged(true)})},
                           {"category_name_by_uid", failsWith(otherFailure)}}});
    Task task = milk();
    EXPECT_EQ(store.getTask(31, task), TASK_ENG_OK);
    EXPECT_TRUE(task.getString(Task::TASK_FIELD_CATEGORY).isNull());
    EXPECT_THAT(calls::list(), Contains(logged(reason)));
  }
}

// Otherwise a record could be shown with a category that it never had.
TEST_F(StoreCalls, ReadsRecordsAndCategoryNamesInOneReadState) {
  const TaskRow row{.summary = u"s", .category = workUid, .uid = 1};
  // In most lists the flag marks the end; in a page it marks the tasks.
  const Outcome list = returns({row.flagged(false)});
  Store& store = open({.outcomes = {{"get_task", list},
                                    {"category_uid_by_name", foundWork},
                                    {"tasks_in_range", list},
                                    {"tasks_of_category", list},
                                    {"page_of_tasks", returns({row.flagged(true)})},
                                    {"count_tasks", returns({{1}})},
                                    {"all_tasks", returns({row.plain()})}}});
  Task task = milk();
  QString text("s");
  QValueList<Task> tasks;
  EXPECT_EQ(store.getTask(1, task), TASK_ENG_OK);
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, 1, 2), TASK_ENG_OK);
  EXPECT_EQ(store.getTasks(tasks, text), TASK_ENG_OK);
  EXPECT_EQ(store.getTasks(tasks, task, 1, Store::TASK_CATEGORY_ALL, Store::TASK_SORT_DUE),
            TASK_ENG_OK);
  EXPECT_EQ(store.getMatchTasks(tasks, text), TASK_ENG_OK);
  Task example;
  EXPECT_EQ(store.getMatchTasks(tasks, example), TASK_ENG_OK);
  EXPECT_GE(tasks.count(), 5U);
  EXPECT_THAT(queriedOutsideReadState(), ElementsAre());
}

TEST_F(StoreCalls, SearchesLookUpCategoryOfEveryRow) {
  const auto row = [](int uid) {
    return TaskRow{.summary = u"s", .category = workUid, .uid = uid};
  };
  Store& store = open(
      {.outcomes = {{"count_tasks", returns({{1}})},
                    {"all_tasks", returns({row(1).plain(), row(2).plain(), row(3).plain()})}}});
  const auto lookUps = [] {
    const auto all = calls::list();
    return std::count_if(all.begin(), all.end(), [](const std::string& call) {
      return call.find("category_name_by_uid") != std::string::npos;
    });
  };
  QValueList<Task> tasks;
  QString text("not there");
  EXPECT_EQ(store.getMatchTasks(tasks, text), TASK_ENG_OK);
  EXPECT_EQ(lookUps(), 3);
  Task example;
  example.setPriority(9);
  EXPECT_EQ(store.getMatchTasks(tasks, example), TASK_ENG_OK);
  EXPECT_EQ(lookUps(), 6);
  EXPECT_TRUE(tasks.isEmpty());
}

TEST_F(StoreCalls, UpdateTaskBindsAllFields) {
  Store& store =
      open({.outcomes = {{"category_uid_by_name", foundWork}, {"update_task", flag(true)}}});
  Task task = milk();
  task.setUINT32(Task::TASK_FIELD_UID, 31);
  task.setStatus(completed);
  task.setString(Task::TASK_FIELD_SUMMARY, QString());
  EXPECT_EQ(store.updateTask(task), TASK_ENG_OK);
  EXPECT_THAT(calls::list(),
              AreSteps(lookedUpCategory(varchar("work")), freedRows(),                       //
                       openedBlock(11), bound(0, {31, milkPriority, completed, milkNote}),   //
                       logged("The summary isNull!!!"),                                      //
                       bound(4, {null, milkUuid, milkAlarm, milkDue, noon, workUid, noon}),  //
                       byBlock(queried("update_task")), freedBlock(),                        //
                       reported(31, SVC_CT_UPDATED), freedRows()));
}

TEST_F(StoreCalls, UpdateTaskBindsGeneratedUuid) {
  constexpr int uuidParameter = 5;
  Store& store =
      open({.outcomes = {{"category_uid_by_name", foundWork}, {"update_task", flag(true)}},
            .uuid = "generated"});
  Task task = milk();
  task.setString(Task::TASK_FIELD_UUID, QString());
  EXPECT_EQ(store.updateTask(task), TASK_ENG_OK);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_UUID), QString("generated"));
  EXPECT_THAT(calls::list(), Contains(bound(uuidParameter, exchanged(u"generated"))));
}

TEST_F(StoreCalls, UpdateTaskBindsNullIfNoUuidIsGenerated) {
  Store& store =
      open({.outcomes = {{"category_uid_by_name", foundWork}, {"update_task", flag(true)}},
            .uuid = QString()});
  Task task = milk();
  task.setString(Task::TASK_FIELD_UUID, QString());
  EXPECT_EQ(store.updateTask(task), TASK_ENG_OK);
  constexpr int notStored = -1;
  EXPECT_THAT(calls::list(),
              AreSteps(lookedUpCategory(varchar("work")), freedRows(),                          //
                       openedBlock(11),                                                         //
                       bound(0, {notStored, milkPriority, milkStatus, milkNote, milkSummary}),  //
                       logged("The uuid isNull!!!"),                                            //
                       bound(5, {null, milkAlarm, milkDue, noDate, workUid, noon}),             //
                       byBlock(queried("update_task")), freedBlock(),                           //
                       reported(Task::notStored, SVC_CT_UPDATED), freedRows()));
}

TEST_F(StoreCalls, RemoveTaskReportsRemoval) {
  Store& store = open({.outcomes = {{"remove_task", flag(true)}}});
  EXPECT_EQ(store.removeTask(31), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), AreSteps(withParameters({31}, queried("remove_task")),
                                      reported(31, SVC_CT_REMOVED), freedRows()));
}

TEST_F(StoreCalls, RemoveTasksStopsAtFirstFailure) {
  const Plan noSuchTask{.outcomes = {{"remove_task", flag(false)}}};
  Store& store = open(noSuchTask);
  QValueList<unsigned int> uids;
  EXPECT_EQ(store.removeTasks(uids), TASK_ENG_BAD_PARAMETER);
  EXPECT_THAT(calls::list(), AreSteps(logged("The parameter taskList is null!")));
  uids.append(5);
  uids.append(6);
  calls::begin(noSuchTask);
  EXPECT_EQ(store.removeTasks(uids), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(calls::list(), AreSteps(withParameters({5}, queried("remove_task")),
                                      logged("The task with uid 5 is not exist!"), freedRows(),
                                      logged("Remove task with uid 5 failed!")));
}

// Texts.

TEST_F(StoreCalls, ExchangesBytesOfUnitsAndLogsNullText) {
  open();
  const LogPlace place{"utility/ZTASK_ENG_Model.cpp", 1};
  unsigned short units[] = {7, 7, 7};
  toExchangedUnits(QString(), units, place);
  EXPECT_THAT(units, ElementsAre(7, 7, 7));
  EXPECT_THAT(calls::list(), AreSteps(logged("The qstring is null!")));
  toExchangedUnits(QString(QChar(0x4f60)), units, place);
  EXPECT_THAT(units, ElementsAre(0x604f, 0, 7));
  toExchangedUnits(QString(""), units, place);
  EXPECT_THAT(units, ElementsAre(0, 0, 7));
  EXPECT_THAT(calls::list(), AreSteps(logged("The qstring is null!")));
}

}  // namespace
