// What the store asks of the platform, call by call, and what it makes of every answer.

#include "ZTASK_ENG_Model.h"
#include "call_record.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr int full = 12;
constexpr int otherFailure = 9;
const std::string engine = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";
// 12:00 UTC of a day; the clock of the tests stands here.
constexpr int noon = 1141560000;
constexpr int lastSecondOfToday = 1141599599;  // 23:59:59 in Berlin

// removeAll is for subclasses.
class Store : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};

const calls::Answer tablesPresent{0, {{1, 1}}, 1};
const calls::Answer withNullCategory{0, {{{}, 1}, {{}, 0}}, 1};
const calls::Answer found7{0, {{0, 7}}, 1};
const calls::Answer notFound{0, {{1}}, 1};
const calls::Answer flagTrue{0, {{1}}, 1};
const calls::Answer flagFalse{0, {{0}}, 1};

class StoreCalls : public testing::Test {
protected:
  void SetUp() override { setEngineNow(QDateTime::fromSecsSinceEpoch(noon)); }
  void TearDown() override {
    store_.reset();
    EXPECT_EQ(calls::held(), 0);
    setEngineNow(QDateTime());
  }
  // An open store, whose calls from now on are answered by `script`.
  Store& open(const calls::Script& script = {}) {
    calls::begin(
        {.answers = {{"check_tables", tablesPresent}, {"all_categories", withNullCategory}}});
    store_ = std::make_unique<Store>();
    calls::begin(script);
    return *store_;
  }
  Store& closed() {
    calls::begin({.openResult = otherFailure});
    store_ = std::make_unique<Store>();
    calls::begin({});
    return *store_;
  }

  static ZTASK_ENG_Task milk() {
    ZTASK_ENG_Task task;
    task.setPriority(3);
    task.setStatus(2);
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, "work");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, "");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString(QChar(0x4f60)) + "a");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, "u");
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, QDateTime::fromSecsSinceEpoch(11));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, QDateTime::fromSecsSinceEpoch(22));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::fromSecsSinceEpoch(44));
    return task;
  }

  std::unique_ptr<Store> store_;
};

// Start and end.

TEST_F(StoreCalls, MakesTablesAndFirstRowsOfANewDatabase) {
  calls::begin({.answers = {{"check_tables", {0, {{0, 0}}, 1}}}});
  store_ = std::make_unique<Store>();
  EXPECT_THAT(
      calls::list(),
      ElementsAre(
          "open port task_eng_port 0", "log After opening task_eng_port",
          "open port task_ui_port 0", "log After opening task_ui_port", "open 1",
          "query check_tables", "free rows",
          "log DB task_table_task table is not exit!Creating task table...", "begin 0",
          "exec create_task_table", "exec create_index_priority", "exec create_index_due",
          "exec create_index_alarm", "exec create_index_category_id", "exec create_index_end",
          "commit", "log DB task_table_category table is not exit!Creating event table...",
          "begin 0", "exec create_category_table", "exec create_category_index", "commit",
          "begin 0", "exec insert_null_category", "exec insert_default_category none true",
          "exec insert_default_category meeting true", "exec insert_default_category vacation true",
          "exec insert_default_category appointment true",
          "exec insert_default_category party true", "commit"));
}

TEST_F(StoreCalls, LeavesACompleteDatabaseAlone) {
  calls::begin(
      {.answers = {{"check_tables", tablesPresent}, {"all_categories", withNullCategory}}});
  store_ = std::make_unique<Store>();
  EXPECT_THAT(
      calls::list(),
      ElementsAre("open port task_eng_port 0", "log After opening task_eng_port",
                  "open port task_ui_port 0", "log After opening task_ui_port", "open 1",
                  "query check_tables", "free rows", "log OK, DB task_table_task table do exit!",
                  "log OK, DB task_table_category table do exit!Checking records in category "
                  "table...",
                  "query all_categories", "free rows",
                  "log Checking complete, The record in category table is 1",
                  "log OK! the null category exists!!"));
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(),
              ElementsAre("close", "end of reporter", "log Before closing task_eng_port",
                          "close port task_eng_port", "log Before closing task_ui_port",
                          "close port task_ui_port"));
}

TEST_F(StoreCalls, ClosesNothingThatDidNotOpen) {
  calls::begin({.openResult = 9});
  store_ = std::make_unique<Store>();
  EXPECT_EQ(calls::list().back(), "log Open db failed! [ret=9]");
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(), testing::Not(testing::Contains("close")));
  EXPECT_THAT(calls::list(), testing::Contains("end of reporter"));
}

TEST_F(StoreCalls, PortsBelongToTheProcess) {
  open();
  auto second = std::make_unique<Store>();
  EXPECT_THAT(calls::list(), testing::Not(testing::Contains(testing::StartsWith("open port"))));
  second.reset();
  EXPECT_THAT(calls::list(),
              testing::IsSupersetOf({"close port task_eng_port", "close port task_ui_port"}));
  calls::begin({});
  Store third;
  EXPECT_THAT(calls::list(),
              testing::IsSupersetOf({"open port task_eng_port 0", "open port task_ui_port 0"}));
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(), testing::Contains("close port task_eng_port"));
}

struct Start {
  const char* name;
  std::map<std::string, calls::Answer> answers;
  // From the first line that differs; the store is open unless they end in a failure.
  std::vector<std::string> calls;
};
void PrintTo(const Start& start, std::ostream* out) {
  *out << start.name;
}

class StoreStart : public StoreCalls, public testing::WithParamInterface<Start> {};

const std::vector<std::string> tasksMade = {"begin 0",
                                            "exec create_task_table",
                                            "exec create_index_priority",
                                            "exec create_index_due",
                                            "exec create_index_alarm",
                                            "exec create_index_category_id",
                                            "exec create_index_end"};

std::vector<std::string> operator+(std::vector<std::string> left,
                                   const std::vector<std::string>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

const std::vector<std::string> closedFor6 = {"close", "log Create task table failed! [ret=6]"};
const std::vector<std::string> makingTasks = {
    "free rows", "log DB task_table_task table is not exit!Creating task table..."};
const std::vector<std::string> makingCategories = {
    "free rows", "log OK, DB task_table_task table do exit!",
    "log DB task_table_category table is not exit!Creating event table..."};
const std::vector<std::string> checkingCategories = {
    "free rows", "log OK, DB task_table_task table do exit!",
    "log OK, DB task_table_category table do exit!Checking records in category table...",
    "query all_categories"};
const std::vector<std::string> addingNull = {"block 1",
                                             "0 = null",
                                             "query category_uid_by_name by block",
                                             "free block",
                                             "log The category  is not exist!",
                                             "free rows",
                                             "block 1",
                                             "log the category is null",
                                             "0 = null",
                                             "exec insert_category by block",
                                             "free block"};
const std::vector<std::string> categoriesMade = {"begin 0", "exec create_category_table",
                                                 "exec create_category_index"};

const calls::Answer noTasks{0, {{0, 1}}, 1};
const calls::Answer noCategories{0, {{1, 0}}, 1};
const calls::Answer noCategoryRows{0, {{{}, 0}}, 1};
const calls::Answer oneNamed{0, {{"work", 1}, {{}, 0}}, 1};
const calls::Answer refused{otherFailure, {}, 0};
const calls::Answer refusedAsFull{full, {}, 0};

TEST_P(StoreStart, Goes) {
  calls::begin({.answers = GetParam().answers});
  store_ = std::make_unique<Store>();
  std::vector<std::string> after = calls::list();
  const auto checked = std::find(after.begin(), after.end(), "query check_tables");
  ASSERT_NE(checked, after.end());
  after.erase(after.begin(), checked + 1);
  EXPECT_THAT(after, ElementsAreArray(GetParam().calls));

  const bool failed = after.back().find("Create task table failed") != std::string::npos;
  int count = 0;
  EXPECT_EQ(store_->getCount(count), failed ? 7 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, StoreStart,
    testing::Values(
        Start{"CheckFails", {{"check_tables", refused}}, closedFor6},
        Start{"TaskTableFails",
              {{"check_tables", {0, {{0, 1}}, 1}},
               {"create_task_table", refused},
               {"all_categories", withNullCategory}},
              makingTasks +
                  std::vector<std::string>{
                      "begin 0", "exec create_task_table", "abort",
                      "log OK, DB task_table_category table do exit!Checking records in "
                      "category table...",
                      "query all_categories", "free rows",
                      "log Checking complete, The record in category table is 1",
                      "log OK! the null category exists!!"} +
                  closedFor6},
        Start{"FirstIndexFailsAndTheOthersAreTried",
              {{"check_tables", noTasks},
               {"create_index_priority", refusedAsFull},
               {"all_categories", withNullCategory}},
              makingTasks + tasksMade +
                  std::vector<std::string>{
                      "abort",
                      "log OK, DB task_table_category table do exit!Checking records in "
                      "category table...",
                      "query all_categories", "free rows",
                      "log Checking complete, The record in category table is 1",
                      "log OK! the null category exists!!"} +
                  closedFor6},
        Start{"LastIndexFails",
              {{"check_tables", noTasks},
               {"create_index_end", refused},
               {"all_categories", withNullCategory}},
              makingTasks + tasksMade +
                  std::vector<std::string>{
                      "abort",
                      "log OK, DB task_table_category table do exit!Checking records in "
                      "category table...",
                      "query all_categories", "free rows",
                      "log Checking complete, The record in category table is 1",
                      "log OK! the null category exists!!"} +
                  closedFor6},
        // The outcome for the categories stands for both.
        Start{"TaskTableFailsAndCategoryTableIsMade",
              {{"check_tables", {0, {{0, 0}}, 1}}, {"create_task_table", refused}},
              makingTasks +
                  std::vector<std::string>{
                      "begin 0", "exec create_task_table", "abort",
                      "log DB task_table_category table is not exit!Creating event table..."} +
                  categoriesMade +
                  std::vector<std::string>{"commit", "begin 0", "exec insert_null_category",
                                           "exec insert_default_category none true",
                                           "exec insert_default_category meeting true",
                                           "exec insert_default_category vacation true",
                                           "exec insert_default_category appointment true",
                                           "exec insert_default_category party true", "commit"}},
        Start{"CategoryTableFails",
              {{"check_tables", noCategories}, {"create_category_table", refused}},
              makingCategories +
                  std::vector<std::string>{"begin 0", "exec create_category_table", "abort"} +
                  closedFor6},
        Start{"CategoryIndexFails",
              {{"check_tables", noCategories}, {"create_category_index", refused}},
              makingCategories + categoriesMade + std::vector<std::string>{"abort"} + closedFor6},
        Start{"NullCategoryFails",
              {{"check_tables", noCategories}, {"insert_null_category", refused}},
              makingCategories + categoriesMade +
                  std::vector<std::string>{"commit", "begin 0", "exec insert_null_category",
                                           "log Insert null category failed!! The ret is 9",
                                           "abort"} +
                  closedFor6},
        Start{"NamedCategoriesMayFail",
              {{"check_tables", noCategories}, {"insert_default_category", refused}},
              makingCategories + categoriesMade +
                  std::vector<std::string>{"commit", "begin 0", "exec insert_null_category",
                                           "exec insert_default_category none true",
                                           "exec insert_default_category meeting true",
                                           "exec insert_default_category vacation true",
                                           "exec insert_default_category appointment true",
                                           "exec insert_default_category party true", "commit"}},
        Start{"CategoriesCannotBeRead",
              {{"check_tables", tablesPresent}, {"all_categories", refused}},
              checkingCategories +
                  std::vector<std::string>{"log GetCategory failed! [ret=9]",
                                           "log Get all categories failed when initialise db."} +
                  closedFor6},
        Start{"NoCategoryAtAll",
              {{"check_tables", tablesPresent},
               {"all_categories", noCategoryRows},
               {"category_uid_by_name", notFound},
               {"insert_category", {0, {}, 9}}},
              checkingCategories +
                  std::vector<std::string>{
                      "log The category table is empty!", "free rows",
                      "log Checking complete, The record in category table is 0",
                      "log Attention Please, No record in category table!!!",
                      "log We have to add 'null' category to make calendar work!"} +
                  addingNull + std::vector<std::string>{"tag"}},
        Start{"NoNullCategory",
              {{"check_tables", tablesPresent},
               {"all_categories", oneNamed},
               {"category_uid_by_name", notFound},
               {"insert_category", {0, {}, 9}}},
              checkingCategories +
                  std::vector<std::string>{
                      "free rows", "log Checking complete, The record in category table is 1"} +
                  addingNull + std::vector<std::string>{"tag"}},
        Start{"NullCategoryAppearsMeanwhile",
              {{"check_tables", tablesPresent},
               {"all_categories", oneNamed},
               {"category_uid_by_name", found7}},
              checkingCategories +
                  std::vector<std::string>{
                      "free rows", "log Checking complete, The record in category table is 1",
                      "block 1", "0 = null", "query category_uid_by_name by block", "free block",
                      "free rows", "log OK! the null category exists!!"}},
        Start{"NullCategoryCannotBeAdded",
              {{"check_tables", tablesPresent},
               {"all_categories", oneNamed},
               {"category_uid_by_name", notFound},
               {"insert_category", refusedAsFull}},
              checkingCategories +
                  std::vector<std::string>{
                      "free rows", "log Checking complete, The record in category table is 1"} +
                  addingNull +
                  std::vector<std::string>{"log AddCategory failed! [ret=12]",
                                           "log Add null category failed!! The db ret is 1",
                                           "close", "log Create task table failed! [ret=1]"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(StoreCalls, GoesOnWithoutReporter) {
  calls::begin({.answers = {{"check_tables", tablesPresent}, {"all_categories", withNullCategory}},
                .noMemory = true});
  store_ = std::make_unique<Store>();
  EXPECT_EQ(calls::list().back(), "log <<< changeReporter new is failing");
  int count = 0;
  EXPECT_EQ(store_->getCount(count), 0);
}

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
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "log The category work is not exist!", "free rows",
                          "log No such category!Add it to DB.", "block 1", "0 = 'work'",
                          "query category_uid_by_name by block", "free block",
                          "log The category work is not exist!", "free rows", "block 1",
                          "0 = 'work'", "exec insert_category by block", "free block", "tag",
                          "block 10", "0 = 3", "1 = 2", "log The qstring is null!", "2 = null",
                          "log The qstring is null!", "3 = null", "4 = u'7500'", "5 = 11", "6 = 22",
                          "7 = 2147483647", "8 = 8", "9 = 44", "exec insert_task by block",
                          "free block", "tag", "report 31 1 -1 " + engine));
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

TEST_F(StoreCalls, UpdatesATask) {
  Store& store = open({.answers = {{"category_uid_by_name", found7}, {"update_task", flagTrue}}});
  ZTASK_ENG_Task task = milk();
  task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, 31);
  task.setStatus(0);
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString());
  EXPECT_EQ(store.updateTask(task), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 11", "0 = 31",
                          "log The summary isNull!!!", "1 = 3", "2 = 0", "3 = u''",
                          "log The qstring is null!", "4 = null", "5 = u'7500'", "6 = 11", "7 = 22",
                          "8 = " + std::to_string(noon), "9 = 7", "10 = " + std::to_string(noon),
                          "query update_task by block", "free block", "report 31 2 -1 " + engine,
                          "free rows"));
}

TEST_F(StoreCalls, UpdatesATaskForWhichNoUuidCanBeMade) {
  Store& store = open(
      {.answers = {{"category_uid_by_name", found7}, {"update_task", flagTrue}}, .noUuid = true});
  ZTASK_ENG_Task task = milk();
  task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, QString());
  EXPECT_EQ(store.updateTask(task), 0);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf({"log The uuid isNull!!!", "5 = null"}));
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
            : std::vector<std::string>{"1 = 22", "0 = 3", "2 = 31"};
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

// Every operation at every place where it can be refused: what the database says, how many
// parameter blocks can be had, what the store makes of it.

struct Refusal {
  const char* name;
  std::function<int(Store&)> operation;
  std::map<std::string, calls::Answer> answers;
  int blocks;
  int code;
  // The last lines.
  std::vector<std::string> log;
};
void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

int add(Store& store) {
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, "u");
  const int code = store.addTask(task);
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), ZTASK_ENG_Task::notStored);
  return code;
}
int get(Store& store) {
  ZTASK_ENG_Task task;
  task.setPriority(77);
  const int code = store.getTask(5, task);
  EXPECT_EQ(task.getPriorityValue(), 77);
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), ZTASK_ENG_Task::notStored);
  return code;
}
int update(Store& store) {
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, "n");
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "s");
  return store.updateTask(task);
}
int addCategory(Store& store) {
  QString name("work");
  unsigned int uid = 55;
  const int code = store.addCategory(name, uid);
  EXPECT_EQ(uid, 55U);
  return code;
}
int rename(Store& store) {
  QString name("work");
  return store.renameCategory(name, name);
}
template <bool withTasks> int removeCategory(Store& store) {
  QString name("work");
  return store.removeCategory(name, withTasks);
}
int listCategories(Store& store) {
  QValueList<QString> names;
  const int code = store.getAllCategories(names);
  EXPECT_TRUE(names.isEmpty());
  return code;
}
template <int category> int countOf(Store& store) {
  int count = 55;
  const int code = store.getCount(count, ZTASK_ENG_Model::TASK_CATEGORY(category));
  EXPECT_EQ(count, 55);
  return code;
}
template <int category> int listOf(Store& store) {
  QValueList<unsigned int> uids;
  const int code = store.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY(category),
                                   ZTASK_ENG_Model::TASK_SORT_DUE);
  EXPECT_TRUE(uids.isEmpty());
  return code;
}
int listAll(Store& store) {
  QValueList<unsigned int> uids;
  const int code = store.getAllIDs(uids);
  EXPECT_TRUE(uids.isEmpty());
  return code;
}
// A query whose list must stay as it was.
template <typename Query> int untouched(Query query) {
  QValueList<ZTASK_ENG_Task> tasks;
  const int code = query(tasks);
  EXPECT_TRUE(tasks.isEmpty());
  return code;
}
int range(Store& store) {
  return untouched(
      [&](auto& tasks) { return store.getTasks(tasks, ZTASK_ENG_Task::TASK_FIELD_DUE, 0, 1); });
}
int byCategory(Store& store) {
  QString name("work");
  return untouched([&](auto& tasks) { return store.getTasks(tasks, name); });
}
template <int category> int page(Store& store) {
  ZTASK_ENG_Task start;
  return untouched([&](auto& tasks) {
    return store.getTasks(tasks, start, 1, ZTASK_ENG_Model::TASK_CATEGORY(category),
                          ZTASK_ENG_Model::TASK_SORT_DUE);
  });
}
int matchText(Store& store) {
  QString text("x");
  return untouched([&](auto& tasks) { return store.getMatchTasks(tasks, text); });
}
int matchExample(Store& store) {
  ZTASK_ENG_Task example;
  return untouched([&](auto& tasks) { return store.getMatchTasks(tasks, example); });
}

const std::vector<std::string> noMemory = {"log Db memary is full!"};
const calls::Answer oneTask{0, {{1}}, 1};
constexpr int plenty = 100;

class StoreRefusal : public StoreCalls, public testing::WithParamInterface<Refusal> {};

TEST_P(StoreRefusal, GivesCodeAndLine) {
  const Refusal& refusal = GetParam();
  Store& store = open({.blocks = refusal.blocks, .answers = refusal.answers});
  EXPECT_EQ(refusal.operation(store), refusal.code);
  std::vector<std::string> lines;
  for (const std::string& call : calls::list()) {
    if (call.compare(0, 4, "log ") == 0)
      lines.push_back(call);
    EXPECT_NE(call.compare(0, 6, "report"), 0) << call;
  }
  EXPECT_THAT(lines, ElementsAreArray(refusal.log));
}

const std::vector<Refusal> refusals = {
    {"AddNoBlockForLookup",
     add,
     {},
     0,
     1,
     {"log Db memary is full!", "log Get category id failed!"}},
    {"AddLookupFull",
     add,
     {{"category_uid_by_name", refusedAsFull}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=12]", "log Get category id failed!"}},
    {"AddLookupFails",
     add,
     {{"category_uid_by_name", refused}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=9]", "log Get category id failed!"}},
    {"AddNoBlock", add, {{"category_uid_by_name", found7}}, 1, 1, noMemory},
    {"AddFull",
     add,
     {{"category_uid_by_name", found7}, {"insert_task", refusedAsFull}},
     plenty,
     1,
     {"log The qstring is null!", "log The qstring is null!", "log AddTask failed! [ret=12]"}},
    {"AddFails",
     add,
     {{"category_uid_by_name", found7}, {"insert_task", refused}},
     plenty,
     6,
     {"log The qstring is null!", "log The qstring is null!", "log AddTask failed! [ret=9]"}},

    {"GetFull", get, {{"get_task", refusedAsFull}}, plenty, 6, {"log GetTask failed! [ret=12]"}},
    {"GetFails", get, {{"get_task", refused}}, plenty, 6, {"log GetTask failed! [ret=9]"}},
    {"GetUnknown",
     get,
     {{"get_task", {0, {}, 0}}},
     plenty,
     3,
     {"log The task with uid 5 is not exist!"}},

    {"UpdateNoBlockForLookup",
     update,
     {},
     0,
     1,
     {"log Db memary is full!", "log Get categoryid failed![ret=1]"}},
    {"UpdateLookupFails",
     update,
     {{"category_uid_by_name", refused}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=9]", "log Get categoryid failed![ret=6]"}},
    {"UpdateUnknownCategory",
     update,
     {{"category_uid_by_name", notFound}},
     plenty,
     3,
     {"log The category  is not exist!", "log Get categoryid failed![ret=3]"}},
    {"UpdateNoBlock", update, {{"category_uid_by_name", found7}}, 1, 1, noMemory},
    {"UpdateFull",
     update,
     {{"category_uid_by_name", found7}, {"update_task", refusedAsFull}},
     plenty,
     1,
     {"log UpdateTask failed! [ret=12]", "log DB Memory full!"}},
    {"UpdateFails",
     update,
     {{"category_uid_by_name", found7}, {"update_task", refused}},
     plenty,
     6,
     {"log UpdateTask failed! [ret=9]"}},
    {"UpdateUnknown",
     update,
     {{"category_uid_by_name", found7}, {"update_task", flagFalse}},
     plenty,
     3,
     {"log The task with uid -1 is not exist!"}},

    {"RemoveNoBlock", [](Store& store) { return store.removeTask(5); }, {}, 0, 1, noMemory},
    {"RemoveFull",
     [](Store& store) { return store.removeTask(5); },
     {{"remove_task", refusedAsFull}},
     plenty,
     6,
     {"log RemoveTask failed! [ret=12]"}},
    {"RemoveFails",
     [](Store& store) { return store.removeTask(5); },
     {{"remove_task", refused}},
     plenty,
     6,
     {"log RemoveTask failed! [ret=9]"}},
    {"RemoveUnknown",
     [](Store& store) { return store.removeTask(5); },
     {{"remove_task", flagFalse}},
     plenty,
     3,
     {"log The task with uid 5 is not exist!"}},

    {"AddCategoryNoBlockForLookup", addCategory, {}, 0, 6, noMemory},
    {"AddCategoryLookupFails",
     addCategory,
     {{"category_uid_by_name", refusedAsFull}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=12]"}},
    {"AddCategoryNoBlock",
     addCategory,
     {{"category_uid_by_name", notFound}},
     1,
     1,
     {"log The category work is not exist!", "log Db memary is full!"}},
    {"AddCategoryFull",
     addCategory,
     {{"category_uid_by_name", notFound}, {"insert_category", refusedAsFull}},
     plenty,
     1,
     {"log The category work is not exist!", "log AddCategory failed! [ret=12]"}},
    {"AddCategoryFails",
     addCategory,
     {{"category_uid_by_name", notFound}, {"insert_category", refused}},
     plenty,
     6,
     {"log The category work is not exist!", "log AddCategory failed! [ret=9]"}},
    {"AddCategoryThere", addCategory, {{"category_uid_by_name", found7}}, plenty, 8, {}},

    {"RenameNoBlock", rename, {}, 0, 1, noMemory},
    {"RenameFull",
     rename,
     {{"rename_category", refusedAsFull}},
     plenty,
     1,
     {"log RenameCategory failed! [ret=12]"}},
    {"RenameFails",
     rename,
     {{"rename_category", refused}},
     plenty,
     6,
     {"log RenameCategory failed! [ret=9]"}},

    {"RemoveCategoryNoBlock", removeCategory<false>, {}, 0, 1, noMemory},
    {"RemoveCategoryFull",
     removeCategory<false>,
     {{"remove_category", refusedAsFull}},
     plenty,
     6,
     {"log RemoveCategory failed! [ret=12]"}},
    {"RemoveCategoryFails",
     removeCategory<false>,
     {{"remove_category", refused}},
     plenty,
     6,
     {"log RemoveCategory failed! [ret=9]"}},
    {"RemoveCategoryNoBlockForLookup", removeCategory<true>, {}, 0, 1, noMemory},
    {"RemoveCategoryLookupFails",
     removeCategory<true>,
     {{"category_uid_by_name", refused}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=9]"}},
    {"RemoveCategoryUnknown",
     removeCategory<true>,
     {{"category_uid_by_name", notFound}},
     plenty,
     0,
     {"log The category work is not exist!", "log No such category!!"}},
    {"RemoveCategoryNoBlockForTasks",
     removeCategory<true>,
     {{"category_uid_by_name", found7}},
     1,
     1,
     noMemory},
    {"RemoveCategoryTasksFail",
     removeCategory<true>,
     {{"category_uid_by_name", found7}, {"remove_tasks_of_category", refusedAsFull}},
     plenty,
     1,
     {"log RemoveAll failed! [ret=12]"}},
    {"RemoveCategoryNoBlockAfterTasks",
     removeCategory<true>,
     {{"category_uid_by_name", found7}, {"remove_tasks_of_category", {0, {{1}}, 1}}},
     2,
     1,
     {"log No task with such category!", "log Db memary is full!"}},

    {"ListCategoriesFails",
     listCategories,
     {{"all_categories", refusedAsFull}},
     plenty,
     6,
     {"log GetCategory failed! [ret=12]"}},
    {"ListCategoriesNone",
     listCategories,
     {{"all_categories", noCategoryRows}},
     plenty,
     0,
     {"log The category table is empty!"}},

    {"CountFails",
     countOf<0>,
     {{"count_tasks", refusedAsFull}},
     plenty,
     6,
     {"log GetCount failed! [ret=12]"}},
    {"CountDueNoBlock", countOf<1>, {}, 0, 1, noMemory},
    {"CountDueFails",
     countOf<1>,
     {{"count_due_tasks", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=9]"}},
    // Without a block the query fails.
    {"CountIncompleteNoBlock", countOf<2>, {}, 0, 6, {"log GetTasks failed! [ret=5]"}},
    {"CountCompletedFails",
     countOf<3>,
     {{"count_tasks_by_status", refusedAsFull}},
     plenty,
     6,
     {"log GetTasks failed! [ret=12]"}},

    {"ListFails",
     listAll,
     {{"all_uids", refusedAsFull}},
     plenty,
     6,
     {"log GetAllIDs failed! [ret=12]"}},
    {"ListSortedFails",
     listOf<0>,
     {{"uids_in_order", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=9]"}},
    {"ListDueNoBlock", listOf<1>, {}, 0, 1, noMemory},
    {"ListDueFails",
     listOf<1>,
     {{"due_uids", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=9]"}},
    {"ListCompletedNoBlock", listOf<3>, {}, 0, 6, {"log GetTasks failed! [ret=5]"}},
    {"ListIncompleteFails",
     listOf<2>,
     {{"uids_by_status", refusedAsFull}},
     plenty,
     6,
     {"log GetTasks failed! [ret=12]"}},

    {"RangeNoBlock", range, {}, 0, 1, noMemory},
    {"RangeFails",
     range,
     {{"tasks_in_range", refusedAsFull}},
     plenty,
     6,
     {"log GetTasks failed! [ret=12]"}},
    {"CategoryUnknown",
     byCategory,
     {{"category_uid_by_name", notFound}},
     plenty,
     3,
     {"log The category work is not exist!"}},
    {"CategoryNoBlockForLookup", byCategory, {}, 0, 1, noMemory},
    {"CategoryLookupFails",
     byCategory,
     {{"category_uid_by_name", refused}},
     plenty,
     6,
     {"log GetCategoryId failed! [ret=9]"}},
    {"CategoryNoBlock", byCategory, {{"category_uid_by_name", found7}}, 1, 1, noMemory},
    {"CategoryFails",
     byCategory,
     {{"category_uid_by_name", found7}, {"tasks_of_category", refusedAsFull}},
     plenty,
     6,
     {"log GetTasks failed! [ret=12]"}},
    {"PageNoBlock", page<0>, {}, 0, 1, noMemory},
    {"PageOfDueNoBlock", page<1>, {}, 0, 1, noMemory},
    {"PageByStatusNoBlock", page<2>, {}, 0, 1, noMemory},
    {"PageFails",
     page<0>,
     {{"page_of_tasks", refusedAsFull}},
     plenty,
     6,
     {"log GetTasks failed! [ret=12]"}},
    {"PageOfDueFails",
     page<1>,
     {{"page_of_due_tasks", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=9]"}},
    {"PageByStatusFails",
     page<3>,
     {{"page_by_status", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=9]"}},
    {"PageWithoutRows", page<3>, {}, plenty, 3, {"log Record not found!! [ret=0]"}},

    {"MatchTextCountFails",
     matchText,
     {{"count_tasks", refused}},
     plenty,
     6,
     {"log GetCount failed! [ret=9]"}},
    {"MatchTextReadFails",
     matchText,
     {{"count_tasks", oneTask}, {"all_tasks", refusedAsFull}},
     plenty,
     6,
     {}},
    {"MatchExampleCountFails",
     matchExample,
     {{"count_tasks", refused}},
     plenty,
     6,
     {"log GetCount failed! [ret=9]"}},
    {"MatchExampleReadFails",
     matchExample,
     {{"count_tasks", oneTask}, {"all_tasks", refused}},
     plenty,
     6,
     {"log GetTasks failed! [ret=6]"}},
};

INSTANTIATE_TEST_SUITE_P(EveryPlace, StoreRefusal, testing::ValuesIn(refusals),
                         [](const auto& info) { return std::string(info.param.name); });

// A record whose category cannot be looked up is read all the same.
TEST_F(StoreCalls, ReadsATaskWithoutTheNameOfItsCategory) {
  const calls::Answer row{0, {{3, 2, {}, {}, {}, 11, 22, 33, 44, 7}}, 1};
  for (const bool block : {false, true}) {
    Store& store = open({.blocks = block ? 1 : 0,
                         .answers = {{"get_task", row}, {"category_name_by_uid", refused}}});
    ZTASK_ENG_Task task = milk();
    EXPECT_EQ(store.getTask(31, task), 0);
    EXPECT_TRUE(task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY).isNull());
    EXPECT_THAT(calls::list(), testing::Contains(block ? "log GetCategory failed! [ret=9]"
                                                       : "log Db memary is full!"));
  }
}

}  // namespace
