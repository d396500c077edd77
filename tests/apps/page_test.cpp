// Views, categories and pages of `list`.

#include "ulotask_runner.h"

#include <QDate>

#include <algorithm>
#include <set>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Pages : public UlotaskTest {
protected:
  static std::string daysFromToday(int days) {
    return QDate::currentDate().addDays(days).toString(Qt::ISODate).toStdString();
  }
  // Tasks 1 to 8: every second one completed, some due, some of category shop.
  void addTasks() {
    const std::vector<Arguments> tasks = {
        {"a", "--due", daysFromToday(-2), "--priority", "3", "--category", "shop"},
        {"b", "--due", daysFromToday(-2), "--priority", "3"},
        {"c", "--due", daysFromToday(5), "--priority", "1", "--category", "shop"},
        {"d", "--due", daysFromToday(0) + " 23:59", "--priority", "9"},
        {"e", "--priority", "2", "--category", "shop"},
        {"f", "--due", daysFromToday(1), "--priority", "2", "--category", "shop"},
        {"g", "--due", daysFromToday(5), "--priority", "0"},
        {"h"},
    };
    for (const Arguments& task : tasks)
      add(task);
    succeed({"done", "2", "4", "6", "8"});
  }

  // All pages of this size, one after the other, until one is empty.
  std::vector<int> pageByPage(const Arguments& listing, int size) {
    std::vector<int> all;
    std::vector<int> page;
    do {
      Arguments arguments = listing;
      arguments.insert(arguments.end(), {"--limit", std::to_string(size)});
      if (!all.empty())
        arguments.insert(arguments.end(), {"--after", std::to_string(all.back())});
      page = uids(arguments);
      EXPECT_LE(page.size(), static_cast<std::size_t>(size));
      all.insert(all.end(), page.begin(), page.end());
    } while (!page.empty() && all.size() < 100);
    return all;
  }
};

// More tasks than are read at once.
TEST_F(Pages, LongListIsWhole) {
  constexpr int count = 1203;
  std::string todos;
  std::vector<int> all;
  std::vector<int> incomplete;
  for (int i = 1; i <= count; ++i) {
    todos += todo("SUMMARY:task\r\nPRIORITY:" + std::to_string(i % 10) +
                  "\r\nSTATUS:" + (i % 4 == 0 ? "COMPLETED" : "NEEDS ACTION") +
                  "\r\nCATEGORIES:" + (i == 7 ? "a long category" : "shop") + "\r\n");
    all.push_back(i);
    if (i % 4 != 0)
      incomplete.push_back(i);
  }
  succeed({"import", "-"}, calendar(todos));
  const auto listed = [&](std::vector<int> expected, const Arguments& listing) {
    std::sort(expected.begin(), expected.end(),
              [](int a, int b) { return a % 10 != b % 10 ? a % 10 < b % 10 : a > b; });
    EXPECT_EQ(uids(listing), expected);
  };
  listed(all, {"list"});
  listed(all, {"list", "--sort", "priority"});
  listed(incomplete, {"list", "--view", "incomplete"});
  std::erase(incomplete, 7);
  listed(incomplete, {"list", "--view", "incomplete", "--category", "shop"});
  const std::vector<int> whole = uids({"list"});
  for (const int limit : {499, 500, 501, 1001, 1203})
    EXPECT_EQ(uids({"list", "--limit", std::to_string(limit)}),
              std::vector<int>(whole.begin(), whole.begin() + limit));
  EXPECT_EQ(uids({"list", "--after", std::to_string(whole[99]), "--limit", "1100"}),
            std::vector<int>(whole.begin() + 100, whole.begin() + 1200));

  const std::string table = succeed({"list"}).out;
  const std::size_t column = table.find("SUMMARY");
  std::size_t lines = 0;
  for (std::size_t at = table.find('\n') + 1; at < table.size(); at = table.find('\n', at) + 1) {
    EXPECT_EQ(table.substr(at + column, 5), "task\n");
    ++lines;
  }
  EXPECT_EQ(lines, static_cast<std::size_t>(count));
}

TEST_F(Pages, ViewShowsItsTasks) {
  addTasks();
  EXPECT_THAT(uids({"list"}), ElementsAre(2, 1, 4, 6, 7, 3, 8, 5));
  EXPECT_THAT(uids({"list", "--view", "all"}), ElementsAre(2, 1, 4, 6, 7, 3, 8, 5));
  EXPECT_THAT(uids({"list", "--view", "due"}), ElementsAre(2, 1, 4));
  EXPECT_THAT(uids({"list", "--view", "incomplete"}), ElementsAre(1, 7, 3, 5));
  EXPECT_THAT(uids({"list", "--view", "completed"}), ElementsAre(2, 4, 6, 8));
  EXPECT_THAT(uids({"list", "--view", "completed", "--sort", "priority"}), ElementsAre(8, 6, 2, 4));
}

TEST_F(Pages, CategoryShowsItsTasksInOrder) {
  addTasks();
  EXPECT_THAT(uids({"list", "--category", "shop"}), ElementsAre(1, 6, 3, 5));
  EXPECT_THAT(uids({"list", "--category", "shop", "--sort", "priority"}), ElementsAre(3, 6, 5, 1));
  EXPECT_THAT(uids({"list", "--category", ""}), ElementsAre(2, 4, 7, 8));
  EXPECT_THAT(uids({"list", "--category", "meeting"}), IsEmpty());
}

TEST_F(Pages, CategoryAndViewShowCommonTasks) {
  addTasks();
  const std::vector<int> shop = uids({"list", "--category", "shop"});
  for (const char* view : {"all", "due", "incomplete", "completed"}) {
    std::vector<int> expected;
    for (const int uid : uids({"list", "--view", view})) {
      if (std::count(shop.begin(), shop.end(), uid) > 0)
        expected.push_back(uid);
    }
    EXPECT_EQ(uids({"list", "--view", view, "--category", "shop"}), expected) << view;
  }
}

TEST_F(Pages, PagesChain) {
  addTasks();
  for (const char* view : {"all", "due", "incomplete", "completed"}) {
    for (const char* sort : {"due", "priority"}) {
      for (const char* category : {"", "shop", "any"}) {
        Arguments listing = {"list", "--view", view, "--sort", sort};
        if (category != std::string("any"))
          listing.insert(listing.end(), {"--category", category});
        const std::vector<int> whole = uids(listing);
        for (const int size : {1, 3, 8})
          EXPECT_EQ(pageByPage(listing, size), whole) << testing::PrintToString(listing) << size;
      }
    }
  }
}

TEST_F(Pages, PageMayFollowTaskThatViewDoesNotShow) {
  addTasks();
  const std::vector<int> all = uids({"list"});
  const std::set<int> completed = {2, 4, 6, 8};
  const std::set<int> shop = {1, 3, 5, 6};
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string after = std::to_string(all[i]);
    std::vector<int> inView;
    std::vector<int> inCategory;
    for (std::size_t k = i + 1; k < all.size(); ++k) {
      if (completed.contains(all[k]) && inView.size() < 2)
        inView.push_back(all[k]);
      if (shop.contains(all[k]) && inCategory.size() < 2)
        inCategory.push_back(all[k]);
    }
    EXPECT_EQ(uids({"list", "--view", "completed", "--limit", "2", "--after", after}), inView);
    EXPECT_EQ(uids({"list", "--category", "shop", "--limit", "2", "--after", after}), inCategory);
  }
}

TEST_F(Pages, ViewWithoutTasksIsEmpty) {
  add({"later", "--due", daysFromToday(3)});
  EXPECT_EQ(succeed({"list", "--view", "completed"}).out, "No tasks.\n");
  EXPECT_EQ(succeed({"list", "--view", "due", "--limit", "5"}).out, "No tasks.\n");
  EXPECT_EQ(succeed({"list", "--after", "1"}).out, "No tasks.\n");
  EXPECT_EQ(succeed({"list", "--view", "due", "--after", "1"}).out, "No tasks.\n");
}

TEST_F(Pages, TheLastSecondOfTodayIsNotYetDue) {
  add({"last", "--due", daysFromToday(0) + " 23:59:59", "--category", "shop"});
  add({"before", "--due", daysFromToday(0) + " 23:59:58", "--category", "shop"});
  EXPECT_THAT(uids({"list", "--view", "due"}), ElementsAre(2));
  EXPECT_THAT(uids({"list", "--view", "due", "--category", "shop"}), ElementsAre(2));
}

TEST_F(Pages, LimitsAreCountsFromOne) {
  addTasks();
  EXPECT_EQ(uids({"list", "--limit", "1"}).size(), 1U);
  EXPECT_EQ(uids({"list", "--limit", "7"}).size(), 7U);
  EXPECT_EQ(uids({"list", "--limit", "8"}).size(), 8U);
  EXPECT_EQ(uids({"list", "--limit", "9"}).size(), 8U);
  EXPECT_EQ(uids({"list", "--limit", "2147483647"}).size(), 8U);
  EXPECT_EQ(uids({"list", "--limit", "2147483647", "--after", "2"}).size(), 7U);
  for (const char* limit : {"0", "-1", "2147483648", "99999999999999999999", "x", "1.5", ""}) {
    const Outcome run = ulotask({"list", std::string("--limit=") + limit});
    EXPECT_EQ(run.code, 2) << limit;
    EXPECT_THAT(run.err, HasSubstr("--limit")) << limit;
    EXPECT_EQ(run.out, "");
  }
}

TEST_F(Pages, UnknownCategoryIsAnError) {
  addTasks();
  for (const char* name : {"nowhere", "Shop", "None"}) {
    const Outcome run = ulotask({"list", "--category", name});
    EXPECT_EQ(run.code, 3) << name;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, std::string("ulotask: no category has the name \"") + name + "\"\n");
  }
}

TEST_F(Pages, UnknownTaskBeforePageIsAnError) {
  addTasks();
  for (const Arguments& arguments : std::vector<Arguments>{
           {"list", "--after", "99"}, {"list", "--category", "shop", "--after", "99"}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, "ulotask: no task has the UID 99\n");
  }
  EXPECT_EQ(ulotask({"list", "--after", "first"}).code, 2);
}

TEST_F(Pages, UnknownViewIsAnError) {
  const Outcome run = ulotask({"list", "--view", "overdue"});
  EXPECT_EQ(run.code, 2);
  EXPECT_THAT(run.err, HasSubstr("overdue"));
}

}  // namespace
