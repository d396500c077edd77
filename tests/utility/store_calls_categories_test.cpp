// The calls that the store makes to add, rename and remove categories.

#include "store_calls.h"

namespace {

using namespace calls;
using testing::Contains;

const auto endOfRemovals = Row{int{true}};
Row removed(int uid) {
  return {int{false}, uid};  // remove_tasks_of_category
}

TEST_F(StoreCalls, TreatsNegativeCategoryUidAsFailure) {
  Store& store = open({.outcomes = {{"category_uid_by_name", foundCategory(-1)}}});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_DATABASE_FAILURE);
  calls::begin({.outcomes = {{"category_uid_by_name", foundCategory(0)}}});
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_EXISTS);
  EXPECT_EQ(uid, 55U);
}

TEST_F(StoreCalls, AddCategoryFailsIfCommitFails) {
  for (const int code : {diskFull, otherFailure}) {
    Store& store =
        open({.outcomes = {{"category_uid_by_name", unknownCategory}}, .commitCode = code});
    QString name("work");
    unsigned int uid = 55;
    EXPECT_EQ(store.addCategory(name, uid), codeOfFailedChange(code));
    EXPECT_EQ(uid, 55U);
    EXPECT_EQ(calls::list().back(), logged("AddCategory failed! " + ret(code)));
  }
}

TEST_F(StoreCalls, FindsExistingCategoryWithoutWriteLock) {
  Store& store =
      open({.outcomes = {{"category_uid_by_name", foundWork}}, .beginWriteCode = otherFailure});
  QString name("work");
  unsigned int uid = 55;
  EXPECT_EQ(store.addCategory(name, uid), TASK_ENG_EXISTS);
  EXPECT_EQ(uid, 55U);
}

TEST_F(StoreCalls, RenameCategoryBindsLowerCaseNames) {
  Store& store = open();
  QString oldName(QString::fromUtf8("ÄB"));
  QString newName("NEW");
  EXPECT_EQ(store.renameCategory(oldName, newName), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), AreSteps(withParameters({varchar("äb"), varchar("new")},
                                                     executed("rename_category"))));
  EXPECT_EQ(newName, QString("NEW"));
  QString nullName;
  calls::begin({});
  EXPECT_EQ(store.renameCategory(nullName, nullName), TASK_ENG_OK);
  EXPECT_THAT(calls::list(), testing::IsSupersetOf(bound(0, {null, null})));
}

// Half of a surrogate pair, which has no UTF-8, is bound as the three bytes that its code would
// have.
TEST_F(StoreCalls, BindsNamesAsUtf8) {
  const struct {
    std::vector<QChar> name;
    std::string bytes;
  } cases[] = {
      {{QChar(0xFEFF), QChar(0xE4)}, "\xEF\xBB\xBF\xC3\xA4"},
      {{QChar(0xD83D), QChar(0xDE00)}, "\xF0\x9F\x98\x80"},
      {{QChar(0xD800), QChar('z')}, "\xED\xA0\x80z"},
      {{QChar('a'), QChar(0xDFFF)}, "a\xED\xBF\xBF"},
      {{}, ""},
  };
  for (const auto& one : cases) {
    Store& store = open();
    QString name = QString("") + QString(one.name.data(), static_cast<qsizetype>(one.name.size()));
    EXPECT_EQ(store.removeCategory(name, false), TASK_ENG_OK);
    EXPECT_THAT(calls::list(), Contains(bound(0, varchar(one.bytes))));
  }
}

TEST_F(StoreCalls, RemoveCategoryRemovesTasksFirst) {
  Store& store = open({.outcomes = {{"category_uid_by_name", foundWork},
                                    {"remove_tasks_of_category",
                                     returns({removed(5), removed(3), endOfRemovals})}}});
  QString name("work");
  EXPECT_EQ(store.removeCategory(name, true), TASK_ENG_OK);
  EXPECT_THAT(calls::list(),
              AreSteps(lookedUpCategory(varchar("work")), freedRows(),
                       withParameters({workUid}, queried("remove_tasks_of_category")),
                       reported(5, SVC_CT_REMOVED), reported(3, SVC_CT_REMOVED), freedRows(),
                       withParameters({varchar("work")}, executed("remove_category"))));
}

TEST_F(StoreCalls, ReportsTasksOfRemovedCategoryWithoutEndRow) {
  Store& store =
      open({.outcomes = {{"remove_tasks_of_category", returns({removed(5), removed(3)})}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(workUid), TASK_ENG_OK);
  EXPECT_THAT(calls::list(),
              AreSteps(withParameters({workUid}, queried("remove_tasks_of_category")),
                       reported(5, SVC_CT_REMOVED), reported(3, SVC_CT_REMOVED), freedRows()));
}

TEST_F(StoreCalls, FreesRowsBeforeLoggingThatCategoryHasNoTasks) {
  Store& store = open({.outcomes = {{"remove_tasks_of_category", returns({endOfRemovals})}}});
  EXPECT_EQ(store.removeTasksWithCategoryId(workUid), TASK_ENG_OK);
  EXPECT_THAT(calls::list(),
              AreSteps(withParameters({workUid}, queried("remove_tasks_of_category")), freedRows(),
                       logged("No task with such category!")));
}

// The store began no transaction, but aborts one.
TEST_F(StoreCalls, AbortsIfTasksOfCategoryCannotBeRemoved) {
  for (const int code : {diskFull, otherFailure}) {
    Store& store = open({.outcomes = {{"remove_tasks_of_category", failsWith(code)}}});
    EXPECT_EQ(store.removeTasksWithCategoryId(workUid), codeOfFailedChange(code));
    EXPECT_THAT(calls::list(),
                AreSteps(withParameters({workUid}, queried("remove_tasks_of_category")),
                         logged("RemoveAll failed! " + ret(code)), aborted()));
  }
}

}  // namespace
