// Creating and editing tasks by keys, and what is stored.

#include "display/display_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char newTitle[] = "New Task";
constexpr char editTitle[] = "Edit Task";
constexpr char cancelTitle[] = "Cancel Edit";

class EditOnDisplay : public TasksOnDisplay {
protected:
  // Types the title of a new task, then opens the dialog of its due date.
  void typeNewTask() {
    start();
    ASSERT_TRUE(shows("All Tasks"));
    press({"F2"});
    ASSERT_TRUE(shows(newTitle));
    type("Buy milk");
    press({"Tab", "Return"});
    ASSERT_TRUE(shows("Due Date"));
  }
  // Begins to edit the only task.
  void editFirst() {
    start();
    ASSERT_TRUE(shows("All Tasks"));
    chooseByKeys(edit);
    ASSERT_TRUE(shows(editTitle));
  }
};

TEST_F(EditOnDisplay, StoresNewTask) {
  typeNewTask();
  press({"Return"});
  ASSERT_TRUE(shows(newTitle));
  EXPECT_THAT(tasks(), IsEmpty());
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  ASSERT_EQ(tasks().size(), 1);
  const QJsonObject task = tasks()[0].toObject();
  EXPECT_EQ(task["summary"], "Buy milk");
  EXPECT_EQ(task["status"], 1);
  EXPECT_FALSE(task["due"].isNull());
  EXPECT_FALSE(task["revision"].isNull());
  EXPECT_TRUE(task["end"].isNull());
  expectEnds("Buy milk", "Buy milk");
  leave();
}

TEST_F(EditOnDisplay, TerminationStoresNewTask) {
  typeNewTask();
  terminate();
  EXPECT_EQ(end(), 0);
  EXPECT_FALSE(std::filesystem::exists(path("data/tasks.db-wal")));
  EXPECT_THAT(summaries(), ElementsAre("Buy milk"));
}

TEST_F(EditOnDisplay, CtrlNStartsNewTask) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"ctrl+n"});
  ASSERT_TRUE(shows(newTitle));
  press({"Escape"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_THAT(tasks(), IsEmpty());
}

TEST_F(EditOnDisplay, ChangesTaskFromDetails) {
  const std::string uid = add({"old", "--note", "stays", "--priority", "3"});
  const QJsonObject before = task(uid);
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Return"});
  ASSERT_TRUE(shows("old"));
  chooseByKeys(editIt);
  ASSERT_TRUE(shows(editTitle));
  press({"ctrl+a"});
  type("new");
  press({"F3"});
  ASSERT_TRUE(shows("new"));
  QJsonObject after = task(uid);
  EXPECT_EQ(after["summary"], "new");
  for (const char* field : {"summary", "revision"})
    after[field] = before[field];
  EXPECT_EQ(after, before);
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

TEST_F(EditOnDisplay, SetsDueDate) {
  const std::string uid = add({"a", "--note", "stays"});
  const QJsonObject before = task(uid);
  editFirst();
  press({"Tab", "Return"});
  ASSERT_TRUE(shows("Due Date"));
  press({"Return"});
  ASSERT_TRUE(shows(editTitle));
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  QJsonObject after = task(uid);
  EXPECT_FALSE(after["due"].isNull());
  for (const char* field : {"due", "revision"})
    after[field] = before[field];
  EXPECT_EQ(after, before);
  leave();
}

TEST_F(EditOnDisplay, AddsCategoryWhileEditing) {
  const std::string uid = add({"a"});
  editFirst();
  press({"Tab", "Tab", "Tab", "Tab", "Tab", "Return", "End", "Return"});
  ASSERT_TRUE(shows("New Category"));
  type("Boat");
  press({"Return"});
  ASSERT_TRUE(shows(editTitle));
  press({"F2"});
  ASSERT_TRUE(shows("All Tasks"));
  EXPECT_EQ(task(uid)["category"], "Boat");
  leave();
  EXPECT_THAT(summaries({"list", "--category", "Boat"}), ElementsAre("a"));
}

TEST_F(EditOnDisplay, CancelingWithoutChangeDoesNotAsk) {
  const std::string uid = add({"a"});
  const QJsonObject before = task(uid);
  editFirst();
  press({"Escape"});
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(edit);
  ASSERT_TRUE(shows(editTitle));
  chooseByKeys(0);
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_EQ(task(uid), before);
}

TEST_F(EditOnDisplay, CancelingAsksBeforeDiscardingChanges) {
  const std::string uid = add({"a"});
  const QJsonObject before = task(uid);
  editFirst();
  type("b");
  press({"Escape"});
  ASSERT_TRUE(shows(cancelTitle));
  press({"F3"});
  ASSERT_TRUE(waitFor([&] { return display_.windows("ulo-tasks") == 1; }));
  ASSERT_TRUE(shows(editTitle));
  chooseByKeys(0);
  ASSERT_TRUE(shows(cancelTitle));
  press({"F1"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_EQ(task(uid), before);
}

TEST_F(EditOnDisplay, KilledProgramKeepsStoredTask) {
  const std::string uid = add({"a", "--note", "whole"});
  const QJsonObject before = task(uid);
  editFirst();
  const QByteArray picture = display_.picture(wholeScreen);
  type("much more");
  ASSERT_TRUE(waitFor([&] { return display_.picture(wholeScreen) != picture; }));
  kill();
  EXPECT_EQ(task(uid), before);
  expectSound();
}

}  // namespace
