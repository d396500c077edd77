// The calls that the store makes to count, list, page through and remove many tasks.

#include "store_calls.h"

#include <climits>
#include <cstdint>

namespace {

using namespace calls;
using testing::ElementsAreArray;

constexpr auto all = Store::TASK_CATEGORY_ALL;
constexpr auto due = Store::TASK_CATEGORY_DUE;
// The store takes any other value for TASK_CATEGORY_COMPLETED.
constexpr auto unknownFilter = Store::TASK_CATEGORY(7);
constexpr auto negativeFilter = Store::TASK_CATEGORY(-1);

// Counts.

TEST_F(StoreCalls, GetCountBindsFilter) {
  const Outcome five = returns({{5}});
  const Steps countByStatus0 = withParameters({completed}, queried("count_tasks_by_status"));
  const struct {
    Store::TASK_CATEGORY filter;
    Steps expected;
  } cases[] = {
      {all, steps(queried("count_tasks"))},
      {due, withParameters({lastSecondOfToday}, queried("count_due_tasks"))},
      {Store::TASK_CATEGORY_INCOMPLETE,
       withParameters({incomplete}, queried("count_tasks_by_status"))},
      {Store::TASK_CATEGORY_COMPLETED, countByStatus0},
      {unknownFilter, countByStatus0},
      {negativeFilter, countByStatus0},
  };
  for (const auto& [filter, expected] : cases) {
    Store& store = open({.outcomes = {{"count_tasks", five},
                                      {"count_tasks_by_status", five},
                                      {"count_due_tasks", five}}});
    int count = 0;
    EXPECT_EQ(store.getCount(count, filter), TASK_ENG_OK);
    EXPECT_EQ(count, 5);
    EXPECT_THAT(calls::list(), AreSteps(expected, freedRows())) << filter;
  }
}

// Lists of UIDs.

TEST_F(StoreCalls, GetAllIDsBindsFilterAndNamesIndex) {
  const auto task = [](int uid) { return Row{uid, int{true}}; };
  const Row endOfList = {0, int{false}};
  const Outcome uids = returns({task(9), task(4), endOfList, task(77)});
  const struct {
    Store::TASK_SORT_FIELD sort;
    const char* index;
  } sorts[] = {{Store::TASK_SORT_DUE, "task_index_due"},
               {Store::TASK_SORT_PRIORITY, "task_index_priority"},
               {Store::TASK_SORT_FIELD(2), "task_index_priority"},
               {Store::TASK_SORT_FIELD(-1), "task_index_priority"}};
  for (const auto& [sort, index] : sorts) {
    const struct {
      Store::TASK_CATEGORY filter;
      Steps expected;
    } cases[] = {
        {all, steps(queried("uids_in_order", {index}))},
        {due, withParameters({lastSecondOfToday}, queried("due_uids", {index}))},
        {Store::TASK_CATEGORY_INCOMPLETE,
         withParameters({incomplete}, queried("uids_by_status", {index}))},
        {unknownFilter, withParameters({completed}, queried("uids_by_status", {index}))},
    };
    for (const auto& [filter, expected] : cases) {
      Store& store = open(
          {.outcomes = {{"uids_in_order", uids}, {"uids_by_status", uids}, {"due_uids", uids}}});
      QValueList<unsigned int> found;
      found.append(1);
      EXPECT_EQ(store.getAllIDs(found, filter, sort), TASK_ENG_OK);
      EXPECT_THAT(std::vector<unsigned int>(found.begin(), found.end()),
                  testing::ElementsAre(1, 9, 4));
      EXPECT_THAT(calls::list(), AreSteps(expected, freedRows())) << filter;
    }
  }
}

// The removal of all tasks.

TEST_F(StoreCalls, RemoveAllIsOneTransactionAndOneReportedBatch) {
  Store& store = open({.outcomes = {{"all_uids", returns({{5}, {3}})}}});
  EXPECT_EQ(store.removeAll(), TASK_ENG_OK);
  EXPECT_THAT(calls::list(),
              AreSteps(began(), queried("all_uids"), freedRows(), executed("remove_all_tasks"),
                       committed(), beganBatch(), reported(5, SVC_CT_REMOVED),
                       reported(3, SVC_CT_REMOVED), endedBatch()));
}

TEST_F(StoreCalls, RemoveAllRemovesNothingFromEmptyStore) {
  Store& store = open();
  EXPECT_EQ(store.removeAll(), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), AreSteps(began(), queried("all_uids"), freedRows(), aborted()));
}

TEST_F(StoreCalls, RemoveAllAbortsOnFailure) {
  Store& unreadable = open({.outcomes = {{"all_uids", failsWith(otherFailure)}}});
  EXPECT_EQ(unreadable.removeAll(), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(calls::list(),
              AreSteps(began(), queried("all_uids"),
                       logged("GetAllIDs failed! " + ret(otherFailure)), aborted(),
                       logged("GetAllIDs failed! " + ret(TASK_ENG_DATABASE_FAILURE))));
  for (const int code : {diskFull, otherFailure}) {
    Store& store =
        open({.outcomes = {{"all_uids", returns({{5}})}, {"remove_all_tasks", failsWith(code)}}});
    EXPECT_EQ(store.removeAll(), codeOfFailedChange(code));
    EXPECT_THAT(calls::list(),
                AreSteps(began(), queried("all_uids"), freedRows(), executed("remove_all_tasks"),
                         logged("RemoveAll failed! " + ret(code)), aborted()));
  }
}

// Ranges of dates.

const Row endOfRange = TaskRow{}.flagged(true);

TEST_F(StoreCalls, RangeIsOfDueDatesOrEndDates) {
  constexpr long from = -5;
  constexpr long to = 70;
  for (int number = -1; number <= 9; ++number) {
    const auto field = Task::TASK_FIELD_T(number);
    const std::vector<std::string> indexAndColumns =
        field == Task::TASK_FIELD_DUE ? std::vector<std::string>{"task_index_due", "due", "due"}
                                      : std::vector<std::string>{"task_index_end", "end", "end"};
    Store& store = open({.outcomes = {{"tasks_in_range", returns({endOfRange})}}});
    QValueList<Task> tasks;
    EXPECT_EQ(store.getTasks(tasks, field, from, to), TASK_ENG_NOT_FOUND);
    EXPECT_THAT(
        calls::list(),
        AreSteps(withParameters({-5, 70}, queried("tasks_in_range", indexAndColumns)), freedRows()))
        << field;
  }
}

TEST_F(StoreCalls, RangeThatEndsBeforeItStartsIsRefused) {
  Store& store = open();
  QValueList<Task> tasks;
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, 2, 1), TASK_ENG_BAD_PARAMETER);
  EXPECT_THAT(calls::list(), AreSteps());
  // The ends are compared before they are limited to 32 bits.
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, LONG_MAX, LONG_MAX - 1),
            TASK_ENG_BAD_PARAMETER);
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, LONG_MIN, LONG_MAX), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf(bound(0, {INT_MIN, INT_MAX})));
}

// Stored dates have 32 bits. A range that they cannot reach is bound as one that ends before it
// starts, so that it is empty.
TEST_F(StoreCalls, RangeIsLimitedToStoredDates) {
  constexpr std::int64_t earliest = INT_MIN;
  constexpr std::int64_t latest = INT_MAX;
  const Steps emptyRange = bound(0, {INT_MAX, INT_MIN});
  const struct {
    std::int64_t from;
    std::int64_t to;
    Steps expected;
  } cases[] = {
      {3000000000, 4000000000, emptyRange},
      {latest + 1, latest + 1, emptyRange},
      {-4000000000, -3000000000, emptyRange},
      {earliest - 1, earliest - 1, emptyRange},
      {latest, latest + 1, bound(0, {INT_MAX, INT_MAX})},
      {latest, latest, bound(0, {INT_MAX, INT_MAX})},
      {earliest - 1, earliest, bound(0, {INT_MIN, INT_MIN})},
      {-3000000000, 5, bound(0, {INT_MIN, 5})},
      {5, 3000000000, bound(0, {5, INT_MAX})},
  };
  for (const auto& [from, to, expected] : cases) {
    if (from != static_cast<long>(from) || to != static_cast<long>(to))
      continue;  // a long of 32 bits
    Store& store = open({.outcomes = {{"tasks_in_range", returns({endOfRange})}}});
    QValueList<Task> tasks;
    EXPECT_EQ(
        store.getTasks(tasks, Task::TASK_FIELD_DUE, static_cast<long>(from), static_cast<long>(to)),
        TASK_ENG_NOT_FOUND);
    Steps first = calls::list();
    first.resize(3);
    EXPECT_THAT(first, AreSteps(openedBlock(2), expected)) << from << " to " << to;
  }
}

// Pages.

TEST_F(StoreCalls, PageBindsKeyOfStartCountAndFilter) {
  constexpr int count = 10;
  Task start = milk();
  start.setUINT32(Task::TASK_FIELD_UID, 31);
  const auto task = [](int uid) {
    return TaskRow{.priority = 1, .category = workUid, .uid = uid}.flagged(true);
  };
  const Row endOfPage = TaskRow{}.flagged(false);
  const Outcome page = returns({task(31), task(32), endOfPage, task(33)});
  const struct {
    Store::TASK_SORT_FIELD sort;
    const char* index;
    std::vector<Value> key;
  } sorts[] = {{Store::TASK_SORT_DUE, "task_index_due", {milkDue, milkPriority, 31}},
               {Store::TASK_SORT_PRIORITY, "task_index_priority", {milkPriority, milkDue, 31}}};
  const struct {
    Store::TASK_CATEGORY filter;
    const char* statement;
    std::vector<Value> operands;
  } filters[] = {{all, "page_of_tasks", {}},
                 {due, "page_of_due_tasks", {lastSecondOfToday}},
                 {Store::TASK_CATEGORY_INCOMPLETE, "page_by_status", {incomplete}},
                 {Store::TASK_CATEGORY_COMPLETED, "page_by_status", {completed}},
                 {unknownFilter, "page_by_status", {completed}}};
  for (const auto& [sort, index, key] : sorts) {
    for (const auto& [filter, statement, operands] : filters) {
      Store& store = open({.outcomes = {{"page_of_tasks", page},
                                        {"page_by_status", page},
                                        {"page_of_due_tasks", page}}});
      QValueList<Task> tasks;
      EXPECT_EQ(store.getTasks(tasks, start, count, filter, sort), TASK_ENG_OK);
      ASSERT_EQ(tasks.count(), 2U);
      EXPECT_EQ(tasks.at(0).getUINT32(Task::TASK_FIELD_UID), 31U);
      EXPECT_EQ(tasks.at(1).getUINT32(Task::TASK_FIELD_UID), 32U);
      const int parameters = 4 + static_cast<int>(operands.size());
      const Steps expected = steps(openedBlock(parameters), bound(0, key), bound(3, count),
                                   bound(4, operands), byBlock(queried(statement, {index})));
      Steps first = calls::list();
      first.resize(expected.size());
      EXPECT_THAT(first, ElementsAreArray(expected)) << statement << ' ' << filter;
    }
  }
}

TEST_F(StoreCalls, FreesRowsBeforeLoggingThatPageIsEmpty) {
  Store& store = open({.outcomes = {{"page_of_tasks", returns({TaskRow{}.flagged(false)})}}});
  QValueList<Task> tasks;
  Task start = milk();
  EXPECT_EQ(store.getTasks(tasks, start, 1, all, Store::TASK_SORT_DUE), TASK_ENG_NOT_FOUND);
  const Steps made = calls::list();
  ASSERT_GE(made.size(), 2U);
  EXPECT_EQ(made.at(made.size() - 2), freedRows());
  EXPECT_EQ(made.back(), logged("Record not found!! " + ret(DB_OK)));
}

}  // namespace
