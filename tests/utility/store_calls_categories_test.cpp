// Categories: what the store asks of the platform, call by call, and what it makes of every
// answer.

#include "store_calls.h"

namespace {

using testing::ElementsAre;

TEST_F(StoreCalls, TakesANegativeUidOfACategoryForAFailure) {
  Store& store = open({.answers = {{"category_uid_by_name", {0, {{0, -1}}, 1}}}});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), 6);
  calls::begin({.answers = {{"category_uid_by_name", {0, {{0, 0}}, 1}}}});
  EXPECT_EQ(store.addCategory(name, uid), 8);
  EXPECT_EQ(uid, 55U);
}

TEST_F(StoreCalls, RenamesInLowerCase) {
  Store& store = open();
  QString oldName(QString::fromUtf8("ÄB"));
  QString newName("NEW");
  EXPECT_EQ(store.renameCategory(oldName, newName), 0);
  EXPECT_THAT(calls::list(), ElementsAre("block 2", "0 = 'äb'", "1 = 'new'",
                                         "exec rename_category by block", "free block"));
  EXPECT_EQ(newName, QString("NEW"));
  QString none;
  calls::begin({});
  EXPECT_EQ(store.renameCategory(none, none), 0);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf({"0 = null", "1 = null"}));
}

// Half of a surrogate pair takes the three bytes that its code would have.
TEST_F(StoreCalls, BindsNamesAsUtf8) {
  const struct {
    std::vector<QChar> units;
    const char* bound;
  } cases[] = {
      {{QChar(0xFEFF), QChar(0xE4)}, "0 = '\xEF\xBB\xBF\xC3\xA4'"},
      {{QChar(0xD83D), QChar(0xDE00)}, "0 = '\xF0\x9F\x98\x80'"},
      {{QChar(0xD800), QChar('z')}, "0 = '\xED\xA0\x80z'"},
      {{QChar('a'), QChar(0xDFFF)}, "0 = 'a\xED\xBF\xBF'"},
      {{}, "0 = ''"},
  };
  for (const auto& one : cases) {
    Store& store = open();
    QString name =
        QString("") + QString(one.units.data(), static_cast<qsizetype>(one.units.size()));
    EXPECT_EQ(store.removeCategory(name, false), 0);
    EXPECT_THAT(calls::list(), testing::Contains(one.bound));
  }
}

TEST_F(StoreCalls, RemovesACategoryWithItsTasks) {
  Store& store = open({.answers = {{"category_uid_by_name", found7},
                                   {"remove_tasks_of_category", {0, {{0, 5}, {0, 3}, {1}}, 1}}}});
  QString name("work");
  EXPECT_EQ(store.removeCategory(name, true), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 'work'", "query category_uid_by_name by block",
                          "free block", "free rows", "block 1", "0 = 7",
                          "query remove_tasks_of_category by block", "free block",
                          "report 5 3 -1 " + engine, "report 3 3 -1 " + engine, "free rows",
                          "block 1", "0 = 'work'", "exec remove_category by block", "free block"));
}

TEST_F(StoreCalls, ReportsTasksOfACategoryWithoutEndRow) {
  Store& store = open({.answers = {{"remove_tasks_of_category", {0, {{0, 5}, {0, 3}}, 1}}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(7), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                          "free block", "report 5 3 -1 " + engine, "report 3 3 -1 " + engine,
                          "free rows"));
}

TEST_F(StoreCalls, ClosesCursorBeforeLoggingThatNothingWasFound) {
  Store& store =
      open({.answers = {{"remove_tasks_of_category", flagTrue},
                        {"page_of_tasks", {0, {{0, 0, {}, {}, {}, 0, 0, 0, 0, 0, 0, 0}}, 1}}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(7), 0);
  EXPECT_THAT(calls::list(),
              ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                          "free block", "free rows", "log No task with such category!"));
  QValueList<ZTASK_ENG_Task> tasks;
  ZTASK_ENG_Task start = milk();
  EXPECT_EQ(store.getTasks(tasks, start, 1, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                           ZTASK_ENG_Model::TASK_SORT_DUE),
            3);
  const std::vector<std::string> asked = calls::list();
  ASSERT_GE(asked.size(), 2U);
  EXPECT_EQ(asked.at(asked.size() - 2), "free rows");
  EXPECT_EQ(asked.back(), "log Record not found!! [ret=0]");
}

TEST_F(StoreCalls, AbortsWhenTasksOfACategoryCannotBeRemoved) {
  for (const int result : {full, otherFailure}) {
    Store& store = open({.answers = {{"remove_tasks_of_category", {result, {}, 0}}}});
    EXPECT_EQ(store.removeTasksWithCategoryId(7), result == full ? 1 : 6);
    EXPECT_THAT(calls::list(),
                ElementsAre("block 1", "0 = 7", "query remove_tasks_of_category by block",
                            "free block",
                            "log RemoveAll failed! [ret=" + std::to_string(result) + "]", "abort"));
  }
}

}  // namespace
