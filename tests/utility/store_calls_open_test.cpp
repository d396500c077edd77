// The calls that the store makes when it is opened and closed, and those that a closed store does
// not make.

#include "store_calls.h"

#include <algorithm>
#include <memory>

namespace {

using namespace calls;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

// Parts of an opening.

const Steps openedPorts = steps(openedPort("task_eng_port"), logged("After opening task_eng_port"),
                                openedPort("task_ui_port"), logged("After opening task_ui_port"));
const std::string tasksPresent = logged("OK, DB task_table_task table do exit!");
const std::string tasksMissing =
    logged("DB task_table_task table is not exit!Creating task table...");
const std::string categoriesMissing =
    logged("DB task_table_category table is not exit!Creating event table...");
// The category table is present and read; freedRows() follows if that succeeds.
const Steps readCategories =
    steps(logged("OK, DB task_table_category table do exit!Checking records in category table..."),
          queried("all_categories"));
std::string counted(int categories) {
  return logged("Checking complete, The record in category table is " + std::to_string(categories));
}
const std::string nullCategoryPresent = logged("OK! the null category exists!!");
const Steps foundNullCategory = steps(readCategories, freedRows(), counted(1), nullCategoryPresent);

// Each without the end of its transaction.
const Steps beganTaskTable = steps(began(), executed("create_task_table"));
const Steps madeTaskTableAndIndexes =
    steps(beganTaskTable, executed("create_index_priority"), executed("create_index_due"),
          executed("create_index_alarm"), executed("create_index_category_id"),
          executed("create_index_end"));
const Steps beganCategoryTable = steps(began(), executed("create_category_table"));
const Steps madeCategoryTableAndIndex =
    steps(beganCategoryTable, executed("create_category_index"));
const Steps insertedNullCategory = steps(began(), executed("insert_null_category"));
const Steps insertedNamedCategories =
    steps(executed("insert_default_category", {"none", "true"}),
          executed("insert_default_category", {"meeting", "true"}),
          executed("insert_default_category", {"vacation", "true"}),
          executed("insert_default_category", {"appointment", "true"}),
          executed("insert_default_category", {"party", "true"}));
const Steps madeCategories = steps(madeCategoryTableAndIndex, committed(), insertedNullCategory,
                                   insertedNamedCategories, committed());
// Adds the null category to a table without one; the insertion is the last step.
const Steps addedNullCategory =
    steps(lookedUpCategory(null), logged("The category  is not exist!"), freedRows(),
          openedBlock(1), logged("the category is null"), bound(0, null),
          byBlock(executed("insert_category")), freedBlock());

Steps gaveUp(int code) {
  return steps(closedDatabase(), logged("Create task table failed! " + ret(code)));
}

// Opening.

TEST_F(StoreCalls, CreatesTablesAndFirstRowsInNewDatabase) {
  calls::begin({.outcomes = {{"check_tables", tablesPresent(false, false)}}});
  store_ = std::make_unique<Store>();
  constexpr int storeDatabase = 1;
  EXPECT_THAT(calls::list(),
              AreSteps(openedPorts, openedDatabase(storeDatabase), queried("check_tables"),
                       freedRows(), tasksMissing, madeTaskTableAndIndexes, committed(),
                       categoriesMissing, madeCategories));
}

TEST_F(StoreCalls, LeavesCompleteDatabaseUnchanged) {
  calls::begin({.outcomes = {{"check_tables", tablesPresent(true, true)},
                             {"all_categories", categories({listed(null)})}}});
  store_ = std::make_unique<Store>();
  EXPECT_THAT(calls::list(), AreSteps(openedPorts, openedDatabase(1), queried("check_tables"),
                                      freedRows(), tasksPresent, foundNullCategory));
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(),
              AreSteps(closedDatabase(), deletedReporter(), logged("Before closing task_eng_port"),
                       closedPort("task_eng_port"), logged("Before closing task_ui_port"),
                       closedPort("task_ui_port")));
}

TEST_F(StoreCalls, DoesNotCloseDatabaseThatDidNotOpen) {
  calls::begin({.openCode = otherFailure});
  store_ = std::make_unique<Store>();
  EXPECT_EQ(calls::list().back(), logged("Open db failed! " + ret(otherFailure)));
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(), Not(Contains(closedDatabase())));
  EXPECT_THAT(calls::list(), Contains(deletedReporter()));
}

TEST_F(StoreCalls, LogPortsBelongToTheProcess) {
  open();
  auto second = std::make_unique<Store>();
  EXPECT_THAT(calls::list(), Not(Contains(testing::StartsWith("open port"))));
  second.reset();
  EXPECT_THAT(calls::list(),
              IsSupersetOf({closedPort("task_eng_port"), closedPort("task_ui_port")}));
  calls::begin({});
  Store third;
  EXPECT_THAT(calls::list(),
              IsSupersetOf({openedPort("task_eng_port"), openedPort("task_ui_port")}));
  calls::begin({});
  store_.reset();
  EXPECT_THAT(calls::list(), Contains(closedPort("task_eng_port")));
}

TEST_F(StoreCalls, OpensWithoutReporterIfMemoryIsShort) {
  calls::begin({.outcomes = {{"check_tables", tablesPresent(true, true)},
                             {"all_categories", categories({listed(null)})}},
                .noMemory = true});
  store_ = std::make_unique<Store>();
  EXPECT_EQ(calls::list().back(), logged("<<< changeReporter new is failing"));
  int count = 0;
  EXPECT_EQ(store_->getCount(count), TASK_ENG_OK);
}

// What the database refuses while the store is being opened.

struct Opening {
  const char* name;
  Outcomes outcomes;
  // The calls after the check of the tables.
  Steps expected;
  bool opens;
};
void PrintTo(const Opening& opening, std::ostream* out) {
  *out << opening.name;
}

class StoreOpening : public StoreCalls, public testing::WithParamInterface<Opening> {};

TEST_P(StoreOpening, MakesCallsInOrder) {
  calls::begin({.outcomes = GetParam().outcomes});
  store_ = std::make_unique<Store>();
  Steps made = calls::list();
  const auto check = std::find(made.begin(), made.end(), queried("check_tables"));
  ASSERT_NE(check, made.end());
  made.erase(made.begin(), check + 1);
  EXPECT_THAT(made, AreSteps(GetParam().expected));

  int count = 0;
  EXPECT_EQ(store_->getCount(count), GetParam().opens ? TASK_ENG_OK : TASK_ENG_NOT_OPEN);
}

constexpr bool opens = true;
constexpr bool staysClosed = false;

// The check of the tables.
const std::vector<Opening> checks = {
    {"TablesCannotBeChecked",
     {{"check_tables", failsWith(otherFailure)}},
     gaveUp(TASK_ENG_DATABASE_FAILURE),
     staysClosed},
};

// The table of tasks is missing.
const std::vector<Opening> taskTables = {
    {"TaskTableFails",
     {{"check_tables", tablesPresent(false, true)},
      {"create_task_table", failsWith(otherFailure)},
      {"all_categories", categories({listed(null)})}},
     steps(freedRows(), tasksMissing, beganTaskTable, aborted(), foundNullCategory,
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    // The other indexes are tried nevertheless.
    {"FirstTaskIndexFails",
     {{"check_tables", tablesPresent(false, true)},
      {"create_index_priority", failsWith(diskFull)},
      {"all_categories", categories({listed(null)})}},
     steps(freedRows(), tasksMissing, madeTaskTableAndIndexes, aborted(), foundNullCategory,
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    {"LastTaskIndexFails",
     {{"check_tables", tablesPresent(false, true)},
      {"create_index_end", failsWith(otherFailure)},
      {"all_categories", categories({listed(null)})}},
     steps(freedRows(), tasksMissing, madeTaskTableAndIndexes, aborted(), foundNullCategory,
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    // The result of the category table replaces that of the task table.
    {"TaskTableFailsButCategoryTableIsCreated",
     {{"check_tables", tablesPresent(false, false)},
      {"create_task_table", failsWith(otherFailure)}},
     steps(freedRows(), tasksMissing, beganTaskTable, aborted(), categoriesMissing, madeCategories),
     opens},
};

// The table of categories is missing.
const std::vector<Opening> categoryTables = {
    {"CategoryTableFails",
     {{"check_tables", tablesPresent(true, false)},
      {"create_category_table", failsWith(otherFailure)}},
     steps(freedRows(), tasksPresent, categoriesMissing, beganCategoryTable, aborted(),
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    {"CategoryIndexFails",
     {{"check_tables", tablesPresent(true, false)},
      {"create_category_index", failsWith(otherFailure)}},
     steps(freedRows(), tasksPresent, categoriesMissing, madeCategoryTableAndIndex, aborted(),
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    {"FirstNullCategoryFails",
     {{"check_tables", tablesPresent(true, false)},
      {"insert_null_category", failsWith(otherFailure)}},
     steps(freedRows(), tasksPresent, categoriesMissing, madeCategoryTableAndIndex, committed(),
           insertedNullCategory,
           logged("Insert null category failed!! The ret is " + std::to_string(otherFailure)),
           aborted(), gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    {"NamedCategoriesFail",
     {{"check_tables", tablesPresent(true, false)},
      {"insert_default_category", failsWith(otherFailure)}},
     steps(freedRows(), tasksPresent, categoriesMissing, madeCategories),
     opens},
};

// Both tables are present.
const Outcome onlyNamedCategory = categories({listed("work")});
const std::vector<Opening> nullCategories = {
    {"CategoriesCannotBeRead",
     {{"check_tables", tablesPresent(true, true)}, {"all_categories", failsWith(otherFailure)}},
     steps(freedRows(), tasksPresent, readCategories,
           logged("GetCategory failed! " + ret(otherFailure)),
           logged("Get all categories failed when initialise db."),
           gaveUp(TASK_ENG_DATABASE_FAILURE)),
     staysClosed},
    {"CategoryTableIsEmpty",
     {{"check_tables", tablesPresent(true, true)},
      {"all_categories", categories({})},
      {"category_uid_by_name", unknownCategory},
      {"insert_category", addsRow(9)}},
     steps(freedRows(), tasksPresent, readCategories, logged("The category table is empty!"),
           freedRows(), counted(0), logged("Attention Please, No record in category table!!!"),
           logged("We have to add 'null' category to make calendar work!"), addedNullCategory,
           readTag()),
     opens},
    {"NullCategoryIsMissing",
     {{"check_tables", tablesPresent(true, true)},
      {"all_categories", onlyNamedCategory},
      {"category_uid_by_name", unknownCategory},
      {"insert_category", addsRow(9)}},
     steps(freedRows(), tasksPresent, readCategories, freedRows(), counted(1), addedNullCategory,
           readTag()),
     opens},
    {"AnotherProgramAddsNullCategory",
     {{"check_tables", tablesPresent(true, true)},
      {"all_categories", onlyNamedCategory},
      {"category_uid_by_name", foundCategory(7)}},
     steps(freedRows(), tasksPresent, readCategories, freedRows(), counted(1),
           lookedUpCategory(null), freedRows(), nullCategoryPresent),
     opens},
    {"NullCategoryCannotBeAdded",
     {{"check_tables", tablesPresent(true, true)},
      {"all_categories", onlyNamedCategory},
      {"category_uid_by_name", unknownCategory},
      {"insert_category", failsWith(diskFull)}},
     steps(
         freedRows(), tasksPresent, readCategories, freedRows(), counted(1), addedNullCategory,
         logged("AddCategory failed! " + ret(diskFull)),
         logged("Add null category failed!! The db ret is " + std::to_string(TASK_ENG_MEMORY_FULL)),
         gaveUp(TASK_ENG_MEMORY_FULL)),
     staysClosed},
};

std::string nameOfOpening(const testing::TestParamInfo<Opening>& info) {
  return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(Check, StoreOpening, testing::ValuesIn(checks), nameOfOpening);
INSTANTIATE_TEST_SUITE_P(TaskTable, StoreOpening, testing::ValuesIn(taskTables), nameOfOpening);
INSTANTIATE_TEST_SUITE_P(CategoryTable, StoreOpening, testing::ValuesIn(categoryTables),
                         nameOfOpening);
INSTANTIATE_TEST_SUITE_P(NullCategory, StoreOpening, testing::ValuesIn(nullCategories),
                         nameOfOpening);

// A store that is not open.

TEST_F(StoreCalls, ClosedStoreMakesNoCalls) {
  Store& store = closed();
  Task task;
  QString name("work");
  unsigned int uid = 55;
  int count = 55;
  QValueList<unsigned int> uids;
  QValueList<QString> names;
  QValueList<Task> tasks;
  EXPECT_EQ(store.addTask(task), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getTask(1, task), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.updateTask(task), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.removeTask(1), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.removeTasks(uids), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.renameCategory(name, name), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.removeCategory(name, true), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.removeTasksWithCategoryId(1), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getAllCategories(names), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getCount(count), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(count, 55);
  EXPECT_EQ(store.getCount(count, Store::TASK_CATEGORY_DUE), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(store.getAllIDs(uids), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getAllIDs(uids, Store::TASK_CATEGORY_ALL, Store::TASK_SORT_DUE),
            TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.removeAll(), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getMatchTasks(tasks, name), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getMatchTasks(tasks, task), TASK_ENG_NOT_OPEN);
  EXPECT_THAT(calls::list(), ElementsAre());
  EXPECT_EQ(store.getTasks(tasks, task, 0, Store::TASK_CATEGORY_ALL, Store::TASK_SORT_DUE),
            TASK_ENG_NOT_OPEN);
  EXPECT_THAT(calls::list(), AreSteps(logged("DB is not alive!!!")));
  EXPECT_EQ(uid, 55U);
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
}

}  // namespace
