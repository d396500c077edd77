#include "change_task.h"

#include "failing_new.h"
#include "store_test.h"
#include "ulodb2.h"

#include <stdexcept>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class ChangeTask : public StoreTest {
protected:
  static void setSummary(Task& task) { task.setString(Task::TASK_FIELD_SUMMARY, "changed"); }

  std::string summary(unsigned int uid) {
    return get(uid).getString(Task::TASK_FIELD_SUMMARY).toStdString();
  }
  QString category(unsigned int uid) { return get(uid).getString(Task::TASK_FIELD_CATEGORY); }
  unsigned int addOf(const QString& category) {
    Task added = task("a");
    added.setString(Task::TASK_FIELD_CATEGORY, category);
    return add(added);
  }
};

TEST_F(ChangeTask, StoresChangeAndReportsTaskAsStored) {
  const unsigned int uid = add(task("a"));
  ulo::ChangeReport report;
  EXPECT_EQ(ulo::changeTask(
                store(), uid, [](Task& task) { task.setStatus(0); }, &report),
            ok);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
  EXPECT_THAT(report.task, IsSameTask(get(uid)));
  EXPECT_FALSE(report.categoryVanished);
}

TEST_F(ChangeTask, CompletesTaskAndReopensIt) {
  const unsigned int uid = add(task("a"));
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), ok);
  EXPECT_EQ(get(uid).getStatusValue(), 0);
  EXPECT_EQ(ulo::setCompleted(store(), uid, false), ok);
  EXPECT_EQ(get(uid).getStatusValue(), 1);
  ASSERT_EQ(store().removeTask(uid), ok);
  EXPECT_EQ(ulo::setCompleted(store(), uid, true), notFound);
}

TEST_F(ChangeTask, KeepsOtherWritersOutBetweenReadingAndStoring) {
  const unsigned int uid = add(task("a"));
  bool locked = false;
  EXPECT_EQ(ulo::changeTask(store(), uid,
                            [&](Task& task) {
                              setSummary(task);
                              RawDatabase other(directory_.path());
                              other.run("PRAGMA busy_timeout = 0");
                              try {
                                other.run("DELETE FROM task_table_task");
                              } catch (const std::runtime_error&) {
                                locked = true;
                              }
                            }),
            ok);
  EXPECT_TRUE(locked);
  EXPECT_EQ(summary(uid), "changed");
}

TEST_F(ChangeTask, ReportsTaskThatIsNotStored) {
  const unsigned int uid = add(task("a"));
  ASSERT_EQ(store().removeTask(uid), ok);
  ulo::ChangeReport report;
  bool called = false;
  EXPECT_EQ(ulo::changeTask(
                store(), uid, [&](Task&) { called = true; }, &report),
            notFound);
  EXPECT_FALSE(called);
  EXPECT_EQ(report.task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
}

TEST_F(ChangeTask, AddsCategory) {
  const unsigned int uid = add(task("a"));
  EXPECT_EQ(
      ulo::changeTask(store(), uid,
                      [](Task& task) { task.setString(Task::TASK_FIELD_CATEGORY, "Garden"); }),
      ok);
  EXPECT_EQ(category(uid), "Garden");
}

TEST_F(ChangeTask, StoresTaskOfVanishedCategoryWithoutOne) {
  const unsigned int uid = addOf("garden");
  QString name = "garden";
  ASSERT_EQ(store().removeCategory(name, false), ok);
  ASSERT_EQ(category(uid), "None");
  ulo::ChangeReport report;
  EXPECT_EQ(ulo::changeTask(store(), uid, setSummary, &report), ok);
  EXPECT_TRUE(report.categoryVanished);
  EXPECT_EQ(summary(uid), "changed");
  EXPECT_TRUE(category(uid).isNull());
  EXPECT_THAT(categories(), Not(Contains("None")));
}

TEST_F(ChangeTask, RestoresNullCategory) {
  const unsigned int uid = add(task("a"));
  sql("UPDATE task_table_category SET name = 'renamed' WHERE name IS NULL");
  EXPECT_EQ(
      ulo::changeTask(store(), uid,
                      [](Task& task) { task.setString(Task::TASK_FIELD_CATEGORY, QString()); }),
      ok);
  EXPECT_TRUE(category(uid).isNull());
}

TEST_F(ChangeTask, KeepsNothingOfChangeThatThrows) {
  const unsigned int uid = add(task("a"));
  EXPECT_THROW(ulo::changeTask(store(), uid,
                               [&](Task& task) {
                                 setSummary(task);
                                 addCategory("Garden");
                                 throw std::runtime_error("refused");
                               }),
               std::runtime_error);
  EXPECT_EQ(summary(uid), "a");
  EXPECT_THAT(categories(), Not(Contains("Garden")));
  EXPECT_EQ(ulo::changeTask(store(), uid, setSummary), ok);
}

TEST_F(ChangeTask, KeepsNoCategoryOfTaskThatIsRefused) {
  const unsigned int uid = add(task("a"));
  sql("CREATE TRIGGER refusal BEFORE UPDATE ON task_table_task "
      "BEGIN SELECT RAISE(ABORT, 'refused'); END");
  EXPECT_EQ(
      ulo::changeTask(store(), uid,
                      [](Task& task) { task.setString(Task::TASK_FIELD_CATEGORY, "Garden"); }),
      databaseFailure);
  EXPECT_THAT(categories(), Not(Contains("Garden")));
}

TEST_F(ChangeTask, RefusedWhileThreadReads) {
  const unsigned int uid = add(task("a"));
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  Task removed;
  Task added = task("b");
  EXPECT_EQ(ulo::changeTask(store(), uid, setSummary), databaseFailure);
  EXPECT_EQ(ulo::removeTask(store(), uid, removed), databaseFailure);
  EXPECT_EQ(ulo::addTask(store(), added), databaseFailure);
  ASSERT_EQ(DB_EndRead(), DB_OK);
  EXPECT_EQ(summary(uid), "a");
}

TEST_F(ChangeTask, RemovesTaskThatItReports) {
  const unsigned int uid = add(task("a"));
  const Task before = get(uid);
  Task removed;
  EXPECT_EQ(ulo::removeTask(store(), uid, removed), ok);
  EXPECT_THAT(removed, IsSameTask(before));
  EXPECT_EQ(code(uid), notFound);
  Task none;
  EXPECT_EQ(ulo::removeTask(store(), uid, none), notFound);
  EXPECT_EQ(none.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
}

TEST_F(ChangeTask, AddsTaskWithItsCategory) {
  Task added = task("a");
  added.setString(Task::TASK_FIELD_CATEGORY, "Garden");
  EXPECT_EQ(ulo::addTask(store(), added), ok);
  EXPECT_EQ(category(added.getUINT32(Task::TASK_FIELD_UID)), "Garden");
}

TEST_F(ChangeTask, AddsNoTaskWithoutItsCategory) {
  store();
  sql("CREATE TRIGGER refusal BEFORE INSERT ON task_table_category "
      "BEGIN SELECT RAISE(ABORT, 'refused'); END");
  Task added = task("a");
  added.setString(Task::TASK_FIELD_CATEGORY, "Garden");
  EXPECT_EQ(ulo::addTask(store(), added), databaseFailure);
  EXPECT_EQ(added.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
  EXPECT_EQ(count(), 0);
}

TEST_F(ChangeTask, EnsuresCategoryOnce) {
  EXPECT_EQ(ulo::ensureCategory(store(), "Garden"), ok);
  EXPECT_EQ(ulo::ensureCategory(store(), "Garden"), ok);
  EXPECT_EQ(ulo::ensureCategory(store(), QString()), ok);
  EXPECT_THAT(categories(), ElementsAre("(null)", "none", "meeting", "vacation", "appointment",
                                        "party", "Garden"));
}

// The store returns such a task without its category.
TEST_F(ChangeTask, KeepsCategoryThatCannotBeRead) {
  const unsigned int uid = addOf("garden");
  int refused = 0;
  for (int left = 0; left < 8; ++left) {
    allocationsLeft = left;
    const int code = ulo::changeTask(store(), uid, [](Task& task) {
      allocationsLeft = allAllocationsSucceed;
      setSummary(task);
    });
    allocationsLeft = allAllocationsSucceed;
    refused += code == ok ? 0 : 1;
    EXPECT_EQ(category(uid), "garden") << left;
  }
  EXPECT_GE(refused, 2);
}

}  // namespace
