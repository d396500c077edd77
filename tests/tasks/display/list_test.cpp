// Use of the list: completing, opening, views, order, search and categories.

#include "display/display_test.h"

namespace {

using testing::ElementsAre;

using ListOnDisplay = TasksOnDisplay;

TEST_F(ListOnDisplay, SpaceCompletesTaskAndReopensIt) {
  const std::string uid = add({"Buy milk"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"space"});
  ASSERT_TRUE(waitFor([&] { return task(uid)["status"] == 0; }));
  EXPECT_FALSE(task(uid)["end"].isNull());
  press({"space"});
  ASSERT_TRUE(waitFor([&] { return task(uid)["status"] == 1; }));
  EXPECT_TRUE(task(uid)["end"].isNull());
  leave();
}

TEST_F(ListOnDisplay, BoxCompletesTaskAndRowStays) {
  add({"first", "--due", "2026-01-01"});
  const std::string uid = add({"second", "--due", "2026-01-02"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  click(boxOf(1));
  ASSERT_TRUE(waitFor([&] { return task(uid)["status"] == 0; }));
  EXPECT_FALSE(task(uid)["end"].isNull());
  EXPECT_THAT(summaries({"list", "--view", "completed"}), ElementsAre("second"));
  click(boxOf(1));
  ASSERT_TRUE(waitFor([&] { return task(uid)["status"] == 1; }));
  EXPECT_TRUE(task(uid)["end"].isNull());
  leave();
}

TEST_F(ListOnDisplay, OpensTaskByKeyAndByMouse) {
  add({"first", "--due", "2026-01-01"});
  add({"second", "--due", "2026-01-02"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Down", "Return"});
  ASSERT_TRUE(shows("second"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  click(textOf(0));
  ASSERT_TRUE(shows("first"));
  click(exitKey);
  ASSERT_TRUE(shows("All Tasks"));
  click(exitKey);
  EXPECT_EQ(end(), 0);
}

TEST_F(ListOnDisplay, DeletesTaskFromDetails) {
  add({"first", "--due", "2026-01-01"});
  add({"second", "--due", "2026-01-02"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Return"});
  ASSERT_TRUE(shows("first"));
  chooseByKeys(removeIt);
  ASSERT_TRUE(shows("All Tasks"));
  EXPECT_THAT(summaries(), ElementsAre("second"));
  press({"Return"});
  ASSERT_TRUE(shows("second"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

// Whether views are chosen by keys or by mouse.
enum class By { keys, mouse };

class ViewsOnDisplay : public ListOnDisplay, public testing::WithParamInterface<By> {
protected:
  void choose(int item, int below) {
    if (GetParam() == By::keys)
      chooseByKeys(item, below);
    else
      chooseByMouse(item, below);
  }
};
INSTANTIATE_TEST_SUITE_P(, ViewsOnDisplay, testing::Values(By::keys, By::mouse),
                         [](const auto& by) {
                           return std::string(by.param == By::keys ? "ByKeys" : "ByMouse");
                         });

TEST_P(ViewsOnDisplay, ShowTasksAccordingToTheirNames) {
  succeed({"edit", add({"late", "--due", "2020-01-01"}), "--status", "delegated"});
  add({"open", "--due", "2037-01-02"});
  succeed({"edit", add({"delegated", "--due", "2037-01-03"}), "--status", "delegated"});
  succeed({"done", add({"done", "--due", "2037-01-04"})});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("late", "done");
  ASSERT_NO_FATAL_FAILURE(choose(viewBy, 1));
  ASSERT_TRUE(shows("Due Tasks"));
  expectEnds("late", "late");
  ASSERT_NO_FATAL_FAILURE(choose(viewBy, 2));
  ASSERT_TRUE(shows("Incomplete Tasks"));
  expectEnds("open", "open");
  ASSERT_NO_FATAL_FAILURE(choose(viewBy, 3));
  ASSERT_TRUE(shows("Completed Tasks"));
  expectEnds("done", "done");
  ASSERT_NO_FATAL_FAILURE(choose(viewBy, 0));
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("late", "done");
  leave();
}

TEST_P(ViewsOnDisplay, AreSortedByPriorityOrByDueDate) {
  add({"soon", "--due", "2037-01-01", "--priority", "9"});
  add({"urgent", "--due", "2037-01-02", "--priority", "1"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("soon", "urgent");
  ASSERT_NO_FATAL_FAILURE(choose(sortBy, 1));
  expectEnds("urgent", "soon");
  ASSERT_NO_FATAL_FAILURE(choose(sortBy, 0));
  expectEnds("soon", "urgent");
  leave();
}

TEST_F(ListOnDisplay, RemembersViewAndOrder) {
  add({"soon", "--due", "2037-01-01", "--priority", "9"});
  add({"urgent", "--due", "2037-01-02", "--priority", "1"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(viewBy, 2);
  ASSERT_TRUE(shows("Incomplete Tasks"));
  chooseByKeys(sortBy, 1);
  expectEnds("urgent", "soon");
  leave();
  start();
  ASSERT_TRUE(shows("Incomplete Tasks"));
  expectEnds("urgent", "soon");
  leave();
}

class SearchOnDisplay : public ListOnDisplay {
protected:
  SearchOnDisplay() {
    add({"Walk", "--due", "2037-01-01"});
    add({"Call the BANK", "--due", "2037-01-02", "--category", "work"});
    add({"Think", "--due", "2037-01-03", "--note", "on the bank of a river"});
    add({"Write", "--due", "2037-01-04"});
  }
};

TEST_F(SearchOnDisplay, StartsWhenTypingAndIgnoresCase) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  type("bAnK");
  press({"Return"});
  expectEnds("Call the BANK", "Think");
  // Escape in the list, and in the search line.
  press({"Escape"});
  expectEnds("Walk", "Write");
  press({"ctrl+f"});
  type("river");
  press({"Return"});
  expectEnds("Think", "Think");
  type("x");
  press({"Escape"});
  expectEnds("Walk", "Write");
  EXPECT_EQ(tasks().size(), 4);
  leave();
}

TEST_F(SearchOnDisplay, UsesWordsTypedIntoTouchedLine) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  click(searchField);
  type("bank call");
  press({"Down"});
  expectEnds("Call the BANK", "Call the BANK");
  leave();
}

TEST_F(SearchOnDisplay, UsesTouchedCategory) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  click(categoryBox);
  ASSERT_TRUE(waitFor([&] { return popups() == 1; }));
  // A box that has just been opened ignores clicks.
  constexpr int work = 6;
  ASSERT_TRUE(waitFor([&] {
    click(categoryAt(work));
    return popups() == 0;
  }));
  click(textOf(0));
  ASSERT_TRUE(shows("Call the BANK"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("Call the BANK", "Call the BANK");
  press({"Escape"});
  expectEnds("Walk", "Write");
  leave();
}

}  // namespace
