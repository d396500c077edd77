// category list, add, rename and rm.

#include "ulotask_runner.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class Category : public UlotaskTest {
protected:
  std::string categoryOf(const std::string& uid) {
    return succeed({"show", uid, "--json"}).object()["category"].toString().toStdString();
  }
};

TEST_F(Category, ListShowsNamesAndNumbersOfTasks) {
  add({"a", "--category", "garden"});
  add({"b", "--category", "garden"});
  add({"c", "--category", "party"});
  add({"without one"});
  EXPECT_EQ(succeed({"category", "list"}).out, "TASKS  CATEGORY\n"
                                               "    0  none\n"
                                               "    0  meeting\n"
                                               "    0  vacation\n"
                                               "    0  appointment\n"
                                               "    1  party\n"
                                               "    2  garden\n");
  const QJsonArray array = succeed({"category", "list", "--json"}).array();
  EXPECT_EQ(array.size(), 6);
  EXPECT_EQ(array[5].toObject(), (QJsonObject{{"name", "garden"}, {"tasks", 2}}));
}

TEST_F(Category, ListReportsEmptyStore) {
  succeed({"category", "rm", "none", "meeting", "vacation", "appointment", "party"});
  EXPECT_EQ(succeed({"category", "list"}).out, "No categories.\n");
  EXPECT_EQ(succeed({"category", "list", "--json"}).array().size(), 0);
}

TEST_F(Category, AddAddsEachOnce) {
  EXPECT_EQ(succeed({"category", "add", "garden", "spare time"}).out,
            "Added category \"garden\"\nAdded category \"spare time\"\n");
  const Outcome run = ulotask({"category", "add", "garden", "party", "Party"});
  EXPECT_EQ(run.code, 15);
  EXPECT_EQ(run.out, "Added category \"Party\"\n");
  EXPECT_EQ(run.err, "ulotask: the category \"garden\" exists already\n"
                     "ulotask: the category \"party\" exists already\n");
  EXPECT_EQ(succeed({"category", "list", "--json"}).array().size(), 8);
}

TEST_F(Category, RenameKeepsTheTasks) {
  add({"a", "--category", "garden"});
  EXPECT_EQ(succeed({"category", "rename", "garden", "Yard"}).out,
            "Renamed category \"garden\" to \"yard\"\n");
  EXPECT_EQ(categoryOf("1"), "yard");
  EXPECT_EQ(ulotask({"list", "--category", "garden"}).code, 3);
}

TEST_F(Category, RenameRejectsUnsuitableNames) {
  succeed({"category", "add", "Garden"});
  const Outcome unknown = ulotask({"category", "rename", "nowhere", "elsewhere"});
  EXPECT_EQ(unknown.code, 3);
  EXPECT_EQ(unknown.err, "ulotask: no category has the name \"nowhere\"\n");
  const Outcome taken = ulotask({"category", "rename", "party", "Meeting"});
  EXPECT_EQ(taken.code, 15);
  EXPECT_EQ(taken.err, "ulotask: the category \"meeting\" exists already\n");
  const Outcome capital = ulotask({"category", "rename", "Garden", "yard"});
  EXPECT_EQ(capital.code, 2);
  EXPECT_EQ(capital.err, "ulotask: the category \"Garden\" cannot be renamed: the store renames "
                         "only names in lower case\n");
  EXPECT_THAT(succeed({"category", "list"}).out, HasSubstr("party\n    0  Garden\n"));
}

TEST_F(Category, RenameOfCapitalNameKeepsLowerCaseName) {
  succeed({"category", "add", "Garden", "garden"});
  EXPECT_EQ(ulotask({"category", "rename", "Garden", "yard"}).code, 2);
  EXPECT_THAT(succeed({"category", "list"}).out, HasSubstr("    0  Garden\n    0  garden\n"));
}

TEST_F(Category, RemoveKeepsTasksAndReportsThem) {
  add({"a", "--category", "garden"});
  add({"b", "--category", "garden"});
  EXPECT_EQ(succeed({"category", "rm", "garden", "party"}).out,
            "Removed category \"garden\"; now of category None: 2 tasks\n"
            "Removed category \"party\"\n");
  EXPECT_EQ(categoryOf("1"), "None");
  EXPECT_THAT(succeed({"category", "rm", "--help"}).out, HasSubstr("shown with the category None"));
}

TEST_F(Category, RemoveCanRemoveTasksToo) {
  add({"a", "--category", "garden"});
  add({"b", "--category", "party"});
  EXPECT_EQ(succeed({"category", "rm", "garden", "--with-tasks"}).out,
            "Removed category \"garden\" with 1 task\n");
  EXPECT_EQ(uids({"list"}), std::vector<int>{2});
}

TEST_F(Category, RemoveReportsEachMissingName) {
  const Outcome run = ulotask({"category", "rm", "one", "party", "two", "Meeting"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.out, "Removed category \"party\"\n");
  EXPECT_EQ(run.err, "ulotask: no category has the name \"one\"\n"
                     "ulotask: no category has the name \"two\"\n"
                     "ulotask: no category has the name \"Meeting\"\n");
}

TEST_F(Category, EmptyNameIsRejected) {
  for (const Arguments& arguments : std::vector<Arguments>{{"category", "add", ""},
                                                           {"category", "rename", "", "x"},
                                                           {"category", "rename", "party", ""},
                                                           {"category", "rm", ""}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "ulotask: the name of the category is empty\n");
  }
  EXPECT_EQ(succeed({"category", "list", "--json"}).array().size(), 5);
}

TEST_F(Category, NamesAreUtf8) {
  EXPECT_EQ(shell("\"$ULOTASK\" category add $'K\\xe4se'").code, 2);
  succeed({"category", "add", "家庭"});
  EXPECT_THAT(succeed({"category", "list"}).out, HasSubstr("    0  家庭\n"));
}

TEST_F(Category, ListShowsNoControlCharacter) {
  succeed({"category", "add", "a\x1b[31m\nb\u009b"});
  EXPECT_THAT(succeed({"category", "list"}).out, HasSubstr("    0  a\uFFFD[31m b\uFFFD\n"));
  EXPECT_THAT(succeed({"category", "list", "--json"}).out, HasSubstr("a\\u001b[31m\\nb\\u009b"));
  EXPECT_THAT(succeed({"category", "rm", "a\x1b[31m\nb\u009b"}).out, Not(HasSubstr("\x1b")));
}

}  // namespace
