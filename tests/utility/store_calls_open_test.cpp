// What the store asks of the platform when it starts and ends.

#include "store_calls.h"

#include <algorithm>
#include <map>
#include <memory>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

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
const calls::Answer oneNamed{0, {{"work", 1}, {{}, 0}}, 1};

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

}  // namespace
