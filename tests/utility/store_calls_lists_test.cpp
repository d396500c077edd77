// Counts, lists and pages: what the store asks of the platform, call by call, and what it makes of
// every answer.

#include "store_calls.h"

#include <map>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

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
