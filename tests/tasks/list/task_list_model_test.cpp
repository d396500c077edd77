// The rows of the list: pages, filters, selection, and changes of the store.

#include "list/task_list_model.h"
#include "tasks_test.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using tasks::ListFilter;
using tasks::TaskListModel;
using testing::ElementsAre;
using ulo::ListOrder;

namespace {

class Model : public Tasks {
protected:
  // The tests themselves control further reading. However fast the store is, thousands of tasks are
  // not read at once.
  Model() {
    tester_.setUseFetchMore(false);
    model_.setFirstSlice(0);
  }

  std::vector<std::string> rows() {
    std::vector<std::string> titles;
    for (int row = 0; row < model_.rowCount(); ++row)
      titles.push_back(text(row).toStdString());
    return titles;
  }
  QString text(int row, int role = Qt::DisplayRole) {
    return model_.index(row).data(role).toString();
  }
  // The rows after everything has been read.
  std::vector<std::string> allRows() {
    EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
    return rows();
  }
  void addMany(int count) {
    raw_.run("with recursive numbers(n) as (values (0) union all select n + 1 from numbers "
             "where n + 1 < " +
             std::to_string(count) +
             ") insert into task_table_task (summary, note, status, priority, due, alarm, \"end\", "
             "revision, categoryUid) select printf('task %05d', n), '', 1, 5, 1000000 + n, "
             "2147483647, 2147483647, 0, 1 from numbers");
  }
  static QDateTime day(int day) { return {QDate(2027, 3, day), QTime(0, 0)}; }

  TaskListModel model_{store_, [] { return QDate(2027, 3, 5); }};
  QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(Model, RowsAreTasksOfViewInOrder) {
  add({.summary = "late", .due = day(4), .priority = 9});
  add({.summary = "soon", .due = day(6), .priority = 1});
  add({.summary = "done", .due = day(7), .priority = 5, .status = 0});
  model_.setOrder({});
  EXPECT_THAT(rows(), ElementsAre("late", "soon", "done"));
  model_.setOrder({ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE, ZTASK_ENG_Model::TASK_SORT_PRIORITY});
  EXPECT_THAT(rows(), ElementsAre("soon", "late"));
  model_.setOrder({ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED, ZTASK_ENG_Model::TASK_SORT_DUE});
  EXPECT_THAT(rows(), ElementsAre("done"));
}

TEST_F(Model, RowHasAllDataOfItsTask) {
  add({.summary = "a\nb", .due = day(4), .priority = 3, .status = 1, .category = "meeting"});
  add({.summary = "", .due = day(5), .priority = 7, .status = 0});
  add({.summary = "c"});
  model_.setOrder({});
  EXPECT_EQ(text(0), "a b");
  EXPECT_EQ(text(0, TaskListModel::DueRole), "Yesterday");
  EXPECT_TRUE(model_.index(0).data(TaskListModel::OverdueRole).toBool());
  EXPECT_EQ(text(0, TaskListModel::CategoryRole), "Meeting");
  EXPECT_EQ(model_.index(0).data(TaskListModel::PriorityRole).toInt(), 1);
  EXPECT_FALSE(model_.index(0).data(TaskListModel::CompletedRole).toBool());
  EXPECT_EQ(text(0, Qt::AccessibleDescriptionRole),
            "Incomplete, Yesterday, Overdue, High, Meeting");
  EXPECT_EQ(text(1), "Untitled");
  EXPECT_EQ(text(1, TaskListModel::DueRole), "Today");
  EXPECT_FALSE(model_.index(1).data(TaskListModel::OverdueRole).toBool());
  EXPECT_TRUE(model_.index(1).data(TaskListModel::CompletedRole).toBool());
  EXPECT_EQ(model_.index(1).data(TaskListModel::PriorityRole).toInt(), 9);
  EXPECT_EQ(text(1, Qt::AccessibleDescriptionRole), "Completed, Today, Low");
  EXPECT_EQ(text(2, TaskListModel::DueRole), "");
  EXPECT_EQ(text(2, TaskListModel::CategoryRole), "");
  EXPECT_EQ(text(2, Qt::AccessibleDescriptionRole), "Incomplete");
}

TEST_F(Model, RowsOfLongListAreDistinct) {
  addMany(500);
  model_.setOrder({});
  ASSERT_EQ(model_.rowCount(), 500);
  // In an order that differs from that of pages.
  for (int i = 0; i < 500; ++i) {
    const int row = (i * 197 + 31) % 500;
    ASSERT_EQ(text(row).toStdString(), QString::asprintf("task %05d", row).toStdString());
    ASSERT_EQ(model_.rowOf(model_.uidAt(row)), row);
  }
  EXPECT_EQ(model_.rowOf(123456), -1);
}

TEST_F(Model, FindsWordsInSummaryNoteAndCategoryIgnoringCase) {
  add("Käse kaufen");
  add({.summary = "Plants", .category = "meeting"});
  Task noted;
  noted.setString(Task::TASK_FIELD_NOTE, "with KÄSE inside");
  ASSERT_EQ(store_.addTask(noted), ok);
  add("other");
  model_.setOrder({});
  model_.setFilter({{"käse"}, {}});
  EXPECT_THAT(allRows(), ElementsAre("Untitled", "Käse kaufen"));
  model_.setFilter({{"ETIN"}, {}});
  EXPECT_THAT(allRows(), ElementsAre("Plants"));
  model_.setFilter({{"kauf", "käse"}, {}});
  EXPECT_THAT(allRows(), ElementsAre("Käse kaufen"));
  // A name that stands for no category is not a category.
  model_.setFilter({{"categ"}, {}});
  EXPECT_THAT(allRows(), ElementsAre());
  model_.setFilter({});
  EXPECT_EQ(model_.rowCount(), 4);
}

TEST_F(Model, FiltersByCategoryName) {
  add({.summary = "a", .category = "meeting"});
  add({.summary = "b", .category = "Meeting"});
  add({.summary = "c", .category = "none"});
  const unsigned int lost = add({.summary = "d", .category = "garden"});
  add("e");
  QString garden = "garden";
  ASSERT_EQ(store_.removeCategory(garden, false), ok);
  ASSERT_EQ(stored(lost).getString(Task::TASK_FIELD_CATEGORY), "None");
  model_.setOrder({});
  model_.setFilter({{}, "meeting"});
  EXPECT_THAT(allRows(), ElementsAre("a"));
  model_.setFilter({{}, ""});
  EXPECT_THAT(allRows(), ElementsAre("e", "d", "c"));
  model_.setFilter({{"d"}, ""});
  EXPECT_THAT(allRows(), ElementsAre("d"));
}

TEST_F(Model, FiltersLongListInSlices) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"9"}, {}});
  EXPECT_TRUE(model_.isReading());
  EXPECT_TRUE(model_.canFetchMore({}));
  const int first = model_.rowCount();
  EXPECT_LT(first, 12'285);
  model_.fetchMore({});
  EXPECT_GT(model_.rowCount(), first);
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  // All numbers up to 29999 except those without a 9.
  EXPECT_EQ(model_.rowCount(), 30'000 - 3 * 9 * 9 * 9 * 9);
  EXPECT_FALSE(model_.canFetchMore({}));
  EXPECT_EQ(text(0), "task 00009");
}

TEST_F(Model, NewFilterReplacesEarlierOne) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"1"}, {}});
  ASSERT_TRUE(model_.isReading());
  model_.setFilter({{"29999"}, {}});
  EXPECT_THAT(allRows(), ElementsAre("task 29999"));
}

TEST_F(Model, RefreshShowsChangesOfOthers) {
  const unsigned int a = add("a");
  add("b");
  model_.setOrder({});
  ASSERT_THAT(rows(), ElementsAre("b", "a"));
  ZTASK_ENG_Model other;
  Task task = stored(a);
  task.setString(Task::TASK_FIELD_SUMMARY, "c");
  task.setDateTime(Task::TASK_FIELD_DUE, day(1));
  ASSERT_EQ(other.updateTask(task), ok);
  model_.refresh();
  EXPECT_THAT(rows(), ElementsAre("c", "b"));
  ASSERT_EQ(other.removeTask(a), ok);
  EXPECT_EQ(text(0), "c");  // as it was read
  model_.refresh();
  EXPECT_THAT(rows(), ElementsAre("b"));
}

TEST_F(Model, RowOfRemovedTaskIsEmptyUntilRefresh) {
  const unsigned int a = add("a");
  TaskListModel model(store_, [] { return QDate(); });
  model.setOrder({});
  ASSERT_EQ(store_.removeTask(a), ok);
  ASSERT_EQ(model.rowCount(), 1);
  EXPECT_FALSE(model.index(0).data().isValid());
  EXPECT_FALSE(model.index(0).data(TaskListModel::PriorityRole).isValid());
  model.refresh();
  EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(Model, FilteredRowsStayDuringRefresh) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"task"}, {}});
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  ASSERT_EQ(store_.removeTask(model_.uidAt(0)), ok);
  model_.refresh();
  EXPECT_TRUE(model_.isReading());
  EXPECT_EQ(model_.rowCount(), 30'000);
  // Endless changes do not prevent it from finishing.
  ASSERT_EQ(store_.removeTask(model_.uidAt(1)), ok);
  model_.refresh();
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  EXPECT_EQ(model_.rowCount(), 29'998);
}

TEST_F(Model, HiddenTasksHaveNoRows) {
  const unsigned int a = add("a");
  add("b");
  const unsigned int c = add("c");
  model_.setOrder({});
  model_.setHidden({a, c});
  EXPECT_THAT(rows(), ElementsAre("b"));
  model_.setFilter({{"a"}, {}});
  EXPECT_THAT(allRows(), ElementsAre());
  model_.setHidden({c});
  EXPECT_THAT(allRows(), ElementsAre("a"));
  model_.setHidden({a});
  EXPECT_THAT(rows(), ElementsAre());
  model_.setHidden({});
  model_.setFilter({});
  EXPECT_THAT(rows(), ElementsAre("c", "b", "a"));
}

TEST_F(Model, SelectionFollowsTasks) {
  const unsigned int a = add("a");
  const unsigned int b = add("b");
  model_.setOrder({});
  model_.setChosen(0, true);
  EXPECT_THAT(model_.chosen(), ElementsAre(b));
  add("c");
  model_.refresh();
  EXPECT_THAT(model_.chosen(), ElementsAre(b));
  EXPECT_FALSE(model_.index(0).data(TaskListModel::ChosenRole).toBool());
  EXPECT_TRUE(model_.index(1).data(TaskListModel::ChosenRole).toBool());
  model_.setChosen(2, true);
  EXPECT_THAT(model_.chosen(), ElementsAre(b, a));
  ASSERT_EQ(store_.removeTask(b), ok);
  model_.refresh();
  EXPECT_THAT(model_.chosen(), ElementsAre(a));
  EXPECT_EQ(model_.chosenCount(), 1);
  model_.chooseNone();
  EXPECT_EQ(model_.chosenCount(), 0);
}

TEST_F(Model, SelectAllIncludesRowsThatFollow) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"9"}, {}});
  ASSERT_TRUE(model_.isReading());
  model_.chooseAll();
  // It does not wait for them.
  EXPECT_TRUE(model_.isReading());
  EXPECT_TRUE(model_.isChoosingAll());
  EXPECT_EQ(static_cast<int>(model_.chosenCount()), model_.rowCount());
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  EXPECT_FALSE(model_.isChoosingAll());
  EXPECT_EQ(model_.chosenCount(), 10'317);
  EXPECT_EQ(model_.rowCount(), 10'317);
  // Rows that the filter hides are deselected.
  model_.setFilter({{"29999"}, {}});
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  EXPECT_EQ(model_.chosenCount(), 1);
}

TEST_F(Model, DeselectedRowsStayDeselectedDuringSelectAll) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"9"}, {}});
  const auto finish = [this] {
    ASSERT_TRUE(model_.isReading());
    ASSERT_TRUE(waitFor([this] { return !model_.isReading(); }));
  };
  model_.chooseAll();
  model_.setChosen(0, false);
  finish();
  EXPECT_EQ(model_.chosenCount(), 10'316);

  // The same while the list is read again, with new tasks.
  addMany(10);
  model_.refresh();
  model_.chooseAll();
  model_.setChosen(1, false);
  finish();
  EXPECT_EQ(model_.chosenCount(), 10'317);

  model_.refresh();
  model_.chooseAll();
  model_.chooseNone();
  finish();
  EXPECT_EQ(model_.chosenCount(), 0);
}

TEST_F(Model, NewFilterEndsSelectAll) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"9"}, {}});
  ASSERT_TRUE(model_.isReading());
  const int known = model_.rowCount();
  model_.chooseAll();
  model_.setFilter({{"task"}, {}});
  EXPECT_FALSE(model_.isChoosingAll());
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  EXPECT_EQ(static_cast<int>(model_.chosenCount()), known);
}

TEST_F(Model, ListIsEmptyIfStoreFails) {
  add("a");
  model_.setOrder({});
  raw_.run("drop table task_table_task");
  model_.refresh();
  EXPECT_EQ(model_.rowCount(), 0);
  EXPECT_EQ(model_.storeCode(), databaseFailure);
}

TEST_F(Model, FailingStoreEndsReading) {
  addMany(30'000);
  model_.setOrder({});
  model_.setFilter({{"9"}, {}});
  ASSERT_TRUE(model_.isReading());
  raw_.run("drop table task_table_task");
  EXPECT_TRUE(waitFor([this] { return !model_.isReading(); }));
  EXPECT_EQ(model_.storeCode(), databaseFailure);
}

TEST_F(Model, HiddenRowsStayHiddenDuringRefresh) {
  addMany(20'000);
  model_.setOrder({});
  model_.setFilter({{"task"}, {}});
  ASSERT_EQ(allRows().size(), 20'000);
  model_.refresh();
  ASSERT_TRUE(model_.isReading());
  const unsigned int first = model_.uidAt(0);
  model_.setHidden({first});
  bool came = false;
  QObject::connect(&model_, &TaskListModel::modelReset,
                   [&] { came = came || model_.uidAt(0) == first; });
  allRows();
  EXPECT_FALSE(came);
}

}  // namespace
