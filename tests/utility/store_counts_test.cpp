// Counts, lists of UIDs, and the removal of all tasks, on the real database.

#include "store_test.h"

#include "UTIL_TimeConversion.h"
#include "environment_variable.h"

namespace {

using testing::ElementsAre;

class StoreCounts : public StoreTest {
protected:
  int countOf(Filter filter) {
    int result = -1;
    EXPECT_EQ(store().getCount(result, filter), TASK_ENG_OK);
    return result;
  }
  std::vector<unsigned int> listOf(Filter filter, Sort sort) {
    QValueList<unsigned int> list;
    EXPECT_EQ(store().getAllIDs(list, filter, sort), TASK_ENG_OK);
    return {list.begin(), list.end()};
  }
};

TEST_F(StoreCounts, EmptyStoreHasNoTasks) {
  EXPECT_EQ(count(), 0);
  QValueList<unsigned int> list;
  list.append(77);
  EXPECT_EQ(store().getAllIDs(list), TASK_ENG_OK);
  for (const Filter filter :
       {allTasks, dueTasks, incompleteTasks, completedTasks, Filter(7), Filter(-1)}) {
    EXPECT_EQ(countOf(filter), 0);
    for (const Sort sort : {byDueDate, byPriority})
      EXPECT_EQ(store().getAllIDs(list, filter, sort), TASK_ENG_OK);
  }
  EXPECT_EQ(list.count(), 1U);
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
}

TEST_F(StoreCounts, FiltersByStatus) {
  const unsigned int completed = add(task("a", 0, 0));
  const unsigned int incomplete = add(task("b", 0, 1));
  const unsigned int accepted = add(task("c", 0, 2));
  const unsigned int unset = add(task("d", 0, -1));
  EXPECT_EQ(count(), 4);
  EXPECT_EQ(countOf(allTasks), 4);
  EXPECT_EQ(countOf(dueTasks), 0);
  EXPECT_EQ(countOf(incompleteTasks), 1);
  EXPECT_THAT(listOf(allTasks, byDueDate), ElementsAre(unset, accepted, incomplete, completed));
  EXPECT_THAT(listOf(incompleteTasks, byDueDate), ElementsAre(incomplete));
  // Any other value is taken as completed.
  for (const Filter filter : {completedTasks, Filter(7), Filter(4), Filter(-1)}) {
    EXPECT_EQ(countOf(filter), 1) << filter;
    EXPECT_THAT(listOf(filter, byPriority), ElementsAre(completed)) << filter;
  }
  EXPECT_THAT(uids(), ElementsAre(completed, incomplete, accepted, unset));
}

TEST_F(StoreCounts, TasksAreDueUntilEndOfLocalDay) {
  const QDate today = now().date();
  const unsigned int evening = add(task("evening", 0, 1, QDateTime(today, QTime(18, 0))));
  const unsigned int overdue = add(task("overdue, completed", 0, 0, now().addDays(-30)));
  add(task("midnight", 0, 1, QDateTime(today.addDays(1), QTime(0, 0))));
  add(task("never", 0, 1));
  EXPECT_EQ(countOf(dueTasks), 2);
  EXPECT_THAT(listOf(dueTasks, byDueDate), ElementsAre(overdue, evening));
  // A task due in the last second of the day is counted but not listed.
  const unsigned int last = add(task("last", 0, 1, QDateTime(today, QTime(23, 59, 59))));
  EXPECT_EQ(countOf(dueTasks), 3);
  EXPECT_THAT(listOf(dueTasks, byDueDate), ElementsAre(overdue, evening));
  add(task("one before", 0, 1, QDateTime(today, QTime(23, 59, 58))));
  EXPECT_EQ(countOf(dueTasks), 4);
  EXPECT_EQ(listOf(dueTasks, byDueDate).size(), 3U);
  // On the next day it is listed.
  setEngineNow(now().addDays(1));
  EXPECT_EQ(countOf(dueTasks), 5);
  EXPECT_EQ(listOf(dueTasks, byDueDate).at(3), last);
}

TEST_F(StoreCounts, ShortDayEndsAtMidnight) {
  // In Berlin, clocks skip from 2:00 to 3:00 on this day.
  setEngineNow(QDateTime(QDate(2006, 3, 26), QTime(1, 0)));
  add(task("evening", 0, 1, QDateTime(QDate(2006, 3, 26), QTime(23, 59, 58))));
  add(task("tomorrow", 0, 1, QDateTime(QDate(2006, 3, 27), QTime(0, 0))));
  EXPECT_EQ(countOf(dueTasks), 1);
  EXPECT_EQ(listOf(dueTasks, byPriority).size(), 1U);
}

// `last` is the last second of the day, in UTC: tasks due until then are counted, later ones are
// not.
TEST_F(StoreCounts, DayEndsWithItsLastSecondIfClocksChangeAtMidnight) {
  const struct {
    const char* zone;
    QDate today;
    long last;
  } cases[] = {
      // Clocks go back from 24:00 to 23:00: the last hour occurs twice.
      {"America/Santiago", QDate(2024, 4, 6), 1712462399},
      {"America/Asuncion", QDate(2024, 3, 23), 1711252799},
      // The same, without a change of daylight saving time.
      {"Asia/Almaty", QDate(2024, 2, 29), 1709233199},
      // Clocks go back from 01:00 to 00:00: the first hour of the next day occurs twice.
      {"America/Havana", QDate(2023, 11, 4), 1699156799},
      // Clocks go forward from 23:00 to 24:00: the last hour is skipped.
      {"America/Nuuk", QDate(2024, 3, 30), 1711846799},
  };
  for (const auto& one : cases) {
    const EnvironmentVariable zone("TZ", one.zone);
    setEngineNow(QDateTime(one.today, QTime(12, 0)));
    const auto at = [&](long seconds) {
      return add(task("s", 0, 1, UTIL_TimeConversion::fromUTC(seconds)));
    };
    const unsigned int earlier = at(one.last - 3600);
    const unsigned int before = at(one.last - 1);
    at(one.last);
    at(one.last + 1);
    EXPECT_EQ(countOf(dueTasks), 3) << one.zone;
    EXPECT_THAT(listOf(dueTasks, byDueDate), ElementsAre(earlier, before)) << one.zone;
    EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  }
}

TEST_F(StoreCounts, SortsByEitherKeyThenTheOtherThenNewestFirst) {
  const QDateTime early = now().addDays(-2);
  const QDateTime late = now().addDays(-1);
  const unsigned int a = add(task("a", 2, 0, late));
  const unsigned int b = add(task("b", 1, 0, late));
  const unsigned int c = add(task("c", 2, 0, early));
  const unsigned int d = add(task("d", 2, 0, early));
  const unsigned int e = add(task("e", -1, 0));
  for (const Filter filter : {allTasks, completedTasks}) {
    EXPECT_THAT(listOf(filter, byDueDate), ElementsAre(d, c, b, a, e));
    EXPECT_THAT(listOf(filter, byPriority), ElementsAre(e, b, d, c, a));
    // Any other value is taken as priority.
    EXPECT_THAT(listOf(filter, Sort(5)), ElementsAre(e, b, d, c, a));
  }
  EXPECT_THAT(listOf(dueTasks, byDueDate), ElementsAre(d, c, b, a));
  EXPECT_THAT(listOf(dueTasks, byPriority), ElementsAre(b, d, c, a));
}

TEST_F(StoreCounts, GetAllIDsAppends) {
  const unsigned int uid = add(task("a", 0, 0, now()));
  QValueList<unsigned int> list;
  list.append(77);
  EXPECT_EQ(store().getAllIDs(list), TASK_ENG_OK);
  for (const Filter filter : {allTasks, dueTasks, completedTasks})
    EXPECT_EQ(store().getAllIDs(list, filter, byDueDate), TASK_ENG_OK);
  EXPECT_EQ(std::vector<unsigned int>(list.begin(), list.end()),
            (std::vector<unsigned int>{77, uid, uid, uid, uid}));
}

TEST_F(StoreCounts, RemoveAllKeepsCategories) {
  for (int i = 0; i < 30; ++i)
    add(task("s"));
  addCategory("work");
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(categories().size(), 7U);
  EXPECT_EQ(add(task("after")), 31U);
}

TEST_F(StoreCounts, GetCountOfClosedStoreClearsCountOnlyWithFilter) {
  setenv("ULO_DATA_DIR", "/dev/null/nowhere", 1);
  int number = 55;
  EXPECT_EQ(store().getCount(number), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(number, 55);
  EXPECT_EQ(store().getCount(number, allTasks), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(number, 0);
}

}  // namespace
