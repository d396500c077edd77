// Counts, lists of UIDs and the removal of everything on the real database.

#include "store_test.h"

#include "../platform/environment_variable.h"
#include "UTIL_TimeConversion.h"

namespace {

using testing::ElementsAre;

class StoreCounts : public StoreTest {
protected:
  int countOf(int category) {
    int result = -1;
    EXPECT_EQ(store().getCount(result, ZTASK_ENG_Model::TASK_CATEGORY(category)), ok);
    return result;
  }
  std::vector<unsigned int> listOf(int category, int sort) {
    QValueList<unsigned int> list;
    EXPECT_EQ(store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY(category),
                                ZTASK_ENG_Model::TASK_SORT_FIELD(sort)),
              ok);
    return {list.begin(), list.end()};
  }
};

TEST_F(StoreCounts, AnEmptyStoreHasNothing) {
  EXPECT_EQ(count(), 0);
  QValueList<unsigned int> list;
  list.append(77);
  EXPECT_EQ(store().getAllIDs(list), ok);
  for (const int category : {0, 1, 2, 3, 7, -1}) {
    EXPECT_EQ(countOf(category), 0);
    for (const int sort : {0, 1})
      EXPECT_EQ(store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY(category),
                                  ZTASK_ENG_Model::TASK_SORT_FIELD(sort)),
                ok);
  }
  EXPECT_EQ(list.count(), 1U);
  EXPECT_EQ(store().removeAll(), ok);
}

TEST_F(StoreCounts, FiltersByStatus) {
  const unsigned int completed = add(task("a", 0, 0));
  const unsigned int incomplete = add(task("b", 0, 1));
  const unsigned int accepted = add(task("c", 0, 2));
  const unsigned int unset = add(task("d", 0, -1));
  EXPECT_EQ(count(), 4);
  EXPECT_EQ(countOf(0), 4);
  EXPECT_EQ(countOf(1), 0);
  EXPECT_EQ(countOf(2), 1);
  EXPECT_THAT(listOf(0, 0), ElementsAre(unset, accepted, incomplete, completed));
  EXPECT_THAT(listOf(2, 0), ElementsAre(incomplete));
  for (const int category : {3, 7, 4, -1}) {
    EXPECT_EQ(countOf(category), 1) << category;
    EXPECT_THAT(listOf(category, 1), ElementsAre(completed)) << category;
  }
  EXPECT_THAT(uids(), ElementsAre(completed, incomplete, accepted, unset));
}

TEST_F(StoreCounts, IsDueUntilTheEndOfTheLocalDay) {
  const QDate today = now().date();
  const unsigned int evening = add(task("evening", 0, 1, QDateTime(today, QTime(18, 0))));
  const unsigned int overdue = add(task("overdue, completed", 0, 0, now().addDays(-30)));
  add(task("midnight", 0, 1, QDateTime(today.addDays(1), QTime(0, 0))));
  add(task("never", 0, 1));
  EXPECT_EQ(countOf(1), 2);
  EXPECT_THAT(listOf(1, 0), ElementsAre(overdue, evening));
  // At the very last second it counts but is not listed.
  const unsigned int last = add(task("last", 0, 1, QDateTime(today, QTime(23, 59, 59))));
  EXPECT_EQ(countOf(1), 3);
  EXPECT_THAT(listOf(1, 0), ElementsAre(overdue, evening));
  add(task("one before", 0, 1, QDateTime(today, QTime(23, 59, 58))));
  EXPECT_EQ(countOf(1), 4);
  EXPECT_EQ(listOf(1, 0).size(), 3U);
  // A day later it is.
  setEngineNow(now().addDays(1));
  EXPECT_EQ(countOf(1), 5);
  EXPECT_EQ(listOf(1, 0).at(3), last);
}

TEST_F(StoreCounts, TheDayEndsByTheClockAlsoWhenItIsShorter) {
  // The night of this day has no hour from 2 to 3 in Berlin.
  setEngineNow(QDateTime(QDate(2006, 3, 26), QTime(1, 0)));
  add(task("evening", 0, 1, QDateTime(QDate(2006, 3, 26), QTime(23, 59, 58))));
  add(task("tomorrow", 0, 1, QDateTime(QDate(2006, 3, 27), QTime(0, 0))));
  EXPECT_EQ(countOf(1), 1);
  EXPECT_EQ(listOf(1, 1).size(), 1U);
}

// The day ends at `last`, in UTC: the tasks up to then count, the next one does not.
TEST_F(StoreCounts, DayEndsWithItsLastSecondInOddZones) {
  const struct {
    const char* zone;
    QDate today;
    long last;
  } cases[] = {
      // Put back from 24:00 to 23:00: the last hour comes twice.
      {"America/Santiago", QDate(2024, 4, 6), 1712462399},
      {"America/Asuncion", QDate(2024, 3, 23), 1711252799},
      // The same with the same daylight saving on both sides.
      {"Asia/Almaty", QDate(2024, 2, 29), 1709233199},
      // Put back from 01:00 to 00:00: the first hour of the next day comes twice.
      {"America/Havana", QDate(2023, 11, 4), 1699156799},
      // Put forward from 23:00 to 24:00: the last hour is left out.
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
    EXPECT_EQ(countOf(1), 3) << one.zone;
    EXPECT_THAT(listOf(1, 0), ElementsAre(earlier, before)) << one.zone;
    EXPECT_EQ(store().removeAll(), ok);
  }
}

TEST_F(StoreCounts, SortsByEitherKeyThenTheOtherThenTheNewest) {
  const QDateTime early = now().addDays(-2);
  const QDateTime late = now().addDays(-1);
  const unsigned int a = add(task("a", 2, 0, late));
  const unsigned int b = add(task("b", 1, 0, late));
  const unsigned int c = add(task("c", 2, 0, early));
  const unsigned int d = add(task("d", 2, 0, early));
  const unsigned int e = add(task("e", -1, 0));
  for (const int category : {0, 3}) {
    EXPECT_THAT(listOf(category, 0), ElementsAre(d, c, b, a, e));
    EXPECT_THAT(listOf(category, 1), ElementsAre(e, b, d, c, a));
    EXPECT_THAT(listOf(category, 5), ElementsAre(e, b, d, c, a));
  }
  EXPECT_THAT(listOf(1, 0), ElementsAre(d, c, b, a));
  EXPECT_THAT(listOf(1, 1), ElementsAre(b, d, c, a));
}

TEST_F(StoreCounts, ListsAppend) {
  const unsigned int uid = add(task("a", 0, 0, now()));
  QValueList<unsigned int> list;
  list.append(77);
  EXPECT_EQ(store().getAllIDs(list), ok);
  for (const int category : {0, 1, 3})
    EXPECT_EQ(store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY(category),
                                ZTASK_ENG_Model::TASK_SORT_DUE),
              ok);
  EXPECT_EQ(std::vector<unsigned int>(list.begin(), list.end()),
            (std::vector<unsigned int>{77, uid, uid, uid, uid}));
}

TEST_F(StoreCounts, RemovesEveryTaskAndNoCategory) {
  for (int i = 0; i < 30; ++i)
    add(task("s"));
  addCategory("work");
  EXPECT_EQ(store().removeAll(), ok);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(categories().size(), 7U);
  EXPECT_EQ(add(task("after")), 31U);
}

TEST_F(StoreCounts, AClosedStoreLeavesOneCountAloneAndClearsTheOther) {
  setenv("ULO_DATA_DIR", "/dev/null/nowhere", 1);
  int number = 55;
  EXPECT_EQ(store().getCount(number), notOpen);
  EXPECT_EQ(number, 55);
  EXPECT_EQ(store().getCount(number, ZTASK_ENG_Model::TASK_CATEGORY_ALL), notOpen);
  EXPECT_EQ(number, 0);
}

}  // namespace
