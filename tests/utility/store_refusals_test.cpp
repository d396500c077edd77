// Every operation of the store, at every place where the database can fail: the result code, the
// log lines, and that nothing is reported.

#include "store_calls.h"

#include <functional>

namespace {

using namespace calls;

// A failure of one operation, described as
//
//   Refusal("AddTaskWhenInsertIsFull", addTask)
//       .when("category_uid_by_name", foundWork)
//       .when("insert_task", failsWith(diskFull))
//       .returns(TASK_ENG_MEMORY_FULL)
//       .logs({"AddTask failed! " + ret(diskFull)})
class Refusal {
public:
  using Operation = std::function<int(Store&)>;

  Refusal(const char* name, Operation operation) : name_(name), operation_(std::move(operation)) {}

  // The outcome of a statement; others succeed.
  Refusal& when(const char* statement, const Outcome& outcome) {
    plan_.outcomes[statement] = outcome;
    return *this;
  }
  // Only so many parameter blocks can be allocated.
  Refusal& whenBlocksAreLimitedTo(int blocks) {
    plan_.parameterBlocks = blocks;
    return *this;
  }
  Refusal& returns(int code) {
    code_ = code;
    return *this;
  }
  // All messages that the operation logs. By default there are none.
  Refusal& logs(const std::vector<std::string>& messages) {
    messages_ = messages;
    return *this;
  }

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const Plan& plan() const { return plan_; }
  int operator()(Store& store) const { return operation_(store); }
  [[nodiscard]] int code() const { return code_; }
  [[nodiscard]] const std::vector<std::string>& messages() const { return messages_; }

private:
  std::string name_;
  Operation operation_;
  Plan plan_;
  int code_ = TASK_ENG_OK;
  std::vector<std::string> messages_;
};
void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name();
}

class StoreRefusal : public StoreCalls, public testing::WithParamInterface<Refusal> {};

TEST_P(StoreRefusal, ReturnsCodeAndLogsReason) {
  const Refusal& refusal = GetParam();
  Store& store = open(refusal.plan());
  EXPECT_EQ(refusal(store), refusal.code());
  Steps logLines;
  for (const std::string& step : calls::list()) {
    if (step.starts_with("log "))
      logLines.push_back(step);
    EXPECT_FALSE(step.starts_with("report")) << step;
  }
  Steps expected;
  for (const std::string& message : refusal.messages())
    expected.push_back(logged(message));
  EXPECT_THAT(logLines, testing::ElementsAreArray(expected));
}

std::string nameOfRefusal(const testing::TestParamInfo<Refusal>& info) {
  return info.param.name();
}
#define INSTANTIATE_REFUSALS(operations, refusals)                                                 \
  INSTANTIATE_TEST_SUITE_P(operations, StoreRefusal, testing::ValuesIn(refusals), nameOfRefusal)

constexpr char noMemory[] = "Db memary is full!";
constexpr char workIsUnknown[] = "The category work is not exist!";

// Tasks.

// The record must keep its UID.
int addTask(Store& store) {
  Task task;
  task.setString(Task::TASK_FIELD_UUID, "u");
  const int code = store.addTask(task);
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
  return code;
}
// The record must stay as it is.
int getTask5(Store& store) {
  Task task;
  task.setPriority(77);
  const int code = store.getTask(5, task);
  EXPECT_EQ(task.getPriorityValue(), 77);
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
  return code;
}
int updateTask(Store& store) {
  Task task;
  task.setString(Task::TASK_FIELD_NOTE, "n");
  task.setString(Task::TASK_FIELD_SUMMARY, "s");
  return store.updateTask(task);
}
int removeTask5(Store& store) {
  return store.removeTask(5);
}

const std::vector<Refusal> taskRefusals = {
    Refusal("AddTaskWithoutBlockForLookup", addTask)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory, "Get category id failed!"}),
    Refusal("AddTaskWhenLookupIsFull", addTask)
        .when("category_uid_by_name", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(diskFull), "Get category id failed!"}),
    Refusal("AddTaskWhenLookupFails", addTask)
        .when("category_uid_by_name", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(otherFailure), "Get category id failed!"}),
    Refusal("AddTaskWithoutBlockForInsert", addTask)
        .when("category_uid_by_name", foundWork)
        .whenBlocksAreLimitedTo(1)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("AddTaskWhenInsertIsFull", addTask)
        .when("category_uid_by_name", foundWork)
        .when("insert_task", failsWith(diskFull))
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({"AddTask failed! " + ret(diskFull)}),
    Refusal("AddTaskWhenInsertFails", addTask)
        .when("category_uid_by_name", foundWork)
        .when("insert_task", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"AddTask failed! " + ret(otherFailure)}),

    Refusal("GetTaskWhenFull", getTask5)
        .when("get_task", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTask failed! " + ret(diskFull)}),
    Refusal("GetTaskWhenQueryFails", getTask5)
        .when("get_task", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTask failed! " + ret(otherFailure)}),
    Refusal("GetTaskOfUnknownUid", getTask5)
        .when("get_task", {.tag = 0})
        .returns(TASK_ENG_NOT_FOUND)
        .logs({"The task with uid 5 is not exist!"}),

    Refusal("UpdateTaskWithoutBlockForLookup", updateTask)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory, "Get categoryid failed!" + ret(TASK_ENG_MEMORY_FULL)}),
    Refusal("UpdateTaskWhenLookupFails", updateTask)
        .when("category_uid_by_name", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(otherFailure),
               "Get categoryid failed!" + ret(TASK_ENG_DATABASE_FAILURE)}),
    Refusal("UpdateTaskOfUnknownCategory", updateTask)
        .when("category_uid_by_name", unknownCategory)
        .returns(TASK_ENG_NOT_FOUND)
        .logs({"The category  is not exist!", "Get categoryid failed!" + ret(TASK_ENG_NOT_FOUND)}),
    Refusal("UpdateTaskWithoutBlockForUpdate", updateTask)
        .when("category_uid_by_name", foundWork)
        .whenBlocksAreLimitedTo(1)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("UpdateTaskWhenFull", updateTask)
        .when("category_uid_by_name", foundWork)
        .when("update_task", failsWith(diskFull))
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({"UpdateTask failed! " + ret(diskFull), "DB Memory full!"}),
    Refusal("UpdateTaskWhenUpdateFails", updateTask)
        .when("category_uid_by_name", foundWork)
        .when("update_task", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"UpdateTask failed! " + ret(otherFailure)}),
    Refusal("UpdateTaskOfUnknownUid", updateTask)
        .when("category_uid_by_name", foundWork)
        .when("update_task", flag(false))
        .returns(TASK_ENG_NOT_FOUND)
        .logs({"The task with uid -1 is not exist!"}),

    Refusal("RemoveTaskWithoutBlock", removeTask5)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RemoveTaskWhenFull", removeTask5)
        .when("remove_task", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"RemoveTask failed! " + ret(diskFull)}),
    Refusal("RemoveTaskWhenRemovalFails", removeTask5)
        .when("remove_task", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"RemoveTask failed! " + ret(otherFailure)}),
    Refusal("RemoveTaskOfUnknownUid", removeTask5)
        .when("remove_task", flag(false))
        .returns(TASK_ENG_NOT_FOUND)
        .logs({"The task with uid 5 is not exist!"}),
};
INSTANTIATE_REFUSALS(Tasks, taskRefusals);

// Categories.

// `uid` must stay as it is.
int addCategory(Store& store) {
  QString name("work");
  unsigned int uid = 55;
  const int code = store.addCategory(name, uid);
  EXPECT_EQ(uid, 55U);
  return code;
}
int renameCategory(Store& store) {
  QString name("work");
  return store.renameCategory(name, name);
}
int removeCategory(Store& store) {
  QString name("work");
  return store.removeCategory(name, false);
}
int removeCategoryAndTasks(Store& store) {
  QString name("work");
  return store.removeCategory(name, true);
}
// The list must stay empty.
int getAllCategories(Store& store) {
  QValueList<QString> names;
  const int code = store.getAllCategories(names);
  EXPECT_TRUE(names.isEmpty());
  return code;
}

const std::vector<Refusal> categoryRefusals = {
    Refusal("AddCategoryWithoutBlockForLookup", addCategory)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({noMemory}),
    Refusal("AddCategoryWhenLookupFails", addCategory)
        .when("category_uid_by_name", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(diskFull)}),
    Refusal("AddCategoryWithoutBlockForInsert", addCategory)
        .when("category_uid_by_name", unknownCategory)
        .whenBlocksAreLimitedTo(1)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({workIsUnknown, noMemory}),
    Refusal("AddCategoryWhenInsertIsFull", addCategory)
        .when("category_uid_by_name", unknownCategory)
        .when("insert_category", failsWith(diskFull))
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({workIsUnknown, "AddCategory failed! " + ret(diskFull)}),
    Refusal("AddCategoryWhenInsertFails", addCategory)
        .when("category_uid_by_name", unknownCategory)
        .when("insert_category", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({workIsUnknown, "AddCategory failed! " + ret(otherFailure)}),
    Refusal("AddCategoryThatExists", addCategory)
        .when("category_uid_by_name", foundWork)
        .returns(TASK_ENG_EXISTS),

    Refusal("RenameCategoryWithoutBlock", renameCategory)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RenameCategoryWhenFull", renameCategory)
        .when("rename_category", failsWith(diskFull))
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({"RenameCategory failed! " + ret(diskFull)}),
    Refusal("RenameCategoryWhenUpdateFails", renameCategory)
        .when("rename_category", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"RenameCategory failed! " + ret(otherFailure)}),

    Refusal("RemoveCategoryWithoutBlock", removeCategory)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RemoveCategoryWhenFull", removeCategory)
        .when("remove_category", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"RemoveCategory failed! " + ret(diskFull)}),
    Refusal("RemoveCategoryWhenRemovalFails", removeCategory)
        .when("remove_category", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"RemoveCategory failed! " + ret(otherFailure)}),

    Refusal("RemoveCategoryAndTasksWithoutBlockForLookup", removeCategoryAndTasks)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RemoveCategoryAndTasksWhenLookupFails", removeCategoryAndTasks)
        .when("category_uid_by_name", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(otherFailure)}),
    Refusal("RemoveCategoryAndTasksOfUnknownName", removeCategoryAndTasks)
        .when("category_uid_by_name", unknownCategory)
        .returns(TASK_ENG_OK)
        .logs({workIsUnknown, "No such category!!"}),
    Refusal("RemoveCategoryAndTasksWithoutBlockForTasks", removeCategoryAndTasks)
        .when("category_uid_by_name", foundWork)
        .whenBlocksAreLimitedTo(1)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RemoveCategoryAndTasksWhenTasksCannotBeRemoved", removeCategoryAndTasks)
        .when("category_uid_by_name", foundWork)
        .when("remove_tasks_of_category", failsWith(diskFull))
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({"RemoveAll failed! " + ret(diskFull)}),
    Refusal("RemoveCategoryAndTasksWithoutBlockAfterTasks", removeCategoryAndTasks)
        .when("category_uid_by_name", foundWork)
        .when("remove_tasks_of_category", flag(true))
        .whenBlocksAreLimitedTo(2)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({"No task with such category!", noMemory}),

    Refusal("GetAllCategoriesWhenQueryFails", getAllCategories)
        .when("all_categories", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategory failed! " + ret(diskFull)}),
    Refusal("GetAllCategoriesOfEmptyTable", getAllCategories)
        .when("all_categories", categories({}))
        .returns(TASK_ENG_OK)
        .logs({"The category table is empty!"}),
};
INSTANTIATE_REFUSALS(Categories, categoryRefusals);

// Counts and lists of UIDs.

// The count must stay as it is.
Refusal::Operation getCount(Store::TASK_CATEGORY filter) {
  return [filter](Store& store) {
    int count = 55;
    const int code = store.getCount(count, filter);
    EXPECT_EQ(count, 55);
    return code;
  };
}
// The list must stay empty.
Refusal::Operation getAllIDs(Store::TASK_CATEGORY filter) {
  return [filter](Store& store) {
    QValueList<unsigned int> uids;
    const int code = store.getAllIDs(uids, filter, Store::TASK_SORT_DUE);
    EXPECT_TRUE(uids.isEmpty());
    return code;
  };
}
int getAllIDsUnsorted(Store& store) {
  QValueList<unsigned int> uids;
  const int code = store.getAllIDs(uids);
  EXPECT_TRUE(uids.isEmpty());
  return code;
}

const std::vector<Refusal> countRefusals = {
    Refusal("GetCountWhenQueryFails", getCount(Store::TASK_CATEGORY_ALL))
        .when("count_tasks", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCount failed! " + ret(diskFull)}),
    Refusal("GetCountOfDueWithoutBlock", getCount(Store::TASK_CATEGORY_DUE))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("GetCountOfDueWhenQueryFails", getCount(Store::TASK_CATEGORY_DUE))
        .when("count_due_tasks", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(otherFailure)}),
    // A filter by status does not check the block, so the query fails.
    Refusal("GetCountOfIncompleteWithoutBlock", getCount(Store::TASK_CATEGORY_INCOMPLETE))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(DB_BAD_PARAMETER)}),
    Refusal("GetCountOfCompletedWhenQueryFails", getCount(Store::TASK_CATEGORY_COMPLETED))
        .when("count_tasks_by_status", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(diskFull)}),

    Refusal("GetAllIDsUnsortedWhenQueryFails", getAllIDsUnsorted)
        .when("all_uids", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetAllIDs failed! " + ret(diskFull)}),
    Refusal("GetAllIDsWhenQueryFails", getAllIDs(Store::TASK_CATEGORY_ALL))
        .when("uids_in_order", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(otherFailure)}),
    Refusal("GetAllIDsOfDueWithoutBlock", getAllIDs(Store::TASK_CATEGORY_DUE))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("GetAllIDsOfDueWhenQueryFails", getAllIDs(Store::TASK_CATEGORY_DUE))
        .when("due_uids", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(otherFailure)}),
    Refusal("GetAllIDsOfCompletedWithoutBlock", getAllIDs(Store::TASK_CATEGORY_COMPLETED))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(DB_BAD_PARAMETER)}),
    Refusal("GetAllIDsOfIncompleteWhenQueryFails", getAllIDs(Store::TASK_CATEGORY_INCOMPLETE))
        .when("uids_by_status", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(diskFull)}),
};
INSTANTIATE_REFUSALS(Counts, countRefusals);

// Lists of tasks.

// Runs a query whose list must stay empty.
template <typename Query> int withoutResult(Query query) {
  QValueList<Task> tasks;
  const int code = query(tasks);
  EXPECT_TRUE(tasks.isEmpty());
  return code;
}
int getRange(Store& store) {
  return withoutResult(
      [&](auto& tasks) { return store.getTasks(tasks, Task::TASK_FIELD_DUE, 0, 1); });
}
int getTasksOfCategory(Store& store) {
  QString name("work");
  return withoutResult([&](auto& tasks) { return store.getTasks(tasks, name); });
}
Refusal::Operation getPage(Store::TASK_CATEGORY filter) {
  return [filter](Store& store) {
    Task start;
    return withoutResult(
        [&](auto& tasks) { return store.getTasks(tasks, start, 1, filter, Store::TASK_SORT_DUE); });
  };
}
int matchText(Store& store) {
  QString text("x");
  return withoutResult([&](auto& tasks) { return store.getMatchTasks(tasks, text); });
}
int matchExample(Store& store) {
  Task example;
  return withoutResult([&](auto& tasks) { return store.getMatchTasks(tasks, example); });
}

const Outcome oneTask = returns({{1}});  // count_tasks

const std::vector<Refusal> listRefusals = {
    Refusal("RangeWithoutBlock", getRange)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("RangeWhenQueryFails", getRange)
        .when("tasks_in_range", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(diskFull)}),

    Refusal("TasksOfUnknownCategory", getTasksOfCategory)
        .when("category_uid_by_name", unknownCategory)
        .returns(TASK_ENG_NOT_FOUND)
        .logs({workIsUnknown}),
    Refusal("TasksOfCategoryWithoutBlockForLookup", getTasksOfCategory)
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("TasksOfCategoryWhenLookupFails", getTasksOfCategory)
        .when("category_uid_by_name", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCategoryId failed! " + ret(otherFailure)}),
    Refusal("TasksOfCategoryWithoutBlockForTasks", getTasksOfCategory)
        .when("category_uid_by_name", foundWork)
        .whenBlocksAreLimitedTo(1)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("TasksOfCategoryWhenQueryFails", getTasksOfCategory)
        .when("category_uid_by_name", foundWork)
        .when("tasks_of_category", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(diskFull)}),

    Refusal("PageWithoutBlock", getPage(Store::TASK_CATEGORY_ALL))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("PageOfDueWithoutBlock", getPage(Store::TASK_CATEGORY_DUE))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("PageByStatusWithoutBlock", getPage(Store::TASK_CATEGORY_INCOMPLETE))
        .whenBlocksAreLimitedTo(0)
        .returns(TASK_ENG_MEMORY_FULL)
        .logs({noMemory}),
    Refusal("PageWhenQueryFails", getPage(Store::TASK_CATEGORY_ALL))
        .when("page_of_tasks", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(diskFull)}),
    Refusal("PageOfDueWhenQueryFails", getPage(Store::TASK_CATEGORY_DUE))
        .when("page_of_due_tasks", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(otherFailure)}),
    Refusal("PageByStatusWhenQueryFails", getPage(Store::TASK_CATEGORY_COMPLETED))
        .when("page_by_status", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(otherFailure)}),
    Refusal("PageWithoutRows", getPage(Store::TASK_CATEGORY_COMPLETED))
        .returns(TASK_ENG_NOT_FOUND)
        .logs({"Record not found!! " + ret(DB_OK)}),

    Refusal("MatchTextWhenCountFails", matchText)
        .when("count_tasks", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCount failed! " + ret(otherFailure)}),
    Refusal("MatchTextWhenTasksCannotBeRead", matchText)
        .when("count_tasks", oneTask)
        .when("all_tasks", failsWith(diskFull))
        .returns(TASK_ENG_DATABASE_FAILURE),
    Refusal("MatchExampleWhenCountFails", matchExample)
        .when("count_tasks", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetCount failed! " + ret(otherFailure)}),
    Refusal("MatchExampleWhenTasksCannotBeRead", matchExample)
        .when("count_tasks", oneTask)
        .when("all_tasks", failsWith(otherFailure))
        .returns(TASK_ENG_DATABASE_FAILURE)
        .logs({"GetTasks failed! " + ret(TASK_ENG_DATABASE_FAILURE)}),
};
INSTANTIATE_REFUSALS(Lists, listRefusals);

}  // namespace
