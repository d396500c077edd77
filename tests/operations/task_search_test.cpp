#include "task_search.h"

#include "store_test.h"

#include <random>

namespace {

using ulo::TaskSearch;

class Search : public StoreTest {
protected:
  QValueList<Task> found(const TaskSearch& wanted) {
    store();
    QValueList<Task> tasks;
    EXPECT_EQ(ulo::searchTasks(wanted, [&](const Task& task) { tasks.append(task); }), TASK_ENG_OK);
    return tasks;
  }
  std::vector<unsigned int> uidsWith(const QString& text) { return uidsOf(found({text, {}})); }

  Task taskOf(const QString& category) {
    Task result = task("summary");
    result.setString(Task::TASK_FIELD_CATEGORY, category);
    return result;
  }
};

// The store's own search looks at every record, and does not use the database's `contains`.
class RandomSearch : public Search, public testing::WithParamInterface<unsigned int> {
protected:
  void SetUp() override {
    Search::SetUp();
    random_.seed(GetParam());
    for (int i = 0; i < 30; ++i)
      add(any());
    // Tasks of a category that does not exist have the category "None".
    sql("UPDATE task_table_task SET categoryUid = 99 WHERE UID % 7 = 3");
    sql("UPDATE task_table_task SET due = NULL, status = NULL WHERE UID = 5");
    sql("UPDATE task_table_task SET note = NULL, summary = '' WHERE UID = 6");
  }

  unsigned int below(unsigned int end) { return static_cast<unsigned int>(random_() % end); }
  // With their bytes in another order, the last four contain each other in part.
  QString text() {
    constexpr QStringView pieces[] = {u"",  u"a",  u"b",      u"A",      u"ab",     u" ",
                                      u"o", u"ne", u"\uFEFF", u"\u6162", u"\u6263", u"\u6361"};
    QString result;
    for (unsigned int i = below(4); i > 0; --i)
      result += pieces[below(std::size(pieces))];
    return result;
  }
  Task any() {
    Task result = example();
    result.setString(Task::TASK_FIELD_CATEGORY, text());
    return result;
  }
  Task example() {
    Task result;
    if (below(3) > 0)
      result.setString(Task::TASK_FIELD_SUMMARY, text());
    if (below(3) > 0)
      result.setString(Task::TASK_FIELD_NOTE, text());
    if (below(2) > 0)
      result.setPriority(static_cast<int>(below(3)));
    if (below(2) > 0)
      result.setStatus(static_cast<int>(below(3)));
    for (const Task::TASK_FIELD_T field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_END})
      if (below(2) > 0)
        result.setDateTime(field, now().addSecs(below(2)));
    return result;
  }

  std::mt19937 random_;
};

TEST_P(RandomSearch, FindsSameRecordsAsStore) {
  const auto expectSame = [&](const QValueList<Task>& tasks, const QValueList<Task>& expected) {
    ASSERT_EQ(uidsOf(tasks), uidsOf(expected));
    for (uint i = 0; i < tasks.count(); ++i)
      EXPECT_THAT(tasks.at(i), IsSameTask(expected.at(i)));
  };
  unsigned int hits = 0;
  for (int i = 0; i < 40; ++i) {
    QString wanted = text();
    QValueList<Task> expected;
    ASSERT_EQ(store().getMatchTasks(expected, wanted), TASK_ENG_OK);
    SCOPED_TRACE(wanted.toStdString());
    expectSame(found({wanted, {}}), expected);

    Task alike = example();
    QValueList<Task> similar;
    ASSERT_EQ(store().getMatchTasks(similar, alike), TASK_ENG_OK);
    expectSame(found({{}, alike}), similar);

    const std::vector<unsigned int> withText = uidsOf(expected);
    similar.removeIf([&](const Task& task) {
      return std::count(withText.begin(), withText.end(), task.getUINT32(Task::TASK_FIELD_UID)) ==
             0;
    });
    expectSame(found({wanted, alike}), similar);
    hits += expected.count() + similar.count();
  }
  EXPECT_GT(hits, 0U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSearch, testing::Range(1U, 11U));

TEST_F(Search, WithoutConditionsFindsEverything) {
  const unsigned int later = add(task("a", 1, 0, now().addDays(1)));
  const unsigned int sooner = add(task("b", 1, 0, now()));
  EXPECT_EQ(uidsOf(found({})), (std::vector{sooner, later}));
}

TEST_F(Search, FindsNothingInEmptyStore) {
  EXPECT_TRUE(found({QString("a"), {}}).isEmpty());
}

// A condition for each of them would have too many operators.
TEST_F(Search, FindsTasksOfManyCategories) {
  std::vector<unsigned int> expected;
  for (int i = 0; i < 70; ++i)
    expected.insert(expected.begin(), add(taskOf("shop " + QString::number(i))));
  add(taskOf("other"));
  EXPECT_EQ(uidsWith("shop"), expected);
  EXPECT_EQ(uidsWith("shop 6").size(), 11U);
}

TEST_F(Search, TakesTextLiterally) {
  const unsigned int uid = add(task("100%s 'of' :1 \\ it"));
  for (const char* text : {"100%s", "'of'", ":1", "\\", "%"})
    EXPECT_EQ(uidsWith(text), std::vector{uid}) << text;
}

TEST_F(Search, ReturnsFailureOfDatabase) {
  add(task("a"));
  sql("DROP TABLE task_table_category");
  EXPECT_EQ(ulo::searchTasks({QString("a"), {}}, [](const Task&) { ADD_FAILURE(); }),
            TASK_ENG_DATABASE_FAILURE);
  // Opening the store creates the table.
  close();
  EXPECT_EQ(uidsWith("a").size(), 1U);
}

}  // namespace
