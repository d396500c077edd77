// Operations of the store when memory is exhausted while a text is converted.

#include "store_calls.h"

#include <functional>

namespace {

using namespace calls;

// An operation that converts texts. It must leave everything as it was if it cannot.
struct Conversion {
  const char* name;
  std::function<int(Store&)> operation;
};
void PrintTo(const Conversion& conversion, std::ostream* out) {
  *out << conversion.name;
}

// Runs an operation that appends to a list.
template <typename Value, typename Operation>
std::function<int(Store&)> appending(Operation operation) {
  return [operation](Store& store) {
    QValueList<Value> list;
    list.append(Value());
    const int code = operation(store, list);
    EXPECT_EQ(list.count() > 1, code == TASK_ENG_OK);
    return code;
  };
}

QString work() {
  return QStringLiteral("work");
}

const TaskRow milk = {.note = u"note", .summary = u"milk", .uuid = u"u", .category = workUid};

// Two tasks; the last row is not a task.
Outcome twoTasks(bool flag) {
  return returns({milk.flagged(flag), milk.flagged(flag), TaskRow{}.flagged(!flag)});
}

const Outcomes outcomes = {
    {"all_categories", categories({listed(null), listed("work"), listed("home")})},
    {"all_tasks", returns({milk.plain(), milk.plain()})},
    {"category_name_by_uid", returns({{"work"}})},
    {"category_uid_by_name", foundWork},
    {"count_tasks", returns({{2}})},
    {"get_task", twoTasks(true)},
    {"page_of_tasks", twoTasks(true)},
    {"tasks_in_range", twoTasks(false)},
    {"tasks_of_category", twoTasks(false)},
    {"update_task", flag(true)},
};

const Conversion conversions[] = {
    {"AddTask",
     [](Store& store) {
       Task task;
       task.setString(Task::TASK_FIELD_CATEGORY, work());
       task.setString(Task::TASK_FIELD_SUMMARY, "milk");
       const int code = store.addTask(task);
       EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID) != Task::notStored, code == TASK_ENG_OK);
       return code;
     }},
    {"UpdateTask",
     [](Store& store) {
       Task task;
       task.setString(Task::TASK_FIELD_CATEGORY, work());
       return store.updateTask(task);
     }},
    {"GetTask",
     [](Store& store) {
       Task task;
       return store.getTask(5, task);
     }},
    {"RenameCategory",
     [](Store& store) {
       QString oldName = work();
       QString newName = QStringLiteral("labor");
       return store.renameCategory(oldName, newName);
     }},
    {"RemoveCategory",
     [](Store& store) {
       QString name = work();
       return store.removeCategory(name, false);
     }},
    {"GetAllCategories",
     appending<QString>([](Store& store, auto& names) { return store.getAllCategories(names); })},
    {"GetTasksOfRange", appending<Task>([](Store& store, auto& tasks) {
       return store.getTasks(tasks, Task::TASK_FIELD_DUE, 0, noon);
     })},
    {"GetTasksOfCategory", appending<Task>([](Store& store, auto& tasks) {
       QString name = work();
       return store.getTasks(tasks, name);
     })},
    {"GetPageOfTasks", appending<Task>([](Store& store, auto& tasks) {
       Task start;
       return store.getTasks(tasks, start, 10, Store::TASK_CATEGORY_ALL, Store::TASK_SORT_DUE);
     })},
    {"GetTasksWithText", appending<Task>([](Store& store, auto& tasks) {
       QString text = QStringLiteral("il");
       return store.getMatchTasks(tasks, text);
     })},
    {"GetTasksLikeExample", [](Store& store) {
       Task example;
       example.setStatus(completed);
       example.setString(Task::TASK_FIELD_SUMMARY, "milk");
       QValueList<Task> tasks;
       const int code = store.getMatchTasks(tasks, example);
       EXPECT_EQ(tasks.isEmpty(), code != TASK_ENG_OK);
       return code;
     }}};

class StoreWithoutMemory : public StoreCalls, public testing::WithParamInterface<Conversion> {};

TEST_P(StoreWithoutMemory, ReturnsCodeForEachText) {
  constexpr int mostTexts = 100;
  int texts = 0;
  for (;; ++texts) {
    ASSERT_LT(texts, mostTexts);
    Store& store = open({.outcomes = outcomes, .texts = texts});
    const int code = GetParam().operation(store);
    if (code == TASK_ENG_OK)
      break;
    EXPECT_EQ(code, TASK_ENG_MEMORY_FULL) << texts;
    EXPECT_THAT(calls::list(), testing::Contains(logged("Db memary is full!"))) << texts;
    EXPECT_THAT(calls::list(), testing::Not(testing::Contains(testing::StartsWith("report"))));
    EXPECT_EQ(calls::held(), 0) << texts;
  }
  EXPECT_GT(texts, 0);
}

INSTANTIATE_TEST_SUITE_P(Operations, StoreWithoutMemory, testing::ValuesIn(conversions),
                         [](const auto& info) { return info.param.name; });

TEST_F(StoreCalls, AddTaskWithoutMemoryForNewCategoryStoresNothing) {
  Store& store = open({.outcomes = {{"category_uid_by_name", unknownCategory}}, .texts = 2});
  Task task;
  task.setString(Task::TASK_FIELD_CATEGORY, work());
  EXPECT_EQ(store.addTask(task), TASK_ENG_MEMORY_FULL);
  EXPECT_THAT(calls::list(), testing::Not(testing::Contains(testing::HasSubstr("insert"))));
}

TEST_F(StoreCalls, StoreOpenedWithoutMemoryIsNotOpen) {
  calls::begin({.outcomes = {{"check_tables", tablesPresent(true, true)},
                             {"all_categories", categories({listed("work")})}},
                .texts = 0});
  store_ = std::make_unique<Store>();
  int count = 0;
  EXPECT_EQ(store_->getCount(count), TASK_ENG_NOT_OPEN);
}

}  // namespace
