// Lists of whole tasks on the real database.

#include "store_test.h"

#include <climits>
#include <cstdint>
#include <limits>

namespace {

class StoreQueries : public StoreTest {
protected:
  using Uids = std::vector<unsigned int>;

  int range(Task::TASK_FIELD_T field, long from, long to, Uids& found) {
    QValueList<Task> tasks;
    const int code = store().getTasks(tasks, field, from, to);
    found = uidsOf(tasks);
    return code;
  }
  Uids inRange(Task::TASK_FIELD_T field, long from, long to) {
    Uids found;
    const int code = range(field, from, to, found);
    EXPECT_EQ(code, found.empty() ? TASK_ENG_NOT_FOUND : TASK_ENG_OK);
    return found;
  }
  Uids page(Task start, int count, Filter filter, Sort sort) {
    QValueList<Task> tasks;
    const int code = store().getTasks(tasks, start, count, filter, sort);
    EXPECT_EQ(code, tasks.isEmpty() ? TASK_ENG_NOT_FOUND : TASK_ENG_OK);
    return uidsOf(tasks);
  }
  Uids mentioning(const QString& text) {
    QString wanted = text;
    QValueList<Task> tasks;
    EXPECT_EQ(store().getMatchTasks(tasks, wanted), TASK_ENG_OK);
    return uidsOf(tasks);
  }
  Uids like(const Task& example) {
    Task wanted = example;
    QValueList<Task> tasks;
    EXPECT_EQ(store().getMatchTasks(tasks, wanted), TASK_ENG_OK);
    return uidsOf(tasks);
  }
};

// Ranges of dates.

TEST_F(StoreQueries, RangeIncludesBothEnds) {
  const long day = seconds(now());
  const unsigned int before = add(task("before", 1, 1, now().addSecs(-1)));
  const unsigned int at = add(task("at", 1, 1, now()));
  const unsigned int after = add(task("after", 1, 1, now().addSecs(1)));
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, day, day), Uids{at});
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, day - 1, day), (Uids{before, at}));
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, day, day + 1), (Uids{at, after}));
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, day + 2, day + 9), Uids{});
}

TEST_F(StoreQueries, RangeTreatsAnyOtherFieldAsEnd) {
  Task ended = task("ended", 1, 0, now().addDays(5));
  ended.setDateTime(Task::TASK_FIELD_END, now());
  ended.setDateTime(Task::TASK_FIELD_ALARM, now().addDays(9));
  const unsigned int uid = add(ended);
  const long day = seconds(now());
  for (int field = -1; field <= 9; ++field) {
    const auto selector = Task::TASK_FIELD_T(field);
    EXPECT_EQ(inRange(selector, day, day), field == Task::TASK_FIELD_DUE ? Uids{} : Uids{uid});
  }
}

TEST_F(StoreQueries, RangeIsInIndexOrder) {
  const unsigned int a = add(task("a", 2, 1, now()));
  const unsigned int b = add(task("b", 1, 1, now()));
  const unsigned int c = add(task("c", 2, 1, now()));
  const unsigned int d = add(task("d", 9, 1, now().addDays(-1)));
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, 0, seconds(now())), (Uids{d, b, c, a}));
  // The order by end date ignores the priority and lists the newest task first.
  EXPECT_EQ(inRange(Task::TASK_FIELD_END, Task::noDateSeconds, Task::noDateSeconds),
            (Uids{d, c, b, a}));
}

TEST_F(StoreQueries, RangeFindsTasksWithoutDateOnlyAtLatestDate) {
  const unsigned int never = add(task("never"));
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, 0, Task::noDateSeconds - 1), Uids{});
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, 0, Task::noDateSeconds), Uids{never});
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, std::numeric_limits<long>::min(),
                    std::numeric_limits<long>::max()),
            Uids{never});
}

TEST_F(StoreQueries, RangeBeyondStoredDatesIsEmpty) {
  const unsigned int never = add(task("never"));
  const unsigned int earliest = add(task("earliest", 1, 1, QDateTime::fromSecsSinceEpoch(INT_MIN)));
  const unsigned int latest = add(task("latest", 1, 1, QDateTime::fromSecsSinceEpoch(INT_MAX - 1)));
  if constexpr (sizeof(long) > sizeof(int)) {
    constexpr auto beyond = static_cast<long>(std::int64_t{INT_MAX} + 1);
    constexpr auto before = static_cast<long>(std::int64_t{INT_MIN} - 1);
    for (const auto field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_END}) {
      EXPECT_EQ(inRange(field, beyond, beyond), Uids{});
      EXPECT_EQ(inRange(field, beyond, LONG_MAX), Uids{});
      EXPECT_EQ(inRange(field, before, before), Uids{});
      EXPECT_EQ(inRange(field, LONG_MIN, before), Uids{});
    }
    EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, before, INT_MIN), Uids{earliest});
    EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, INT_MAX, beyond), Uids{never});
    EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, INT_MAX - 1, beyond), (Uids{latest, never}));
  }
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, INT_MIN, INT_MIN), Uids{earliest});
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, INT_MAX, INT_MAX), Uids{never});
  EXPECT_EQ(inRange(Task::TASK_FIELD_DUE, INT_MAX - 1, INT_MAX - 1), Uids{latest});
}

TEST_F(StoreQueries, RejectsReversedRangeSilently) {
  store();
  Uids found;
  EXPECT_EQ(
      logOf([&] { EXPECT_EQ(range(Task::TASK_FIELD_DUE, 1, 0, found), TASK_ENG_BAD_PARAMETER); }),
      "");
  EXPECT_EQ(range(Task::TASK_FIELD_DUE, std::numeric_limits<long>::max(),
                  std::numeric_limits<long>::max() - 1, found),
            TASK_ENG_BAD_PARAMETER);
}

// By category.

TEST_F(StoreQueries, ListsTasksOfCategory) {
  Uids expected;
  for (int i = 0; i < 20; ++i) {
    Task added = task("s");
    added.setString(Task::TASK_FIELD_CATEGORY, i % 2 == 0 ? "party" : "meeting");
    const unsigned int uid = add(added);
    if (i % 2 == 0)
      expected.push_back(uid);
  }
  QString name("party");
  QValueList<Task> tasks;
  EXPECT_EQ(store().getTasks(tasks, name), TASK_ENG_OK);
  Uids found = uidsOf(tasks);
  EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
  for (const Task& task : tasks)
    EXPECT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), name);

  name = "vacation";
  EXPECT_EQ(store().getTasks(tasks, name), TASK_ENG_NOT_FOUND);
  name = "unheard of";
  EXPECT_EQ(logOf([&] { EXPECT_EQ(store().getTasks(tasks, name), TASK_ENG_NOT_FOUND); }),
            line("The category unheard of is not exist!"));
  EXPECT_EQ(tasks.count(), 10U);
  const unsigned int bare = add(task("no category"));
  QString null;
  tasks.clear();
  EXPECT_EQ(store().getTasks(tasks, null), TASK_ENG_OK);
  EXPECT_EQ(uidsOf(tasks), Uids{bare});
}

TEST_F(StoreQueries, ListsAppendWholeRecords) {
  Task added = task("summary", 3, 1, now());
  added.setString(Task::TASK_FIELD_CATEGORY, "party");
  added.setString(Task::TASK_FIELD_NOTE, QString());
  added.setDateTime(Task::TASK_FIELD_ALARM, now().addSecs(1));
  added.setDateTime(Task::TASK_FIELD_END, now().addSecs(2));
  added.setDateTime(Task::TASK_FIELD_REVISION, now().addSecs(3));
  add(added);
  QString party("party");
  QString text("summ");
  QValueList<Task> tasks;
  EXPECT_EQ(store().getTasks(tasks, Task::TASK_FIELD_DUE, 0, seconds(now())), TASK_ENG_OK);
  EXPECT_EQ(store().getTasks(tasks, party), TASK_ENG_OK);
  for (const Filter filter : {allTasks, dueTasks, incompleteTasks})
    EXPECT_EQ(store().getTasks(tasks, added, 1, filter, byDueDate), TASK_ENG_OK);
  EXPECT_EQ(store().getMatchTasks(tasks, text), TASK_ENG_OK);
  EXPECT_EQ(tasks.count(), 6U);
  for (const Task& task : tasks)
    EXPECT_THAT(task, IsSameTask(added));
  QValueList<Task> alike;
  Task example;
  EXPECT_EQ(store().getMatchTasks(alike, example), TASK_ENG_OK);
  ASSERT_EQ(alike.count(), 1U);
  EXPECT_THAT(alike.at(0), IsSameTask(added));
}

// Pages.

class StorePages : public StoreQueries {
protected:
  void SetUp() override {
    StoreQueries::SetUp();
    for (int i = 0; i < 30; ++i) {
      tasks_.push_back(task("s", i % 4, i % 2, now().addDays(i % 5 - 2)));
      add(tasks_.back());
    }
  }
  // The expected page: up to `count` UIDs of tasks that match, from `start` in the sorted list.
  template <typename Match> Uids expected(const Task& start, int count, Sort sort, Match match) {
    QValueList<unsigned int> all;
    EXPECT_EQ(store().getAllIDs(all, allTasks, sort), TASK_ENG_OK);
    Uids result;
    bool reached = false;
    for (const unsigned int uid : all) {
      reached = reached || uid == start.getUINT32(Task::TASK_FIELD_UID);
      if (reached && static_cast<int>(result.size()) < count && match(get(uid)))
        result.push_back(uid);
    }
    return result;
  }

  std::vector<Task> tasks_;
};

TEST_F(StorePages, ContinueInIndexOrder) {
  const QDateTime tonight(now().date(), QTime(23, 59, 59));
  for (const Sort sort : {byDueDate, byPriority}) {
    for (const int count : {1, 2, 7, 100}) {
      for (const Task& start : {tasks_.front(), tasks_.at(13), tasks_.back()}) {
        EXPECT_EQ(page(start, count, allTasks, sort),
                  expected(start, count, sort, [](const Task&) { return true; }));
        EXPECT_EQ(page(start, count, dueTasks, sort),
                  expected(start, count, sort, [&](const Task& task) {
                    return task.getDateTime(Task::TASK_FIELD_DUE) < tonight;
                  }));
        for (const Filter filter : {incompleteTasks, completedTasks, Filter(7)})
          EXPECT_EQ(page(start, count, filter, sort),
                    expected(start, count, sort, [&](const Task& task) {
                      return task.getStatusValue() == (filter == incompleteTasks ? 1 : 0);
                    }));
      }
    }
  }
}

TEST_F(StorePages, SkipStartThatDoesNotMatchFilter) {
  const Task& completed = tasks_.front();
  ASSERT_EQ(completed.getStatusValue(), 0);
  const Uids found = page(completed, 10, incompleteTasks, byDueDate);
  EXPECT_EQ(found.size(), 10U);
  EXPECT_EQ(std::count(found.begin(), found.end(), completed.getUINT32(Task::TASK_FIELD_UID)), 0);
}

TEST_F(StorePages, RequireStartAsStored) {
  const Task stored = tasks_.at(3);
  Task changed = stored;
  changed.setDateTime(Task::TASK_FIELD_DUE, now().addYears(1));
  EXPECT_EQ(store().updateTask(changed), TASK_ENG_OK);
  QValueList<Task> list;
  for (const Filter filter : {allTasks, dueTasks, incompleteTasks, completedTasks}) {
    Task start = stored;
    EXPECT_EQ(logOf([&] {
                EXPECT_EQ(store().getTasks(list, start, 10, filter, byDueDate), TASK_ENG_NOT_FOUND);
              }),
              line("Record not found!! [ret=0]"));
  }
  Task otherPriority = tasks_.at(4);
  otherPriority.setPriority(77);
  EXPECT_EQ(page(otherPriority, 10, allTasks, byPriority), Uids{});
  Task otherUid = tasks_.at(4);
  otherUid.setUINT32(Task::TASK_FIELD_UID, 999);
  EXPECT_EQ(page(otherUid, 10, allTasks, byDueDate), Uids{});
  EXPECT_TRUE(list.isEmpty());
}

TEST_F(StorePages, FindNothingIfNoTaskMatchesFromStart) {
  // The last task by due date is not due yet.
  Task last = task("far away", 0, 0, now().addYears(5));
  add(last);
  QValueList<Task> list;
  EXPECT_EQ(logOf([&] {
              EXPECT_EQ(store().getTasks(list, last, 10, dueTasks, byDueDate), TASK_ENG_NOT_FOUND);
              EXPECT_EQ(store().getTasks(list, last, 10, incompleteTasks, byDueDate),
                        TASK_ENG_NOT_FOUND);
            }),
            line("Record not found!! [ret=0]") + line("Record not found!! [ret=0]"));
  EXPECT_TRUE(list.isEmpty());
}

TEST_F(StorePages, RequirePositiveCount) {
  QValueList<Task> list;
  for (const int count : {0, -5, std::numeric_limits<int>::min()}) {
    Task start = tasks_.front();
    EXPECT_EQ(logOf([&] {
                EXPECT_EQ(store().getTasks(list, start, count, allTasks, byDueDate),
                          TASK_ENG_BAD_PARAMETER);
              }),
              line("The parameter is wrong!"));
  }
  EXPECT_EQ(page(tasks_.front(), std::numeric_limits<int>::max(), allTasks, byDueDate),
            expected(tasks_.front(), 100, byDueDate, [](const Task&) { return true; }));
}

// Searches.

TEST_F(StoreQueries, EmptyStoreHasNoMatches) {
  QString text;
  Task example;
  QValueList<Task> tasks;
  EXPECT_EQ(store().getMatchTasks(tasks, text), TASK_ENG_NOT_FOUND);
  EXPECT_EQ(store().getMatchTasks(tasks, example), TASK_ENG_NOT_FOUND);
}

TEST_F(StoreQueries, TextSearchIsCaseSensitiveInFourFields) {
  Task milk = task("s");
  milk.setString(Task::TASK_FIELD_NOTE, "buy milk");
  Task party = task("s");
  party.setString(Task::TASK_FIELD_CATEGORY, "Milk party");
  Task identity = task("s");
  identity.setString(Task::TASK_FIELD_UUID, "Milk-1");
  const unsigned int note = add(milk);
  const unsigned int category = add(party);
  const unsigned int uuid = add(identity);
  const unsigned int summary = add(task("The Milk"));
  EXPECT_EQ(mentioning("milk"), Uids{note});
  EXPECT_EQ(mentioning("Milk"), (Uids{summary, uuid, category}));
  EXPECT_EQ(mentioning("honey"), Uids{});
  EXPECT_EQ(mentioning("").size(), 4U);
  EXPECT_EQ(mentioning(QString()).size(), 4U);
}

// The bytes of one unit and the next can be those of another unit.
TEST_F(StoreQueries, TextSearchFindsWholeUnits) {
  const unsigned int both = add(task("\u4100\u0041\u4141"));
  add(task("\u4100\u0041"));
  add(task("\u0041\u4100"));
  EXPECT_EQ(mentioning("\u4141"), Uids{both});
}

TEST_F(StoreQueries, EmptyTextMatchesFieldsThatAreNotEmpty) {
  Task bare;
  bare.setString(Task::TASK_FIELD_UUID, "");
  bare.setString(Task::TASK_FIELD_NOTE, "");
  add(bare);
  EXPECT_EQ(mentioning(""), Uids{});
  Task noted = bare;
  noted.setString(Task::TASK_FIELD_NOTE, "n");
  const unsigned int uid = add(noted);
  EXPECT_EQ(mentioning(""), Uids{uid});
}

TEST_F(StoreQueries, MatchesAreInOrderOfDueDate) {
  const unsigned int late = add(task("x", 1, 1, now().addDays(1)));
  const unsigned int early = add(task("x", 1, 1, now()));
  const unsigned int never = add(task("x"));
  EXPECT_EQ(mentioning("x"), (Uids{early, late, never}));
  EXPECT_EQ(like(Task()), (Uids{early, late, never}));
}

// The store compares rows of the database. The same comparison of records gives the same result.
TEST_F(StoreQueries, MatchesAgreeWithRecords) {
  const QStringList texts = {"",
                             "a",
                             "A",
                             "Stra\u00dfe",
                             "STRASSE",
                             "\u0130zmir",
                             "izmir",
                             "\u03a3\u03c3\u03c2",
                             "\U00010400\U00010428",
                             "a\u0308",
                             "\u00e4",
                             "%_'\"",
                             QString(QChar(0xD800)),
                             QString()};
  for (qsizetype i = 0; i < texts.size(); ++i) {
    Task each = task(texts[i]);
    each.setString(Task::TASK_FIELD_NOTE, texts[texts.size() - 1 - i]);
    each.setString(Task::TASK_FIELD_CATEGORY, i % 3 == 0 ? QString() : texts[i % 5]);
    add(each);
  }
  QValueList<Task> all;
  Task anything;
  ASSERT_EQ(store().getMatchTasks(all, anything), TASK_ENG_OK);
  ASSERT_EQ(all.count(), static_cast<uint>(texts.size()));
  for (const QString& text : texts) {
    Uids mentioned;
    Uids alike;
    for (const Task& each : all) {
      bool mentions = false;
      for (const auto field : {Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_NOTE,
                               Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_UUID}) {
        const QString value = each.getString(field);
        mentions = mentions || (!value.isEmpty() && value.contains(text));
      }
      const unsigned int uid = each.getUINT32(Task::TASK_FIELD_UID);
      if (mentions)
        mentioned.push_back(uid);
      if (each.getString(Task::TASK_FIELD_SUMMARY).contains(text, Qt::CaseInsensitive))
        alike.push_back(uid);
    }
    EXPECT_EQ(mentioning(text), mentioned) << text.toStdString();
    Task example;
    example.setString(Task::TASK_FIELD_SUMMARY, text);
    EXPECT_EQ(like(example), alike) << text.toStdString();
  }
}

TEST_F(StoreQueries, ExampleComparesOnlySetFields) {
  Task one = task("Fetch PARCEL", 3, 2, now());
  one.setString(Task::TASK_FIELD_NOTE, "Buy MILK");
  one.setDateTime(Task::TASK_FIELD_END, now().addDays(1));
  one.setDateTime(Task::TASK_FIELD_ALARM, now().addDays(2));
  one.setString(Task::TASK_FIELD_CATEGORY, "party");
  const unsigned int uid = add(one);
  Task other = task("other", 4, 1, now().addSecs(1));
  other.setDateTime(Task::TASK_FIELD_END, now().addSecs(1));
  const unsigned int neighbor = add(other);
  EXPECT_EQ(like(Task()), (Uids{uid, neighbor}));

  Task example;
  example.setDateTime(Task::TASK_FIELD_DUE, now().addMSecs(999));
  EXPECT_EQ(like(example), Uids{uid});
  example = Task();
  example.setDateTime(Task::TASK_FIELD_END, now().addDays(1));
  EXPECT_EQ(like(example), Uids{uid});
  example = Task();
  example.setPriority(3);
  EXPECT_EQ(like(example), Uids{uid});
  example.setStatus(2);
  EXPECT_EQ(like(example), Uids{uid});
  example.setStatus(1);
  EXPECT_EQ(like(example), Uids{});
  example = Task();
  example.setString(Task::TASK_FIELD_NOTE, "milk");
  EXPECT_EQ(like(example), Uids{uid});
  example = Task();
  example.setString(Task::TASK_FIELD_SUMMARY, "parcel");
  EXPECT_EQ(like(example), Uids{uid});
  example.setString(Task::TASK_FIELD_NOTE, "absent");
  EXPECT_EQ(like(example), Uids{});

  // The following fields are not compared.
  example = Task();
  example.setDateTime(Task::TASK_FIELD_ALARM, now());
  example.setDateTime(Task::TASK_FIELD_REVISION, now());
  example.setString(Task::TASK_FIELD_CATEGORY, "vacation");
  example.setString(Task::TASK_FIELD_UUID, "another");
  example.setDateTime(Task::TASK_FIELD_DUE, QDateTime());
  EXPECT_EQ(like(example), (Uids{uid, neighbor}));
}

}  // namespace
