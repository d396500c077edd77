// What the store makes of every refusal of the platform.

#include "store_calls.h"

#include <functional>
#include <map>

namespace {

using testing::ElementsAreArray;

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
     {"log AddTask failed! [ret=12]"}},
    {"AddFails",
     add,
     {{"category_uid_by_name", found7}, {"insert_task", refused}},
     plenty,
     6,
     {"log AddTask failed! [ret=9]"}},

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
