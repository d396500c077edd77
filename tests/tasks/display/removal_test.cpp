// Selecting several tasks and deleting them: by keys, by mouse, undone, and interrupted by a crash.

#include "display/display_test.h"

namespace {

using testing::ElementsAre;

class RemovalOnDisplay : public TasksOnDisplay {
protected:
  // Four tasks, listed in this order.
  void SetUp() override {
    for (const char* day : {"01", "02", "03", "04"})
      add({std::string("task ") + day, "--due", std::string("2037-01-") + day, "--note", "whole",
           "--category", "work"});
    before_ = stored();
    start();
    ASSERT_TRUE(shows("All Tasks"));
  }
  // All fields of all tasks, including UIDs and UUIDs.
  std::string stored() { return succeed({"list", "--json"}).out; }
  // Selects rows from the first on with Space.
  void choose(int rows) {
    chooseByKeys(selectMultiple);
    ASSERT_TRUE(shows("0 Selected"));
    press({"Home"});
    for (int row = 0; row < rows; ++row)
      press({"space", "Down"});
    ASSERT_TRUE(shows(QStringLiteral("%1 Selected").arg(rows)));
  }

  std::string before_;
};

TEST_F(RemovalOnDisplay, OfOneTaskIsUndoneByKey) {
  press({"Delete"});
  expectAt("Home", "task 02");
  press({"ctrl+z"});
  expectAt("Home", "task 01");
  leave();
  EXPECT_EQ(stored(), before_);
}

TEST_F(RemovalOnDisplay, OfSeveralTasksIsUndoneByTouch) {
  choose(2);
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  expectAt("Home", "task 03");
  click(undoButton);
  expectAt("Home", "task 01");
  leave();
  EXPECT_EQ(stored(), before_);
}

TEST_F(RemovalOnDisplay, IsCompletedOnExit) {
  choose(3);
  chooseByKeys(2);
  ASSERT_TRUE(shows("All Tasks"));
  EXPECT_EQ(stored(), before_);
  leave();
  EXPECT_THAT(summaries(), ElementsAre("task 04"));
  expectSound();
}

TEST_F(RemovalOnDisplay, IsCompletedAfterUndoPeriod) {
  press({"Delete"});
  ASSERT_TRUE(waitFor([&] { return tasks().size() == 3; }));
  EXPECT_THAT(summaries(), ElementsAre("task 02", "task 03", "task 04"));
  // Nothing is left to undo.
  press({"ctrl+z"});
  expectAt("Home", "task 02");
  leave();
  EXPECT_EQ(tasks().size(), 3);
}

TEST_F(RemovalOnDisplay, IsCompletedWhenNextOneBegins) {
  choose(2);
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  press({"Home", "Delete", "ctrl+z"});
  ASSERT_TRUE(waitFor([&] { return tasks().size() == 2; }));
  expectAt("Home", "task 03");
  leave();
  EXPECT_THAT(summaries(), ElementsAre("task 03", "task 04"));
}

TEST_F(RemovalOnDisplay, OfFoundTasksIsCompleted) {
  type("03");
  press({"Return", "Delete", "F3"});
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre("task 01", "task 02", "task 04"));
}

TEST_F(RemovalOnDisplay, IsDiscardedIfProgramIsKilled) {
  choose(2);
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  expectAt("Home", "task 03");
  kill();
  EXPECT_EQ(stored(), before_);
  expectSound();
  start();
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("task 01", "task 04");
  leave();
}

TEST_F(RemovalOnDisplay, HoldingRowStartsSelection) {
  EXPECT_TRUE(display_.hold(textOf(1)));
  ASSERT_TRUE(shows("1 Selected"));
  EXPECT_TRUE(display_.letGo());
  click(boxOf(0));
  ASSERT_TRUE(shows("2 Selected"));
  click(textOf(1));
  ASSERT_TRUE(shows("1 Selected"));
  click(newKey);
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_THAT(summaries(), ElementsAre("task 02", "task 03", "task 04"));
}

TEST_F(RemovalOnDisplay, AllAreSelectedAndUnselected) {
  chooseByKeys(selectMultiple);
  ASSERT_TRUE(shows("0 Selected"));
  chooseByKeys(0);
  ASSERT_TRUE(shows("4 Selected"));
  // The first enabled item.
  chooseByKeys(0);
  ASSERT_TRUE(shows("0 Selected"));
  press({"ctrl+a"});
  ASSERT_TRUE(shows("4 Selected"));
  press({"Escape"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_EQ(stored(), before_);
}

TEST_F(RemovalOnDisplay, DragSelectsNothing) {
  EXPECT_TRUE(display_.drag(textOf(2), textOf(0)));
  press({"ctrl+a"});
  expectAt("Home", "task 01");
  leave();
  EXPECT_EQ(stored(), before_);
}

class KilledOnDisplay : public TasksOnDisplay {};

TEST_F(KilledOnDisplay, DuringRemovalKeepsTasksIntact) {
  constexpr int count = 3000;
  constexpr int removed = 1234;
  std::string todos;
  for (int i = 0; i < count; ++i)
    todos += todo("SUMMARY:task " + std::to_string(i) + "\r\nDESCRIPTION:whole\r\n");
  succeed({"import", file("many.vcs", calendar(todos))});
  const QJsonArray before = tasks();
  ASSERT_EQ(before.size(), count);
  const int stuck = before[removed]["uid"].toInt();
  // The removal of this task never ends.
  sql("CREATE VIEW endless AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
      "SELECT i FROM n;"
      "CREATE TRIGGER stuck BEFORE DELETE ON task_table_task WHEN OLD.uid = " +
      std::to_string(stuck) + " BEGIN SELECT count(*) FROM endless; END");
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(selectMultiple);
  ASSERT_TRUE(shows("0 Selected"));
  press({"ctrl+a"});
  ASSERT_TRUE(shows("3000 Selected"));
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  press({"F3"});
  ASSERT_TRUE(waitFor([&] { return tasks().size() <= count - removed; }));
  kill();
  sql("DROP TRIGGER stuck; DROP VIEW endless");
  expectSound();
  QJsonArray rest = before;
  for (int i = 0; i < removed; ++i)
    rest.removeFirst();
  EXPECT_EQ(tasks(), rest);
}

}  // namespace
