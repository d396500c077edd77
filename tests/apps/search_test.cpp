// The verb `search`.

#include "ulotask_runner.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Search : public UlotaskTest {
protected:
  void SetUp() override {
    add({"Buy Milk", "--due", "2027-03-05", "--priority", "1"});
    add({"buy milk", "--due", "2027-03-04", "--note", "at the Corner shop"});
    add({"Call", "--category", "Milky Way", "--due", "2027-03-06"});
    add({"Other", "--note", "Milk? No.", "--priority", "5"});
    succeed({"done", "1"});
  }
};

TEST_F(Search, FindsTextInSummaryNoteAndCategory) {
  EXPECT_THAT(uids({"search", "Milk"}), ElementsAre(1, 3, 4));
  EXPECT_THAT(uids({"search", "milk"}), ElementsAre(2));
  EXPECT_THAT(uids({"search", "Corner shop"}), ElementsAre(2));
}

TEST_F(Search, FindsTextInUuid) {
  const std::string uuid =
      succeed({"show", "3", "--json"}).object()["uuid"].toString().toStdString();
  EXPECT_THAT(uids({"search", uuid}), ElementsAre(3));
}

TEST_F(Search, PrintsTasksAsListDoes) {
  EXPECT_EQ(succeed({"search", "Corner"}).out,
            "UID  DUE         PRI  STATUS        CATEGORY  SUMMARY\n"
            "  2  2027-03-04    0  needs action  -         buy milk\n");
}

TEST_F(Search, NoMatchIsNotAnError) {
  EXPECT_EQ(succeed({"search", "cocoa"}).out, "No tasks.\n");
  EXPECT_THAT(uids({"search", "cocoa"}), IsEmpty());
  EXPECT_EQ(succeed({"search", "--note", "cocoa"}).out, "No tasks.\n");
}

TEST_F(Search, EmptyStoreHasNoMatch) {
  succeed({"rm", "1", "2", "3", "4"});
  EXPECT_EQ(succeed({"search", "Milk"}).out, "No tasks.\n");
  EXPECT_EQ(succeed({"search", "--status", "completed"}).out, "No tasks.\n");
}

TEST_F(Search, ExampleTextsIgnoreCase) {
  EXPECT_THAT(uids({"search", "--summary", "MILK"}), ElementsAre(2, 1));
  EXPECT_THAT(uids({"search", "--note", "milk"}), ElementsAre(4));
}

TEST_F(Search, StatusAndPriorityMatchExactly) {
  EXPECT_THAT(uids({"search", "--status", "completed"}), ElementsAre(1));
  EXPECT_THAT(uids({"search", "--status", "needs-action"}), ElementsAre(2, 3, 4));
  EXPECT_THAT(uids({"search", "--status", "needs action"}), ElementsAre(2, 3, 4));
  EXPECT_THAT(uids({"search", "--priority", "5"}), ElementsAre(4));
  EXPECT_THAT(uids({"search", "--priority", "9"}), IsEmpty());
}

TEST_F(Search, TaskMustMatchEverythingGiven) {
  EXPECT_THAT(uids({"search", "Milk", "--status", "needs-action"}), ElementsAre(3, 4));
  EXPECT_THAT(uids({"search", "Milk", "--priority", "5", "--note", "no"}), ElementsAre(4));
  EXPECT_THAT(uids({"search", "--summary", "milk", "--status", "completed"}), ElementsAre(1));
}

TEST_F(Search, RejectsInvalidOptions) {
  const std::vector<std::pair<Arguments, const char*>> wrong = {
      {{"search"}, "nothing to search for;"},
      {{"search", "--json"}, "nothing to search for;"},
      {{"search", "--status", "lost"}, "\"lost\" is not one of completed, needs-action, accepted"},
      {{"search", "--priority", "0"}, "--priority"},
      {{"search", "--priority", "10"}, "--priority"},
      {{"search", "--priority", "high"}, "--priority"},
  };
  for (const auto& [arguments, message] : wrong) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 2) << message;
    EXPECT_THAT(run.err, HasSubstr(message));
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(shell("\"$ULOTASK\" search $'K\\xe4se'").code, 2);
}

}  // namespace
