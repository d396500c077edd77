#include "task_pages.h"

#include "store_test.h"
#include "ulo/export.h"
#include "ulodb2.h"

#include <functional>
#include <utility>

namespace {

// The change that another program makes before the next page is queried.
std::function<void()> beforePageQuery;

}  // namespace

extern "C" {
// Only the query for a page has more than one parameter.
DB_PARAM __real_DB_PARAM_Open(int count);
ULO_EXPORT DB_PARAM __wrap_DB_PARAM_Open(int count);
DB_PARAM __wrap_DB_PARAM_Open(int count) {
  if (count > 1) {
    if (const auto work = std::exchange(beforePageQuery, nullptr))
      work();
  }
  return __real_DB_PARAM_Open(count);
}
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ulo::ListOrder;

constexpr ListOrder completed{ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED,
                              ZTASK_ENG_Model::TASK_SORT_PRIORITY};

std::vector<std::string> summaries(const ulo::Records& page) {
  std::vector<std::string> result;
  for (const Task& task : page)
    result.push_back(task.getString(Task::TASK_FIELD_SUMMARY).toStdString());
  return result;
}

class Pages : public StoreTest {
protected:
  void TearDown() override {
    beforePageQuery = nullptr;
    StoreTest::TearDown();
  }

  // Adds tasks that are listed in this order.
  void addList(std::vector<const char*> names) {
    for (auto name = names.rbegin(); name != names.rend(); ++name)
      add(task(*name));
  }
  std::vector<std::string> pageFrom(unsigned int uid, int count, const ListOrder& order = {}) {
    ulo::Records page;
    code_ = ulo::readPage(store(), uid, count, order, page);
    return summaries(page);
  }
  void open(const ListOrder& order = {}) { ASSERT_EQ(pages_.open(store(), order), ok); }
  std::vector<std::string> pageAt(unsigned int place, int count) {
    ulo::Records page;
    code_ = pages_.read(store(), place, count, page);
    return summaries(page);
  }
  std::vector<std::string> next(int count) {
    ulo::Records page;
    code_ = pages_.next(store(), count, page);
    return summaries(page);
  }

  ulo::TaskPages pages_;
  int code_ = -1;
};

TEST_F(Pages, PageBeginsWithItsStart) {
  addList({"a", "b", "c", "d"});
  open();
  EXPECT_THAT(pageFrom(pages_.uids()[1], 2), ElementsAre("b", "c"));
  EXPECT_EQ(code_, ok);
  EXPECT_THAT(pageFrom(pages_.uids()[2], 9), ElementsAre("c", "d"));
}

TEST_F(Pages, PageOmitsStartThatViewDoesNotShow) {
  add(task("done", 5, 0));
  const unsigned int todo = add(task("todo", 4, 1));
  EXPECT_THAT(pageFrom(todo, 9, completed), ElementsAre("done"));
}

TEST_F(Pages, PageIsEmptyIfNothingFollows) {
  const unsigned int todo = add(task("todo", 5, 1));
  EXPECT_THAT(pageFrom(todo, 9, completed), IsEmpty());
  EXPECT_EQ(code_, ok);
}

TEST_F(Pages, PageNeedsStoredStart) {
  const unsigned int gone = add(task("gone"));
  add(task("a"));
  ASSERT_EQ(store().removeTask(gone), ok);
  EXPECT_THAT(pageFrom(gone, 9), IsEmpty());
  EXPECT_EQ(code_, notFound);
}

TEST_F(Pages, PageIsReadInOneStateOfTheStore) {
  addList({"a", "b", "c"});
  open();
  const unsigned int start = pages_.uids()[0];
  bool changed = false;
  beforePageQuery = [&] {
    RawDatabase(directory_.path())
        .run("UPDATE task_table_task SET due = 1, priority = 9 WHERE UID = " +
             std::to_string(start));
    changed = true;
  };
  EXPECT_THAT(pageFrom(start, 9), ElementsAre("a", "b", "c"));
  EXPECT_TRUE(changed);
  EXPECT_EQ(code_, ok);
}

TEST_F(Pages, ReportsRefusalOfTheStore) {
  addList({"a", "b"});
  open();
  sql("DROP TABLE task_table_task");
  EXPECT_THAT(pageFrom(pages_.uids()[0], 9), IsEmpty());
  EXPECT_EQ(code_, databaseFailure);
  EXPECT_THAT(next(9), IsEmpty());
  EXPECT_EQ(code_, databaseFailure);
  EXPECT_EQ(pages_.position(), 0U);
  EXPECT_EQ(pages_.open(store(), {}), databaseFailure);
  EXPECT_TRUE(pages_.uids().isEmpty());
  EXPECT_TRUE(pages_.isAtEnd());
}

TEST_F(Pages, ReadsFromAnyPlace) {
  addList({"a", "b", "c", "d", "e"});
  open();
  EXPECT_THAT(pageAt(0, 2), ElementsAre("a", "b"));
  EXPECT_THAT(pageAt(3, 10), ElementsAre("d", "e"));
  EXPECT_EQ(code_, ok);
  EXPECT_THAT(pageAt(5, 10), IsEmpty());
  EXPECT_EQ(code_, notFound);
  EXPECT_EQ(pages_.position(), 0U);
}

TEST_F(Pages, ReadsOnlyTasksOfTheView) {
  add(task("done", 5, 0));
  add(task("todo", 5, 1));
  add(task("done too", 5, 0));
  open(completed);
  EXPECT_THAT(pageAt(0, 9), ElementsAre("done too", "done"));
}

TEST_F(Pages, PageEndsWhereTheStoreHasChanged) {
  addList({"a", "b", "c", "d"});
  open();
  ASSERT_EQ(store().removeTask(pages_.uids()[2]), ok);
  EXPECT_THAT(pageAt(0, 9), ElementsAre("a", "b"));
  EXPECT_THAT(pageAt(2, 9), IsEmpty());
  EXPECT_EQ(code_, notFound);
  EXPECT_THAT(pageAt(3, 9), ElementsAre("d"));
}

TEST_F(Pages, WalksTheListOnce) {
  addList({"a", "b", "c", "d", "e"});
  open();
  EXPECT_FALSE(pages_.isAtEnd());
  EXPECT_THAT(next(2), ElementsAre("a", "b"));
  EXPECT_EQ(pages_.position(), 2U);
  EXPECT_THAT(next(2), ElementsAre("c", "d"));
  EXPECT_THAT(next(2), ElementsAre("e"));
  EXPECT_TRUE(pages_.isAtEnd());
  EXPECT_THAT(next(2), IsEmpty());
  EXPECT_EQ(code_, ok);
  EXPECT_EQ(pages_.position(), 5U);
}

TEST_F(Pages, WalkPassesTasksThatAreGone) {
  addList({"a", "b", "c"});
  open();
  ASSERT_EQ(store().removeTask(pages_.uids()[1]), ok);
  EXPECT_THAT(next(9), ElementsAre("a"));
  EXPECT_THAT(next(9), IsEmpty());
  EXPECT_EQ(code_, ok);
  EXPECT_THAT(next(9), ElementsAre("c"));
  EXPECT_TRUE(pages_.isAtEnd());
}

TEST_F(Pages, OpenReturnsToTheBeginning) {
  addList({"a", "b"});
  open();
  pages_.skipToEnd();
  EXPECT_TRUE(pages_.isAtEnd());
  EXPECT_EQ(pages_.position(), 2U);
  add(task("new"));
  open();
  EXPECT_THAT(next(9), ElementsAre("new", "a", "b"));
}

}  // namespace
