// The store on a database with real faults: no memory for parameters, a full file, missing tables
// and indexes, rows that cannot be written. An operation that fails changes nothing and reports
// nothing, unless a test says otherwise.

#include "failing_new.h"
#include "store_test.h"
#include "ulodb2.h"

#include <functional>

namespace {

using testing::ElementsAre;
using testing::Not;

// The connection of the store, set by keepHandle.
sqlite3* opened = nullptr;
int keepHandle(sqlite3* database, const char**, const void*) {
  opened = database;
  return SQLITE_OK;
}

class StoreFaults : public StoreTest {
protected:
  void TearDown() override {
    allocationsLeft = allAllocationsSucceed;
    sqlite3_reset_auto_extension();
    StoreTest::TearDown();
  }

  // Two tasks in "meeting", one in no category.
  void fill() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(keepHandle));
    store();
    sqlite3_reset_auto_extension();
    for (const QString& category : {QString("meeting"), QString(), QString("meeting")}) {
      Task added = task("s", 1, 1, now());
      added.setString(Task::TASK_FIELD_CATEGORY, category);
      add(added);
    }
    reports();
  }
  // From now on the database cannot grow.
  void fillUp() {
    ASSERT_NE(opened, nullptr);
    ASSERT_EQ(sqlite3_exec(opened, "PRAGMA max_page_count = 1", nullptr, nullptr, nullptr),
              SQLITE_OK);
  }
  void makeRoom() {
    sqlite3_exec(opened, "PRAGMA max_page_count = 100000", nullptr, nullptr, nullptr);
  }
  // From now on the database refuses statements of this kind.
  void refuse(const std::string& when) {
    sql("CREATE TRIGGER refusal BEFORE " + when +
        " BEGIN SELECT RAISE(ABORT, 'refused by the test'); END");
  }

  static QString large() { return QString(100000, 'x'); }
};

// No memory for parameters.

struct Operation {
  const char* name;
  std::function<int(Store&)> run;
  // The results if there is no memory for the first, second, ... block.
  std::vector<int> codes;
  const char* line = "Db memary is full!";
};
void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.name;
}

class StoreWithoutMemory : public StoreFaults, public testing::WithParamInterface<Operation> {};

TEST_P(StoreWithoutMemory, FailsIfAnyBlockCannotBeAllocated) {
  fill();
  const auto before = everything();
  for (std::size_t block = 0; block < GetParam().codes.size(); ++block) {
    // A block takes two allocations, and either may fail.
    for (const int allocation : {0, 1}) {
      const std::string log = logOf([&] {
        allocationsLeft = 2 * static_cast<int>(block) + allocation;
        EXPECT_EQ(GetParam().run(store()), GetParam().codes[block]) << block;
        allocationsLeft = allAllocationsSucceed;
      });
      EXPECT_THAT(log, HasLine(GetParam().line));
      EXPECT_TRUE(everything() == before);
      EXPECT_THAT(reports(), ElementsAre());
    }
  }
  // With one more block the operation succeeds, so it needs no others.
  allocationsLeft = 2 * static_cast<int>(GetParam().codes.size());
  EXPECT_EQ(GetParam().run(store()), TASK_ENG_OK);
}

Task meeting() {
  Task task;
  task.setString(Task::TASK_FIELD_CATEGORY, "meeting");
  task.setUINT32(Task::TASK_FIELD_UID, 1);
  return task;
}

template <typename Run> Operation listing(const char* name, std::vector<int> codes, Run run) {
  return {name,
          [run](Store& store) {
            QValueList<Task> tasks;
            const int code = run(store, tasks);
            EXPECT_EQ(tasks.isEmpty(), code != TASK_ENG_OK);
            return code;
          },
          std::move(codes)};
}
const QDateTime due(QDate(2006, 3, 5), QTime(12, 0));

const std::vector<Operation> operations = {
    {"AddTask",
     [](Store& store) {
       Task task = meeting();
       const int code = store.addTask(task);
       EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID) != 1, code == TASK_ENG_OK);
       return code;
     },
     {TASK_ENG_MEMORY_FULL, TASK_ENG_MEMORY_FULL}},
    {"UpdateTask",
     [](Store& store) {
       Task task = meeting();
       return store.updateTask(task);
     },
     {TASK_ENG_MEMORY_FULL, TASK_ENG_MEMORY_FULL}},
    {"RemoveTask", [](Store& store) { return store.removeTask(1); }, {TASK_ENG_MEMORY_FULL}},
    {"RemoveTasks",
     [](Store& store) {
       QValueList<unsigned int> uids;
       uids.append(1);
       return store.removeTasks(uids);
     },
     {TASK_ENG_DATABASE_FAILURE},
     "Remove task with uid 1 failed!"},
    {"AddCategory",
     [](Store& store) {
       QString name("work");
       unsigned int uid = 55;
       const int code = store.addCategory(name, uid);
       EXPECT_EQ(uid != 55, code == TASK_ENG_OK);
       return code;
     },
     {TASK_ENG_DATABASE_FAILURE, TASK_ENG_MEMORY_FULL}},
    {"RenameCategory",
     [](Store& store) {
       QString name("party");
       QString other("feast");
       return store.renameCategory(name, other);
     },
     {TASK_ENG_MEMORY_FULL}},
    {"RemoveCategory",
     [](Store& store) {
       QString name("party");
       return store.removeCategory(name, false);
     },
     {TASK_ENG_MEMORY_FULL}},
    {"RemoveCategoryWithTasks",
     [](Store& store) {
       QString name("party");
       return store.removeCategory(name, true);
     },
     {TASK_ENG_MEMORY_FULL, TASK_ENG_MEMORY_FULL, TASK_ENG_MEMORY_FULL}},
    {"RemoveTasksWithCategoryId",
     [](Store& store) { return store.removeTasksWithCategoryId(3); },
     {TASK_ENG_MEMORY_FULL}},
    {"CountDue",
     [](Store& store) {
       int count = 0;
       return store.getCount(count, ZTASK_ENG_Model::TASK_CATEGORY_DUE);
     },
     {TASK_ENG_MEMORY_FULL}},
    {"CountIncomplete",
     [](Store& store) {
       int count = 0;
       return store.getCount(count, ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE);
     },
     {TASK_ENG_DATABASE_FAILURE},
     "GetTasks failed! [ret=5]"},
    {"ListDue",
     [](Store& store) {
       QValueList<unsigned int> uids;
       const int code = store.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_DUE,
                                        ZTASK_ENG_Model::TASK_SORT_DUE);
       EXPECT_EQ(uids.isEmpty(), code != TASK_ENG_OK);
       return code;
     },
     {TASK_ENG_MEMORY_FULL}},
    {"ListIncomplete",
     [](Store& store) {
       QValueList<unsigned int> uids;
       const int code = store.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE,
                                        ZTASK_ENG_Model::TASK_SORT_DUE);
       EXPECT_EQ(uids.isEmpty(), code != TASK_ENG_OK);
       return code;
     },
     {TASK_ENG_DATABASE_FAILURE},
     "GetTasks failed! [ret=5]"},
    listing("Range", {TASK_ENG_MEMORY_FULL},
            [](Store& store, QValueList<Task>& tasks) {
              return store.getTasks(tasks, Task::TASK_FIELD_DUE, 0, Task::noDateSeconds);
            }),
    listing("ByCategory", {TASK_ENG_MEMORY_FULL, TASK_ENG_MEMORY_FULL},
            [](Store& store, QValueList<Task>& tasks) {
              QString name("meeting");
              return store.getTasks(tasks, name);
            }),
    listing("Page", {TASK_ENG_MEMORY_FULL},
            [](Store& store, QValueList<Task>& tasks) {
              Task start;
              start.setUINT32(Task::TASK_FIELD_UID, 1);
              start.setPriority(1);
              start.setDateTime(Task::TASK_FIELD_DUE, due);
              return store.getTasks(tasks, start, 9, ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE,
                                    ZTASK_ENG_Model::TASK_SORT_DUE);
            }),
};

INSTANTIATE_TEST_SUITE_P(Every, StoreWithoutMemory, testing::ValuesIn(operations),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(StoreFaults, ReturnsRecordWithoutCategoryIfMemoryIsShort) {
  fill();
  Task read;
  allocationsLeft = 0;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getTask(1, read), TASK_ENG_OK); }),
              HasLine("Db memary is full!"));
  EXPECT_TRUE(read.getString(Task::TASK_FIELD_CATEGORY).isNull());
  EXPECT_EQ(read.getString(Task::TASK_FIELD_SUMMARY), QString("s"));
}

TEST_F(StoreFaults, WorksWithoutReporterIfMemoryIsShort) {
  prepare();
  allocationsLeft = 0;
  EXPECT_THAT(logOf([&] { store(); }), HasLine("<<< changeReporter new is failing"));
  allocationsLeft = allAllocationsSucceed;
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(categories().size(), 6U);
  Task stored = task("s", 1, 1, now());
  EXPECT_EQ(store().addTask(stored), TASK_ENG_OK);
  EXPECT_EQ(store().updateTask(stored), TASK_ENG_OK);
  EXPECT_EQ(store().removeTask(1), TASK_ENG_OK);
  EXPECT_EQ(store().addTask(stored), TASK_ENG_OK);
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_EQ(count(), 0);
}

// A full file.

TEST_F(StoreFaults, FullStoreRejectsTask) {
  fill();
  const auto before = everything();
  fillUp();
  Task added = task(large());
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addTask(added), TASK_ENG_MEMORY_FULL); }),
              HasLine("AddTask failed! [ret=12]"));
  EXPECT_EQ(added.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
  EXPECT_EQ(added.getString(Task::TASK_FIELD_UUID).length(), 36);
  EXPECT_TRUE(everything() == before);
  EXPECT_THAT(reports(), ElementsAre());
  // Tasks can still be read, and can be removed to make room.
  EXPECT_EQ(count(), 3);
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_EQ(count(), 0);
  makeRoom();
  EXPECT_EQ(store().addTask(added), TASK_ENG_OK);
}

TEST_F(StoreFaults, FullStoreKeepsTaskUnchanged) {
  fill();
  const Task before = get(1);
  fillUp();
  Task changed = before;
  changed.setString(Task::TASK_FIELD_NOTE, large());
  changed.setStatus(0);
  changed.setString(Task::TASK_FIELD_UUID, QString());
  const std::string log =
      logOf([&] { EXPECT_EQ(store().updateTask(changed), TASK_ENG_MEMORY_FULL); });
  EXPECT_THAT(log, HasLine("UpdateTask failed! [ret=12]"));
  EXPECT_THAT(log, HasLine("DB Memory full!"));
  EXPECT_EQ(changed.getDateTime(Task::TASK_FIELD_END), now());
  EXPECT_EQ(changed.getDateTime(Task::TASK_FIELD_REVISION), now());
  EXPECT_FALSE(changed.getString(Task::TASK_FIELD_UUID).isNull());
  EXPECT_THAT(get(1), IsSameTask(before));
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreFaults, FullStoreRejectsCategory) {
  fill();
  const auto before = everything();
  fillUp();
  QString name = large();
  unsigned int uid = 55;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addCategory(name, uid), TASK_ENG_MEMORY_FULL); }),
              HasLine("AddCategory failed! [ret=12]"));
  EXPECT_EQ(uid, 55U);
  QString party("party");
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().renameCategory(party, name), TASK_ENG_MEMORY_FULL); }),
              HasLine("RenameCategory failed! [ret=12]"));
  EXPECT_TRUE(everything() == before);
}

TEST_F(StoreFaults, StoresTaskWithoutCategoryThatDoesNotFit) {
  fill();
  fillUp();
  Task added = task("small");
  added.setString(Task::TASK_FIELD_CATEGORY, large());
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addTask(added), TASK_ENG_OK); }),
              HasLine("AddCategory failed! [ret=12]"));
  EXPECT_THAT(sql("SELECT categoryUid FROM task_table_task WHERE UID = 4"), ElementsAre("0"));
  EXPECT_EQ(get(4).getString(Task::TASK_FIELD_CATEGORY), QString("None"));
  EXPECT_THAT(reports(), ElementsAre(addition(4)));
}

TEST_F(StoreFaults, AddsNoCategoryIfTaskDoesNotFit) {
  fill();
  fillUp();
  Task added = task(large());
  added.setString(Task::TASK_FIELD_CATEGORY, "work");
  EXPECT_EQ(store().addTask(added), TASK_ENG_MEMORY_FULL);
  EXPECT_EQ(categories().back(), "party");
  EXPECT_EQ(count(), 3);
}

// A database that cannot undo a single statement ends the caller's transaction.
TEST_F(StoreFaults, ReportsFullStoreWithinTransaction) {
  fill();
  fillUp();
  Task added = task("small");
  added.setString(Task::TASK_FIELD_CATEGORY, large());
  ASSERT_EQ(DB_BeginWrite(), DB_OK);
  EXPECT_EQ(store().addTask(added), TASK_ENG_MEMORY_FULL);
  EXPECT_NE(DB_EndWrite(1), DB_OK);
  EXPECT_EQ(count(), 3);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreFaults, StaysClosedIfTablesDoNotFit) {
  sqlite3_auto_extension(
      reinterpret_cast<void (*)()>(+[](sqlite3* database, const char**, const void*) {
        return sqlite3_exec(database, "PRAGMA max_page_count = 3", nullptr, nullptr, nullptr);
      }));
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Create task table failed! [ret=6]"));
  int number = 0;
  EXPECT_EQ(store().getCount(number), TASK_ENG_NOT_OPEN);
  // Once there is room again, the store opens: no incomplete tables remain.
  close();
  sqlite3_reset_auto_extension();
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(categories().size(), 6U);
}

// Missing tables and indexes, and rows that cannot be written.

TEST_F(StoreFaults, FailsWithoutTaskTable) {
  fill();
  sql("DROP TABLE task_table_task");
  Task record = meeting();
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addTask(record), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("AddTask failed! [ret=4]"));
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getTask(1, record), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("GetTask failed! [ret=4]"));
  const std::string updating =
      logOf([&] { EXPECT_EQ(store().updateTask(record), TASK_ENG_DATABASE_FAILURE); });
  EXPECT_THAT(updating, HasLine("UpdateTask failed! [ret=4]"));
  EXPECT_THAT(updating, Not(HasLine("DB Memory full!")));
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().removeTask(1), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("RemoveTask failed! [ret=4]"));
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().removeTasksWithCategoryId(3), TASK_ENG_DATABASE_FAILURE); }),
      HasLine("RemoveAll failed! [ret=4]"));
  int number = 55;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getCount(number), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("GetCount failed! [ret=4]"));
  for (const auto category :
       {ZTASK_ENG_Model::TASK_CATEGORY_DUE, ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE}) {
    EXPECT_THAT(
        logOf([&] { EXPECT_EQ(store().getCount(number, category), TASK_ENG_DATABASE_FAILURE); }),
        HasLine("GetTasks failed! [ret=4]"));
  }
  EXPECT_EQ(number, 55);
  QValueList<unsigned int> list;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getAllIDs(list), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("GetAllIDs failed! [ret=4]"));
  const std::string removing =
      logOf([&] { EXPECT_EQ(store().removeAll(), TASK_ENG_DATABASE_FAILURE); });
  EXPECT_THAT(removing, HasLine("GetAllIDs failed! [ret=4]"));
  EXPECT_THAT(removing, HasLine("GetAllIDs failed! [ret=6]"));
  EXPECT_TRUE(list.isEmpty());
  EXPECT_THAT(reports(), ElementsAre());
  // Categories are still there.
  EXPECT_EQ(categories().size(), 6U);
}

TEST_F(StoreFaults, ListsFailWithoutTheirIndex) {
  fill();
  sql("DROP INDEX task_index_due");
  sql("DROP INDEX task_index_end");
  sql("DROP INDEX task_index_categoryId");
  QValueList<Task> tasks;
  QValueList<unsigned int> list;
  QString text("s");
  QString name("meeting");
  Task record = meeting();
  const std::pair<std::function<int()>, const char*> cases[] = {
      {[&] {
         return store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                                  ZTASK_ENG_Model::TASK_SORT_DUE);
       },
       "GetTasks failed! [ret=4]"},
      {[&] {
         return store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY_DUE,
                                  ZTASK_ENG_Model::TASK_SORT_DUE);
       },
       "GetTasks failed! [ret=4]"},
      {[&] { return store().getTasks(tasks, Task::TASK_FIELD_DUE, 0, 1); },
       "GetTasks failed! [ret=4]"},
      {[&] { return store().getTasks(tasks, Task::TASK_FIELD_END, 0, 1); },
       "GetTasks failed! [ret=4]"},
      {[&] { return store().getTasks(tasks, name); }, "GetTasks failed! [ret=4]"},
      {[&] {
         return store().getTasks(tasks, record, 1, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                                 ZTASK_ENG_Model::TASK_SORT_DUE);
       },
       "GetTasks failed! [ret=4]"},
      {[&] { return store().getMatchTasks(tasks, record); }, "GetTasks failed! [ret=6]"},
      {[&] { return store().removeTasksWithCategoryId(3); }, "RemoveAll failed! [ret=4]"},
      {[&] { return store().removeCategory(name, true); }, "RemoveAll failed! [ret=4]"},
  };
  for (const auto& one : cases)
    EXPECT_THAT(logOf([&] { EXPECT_EQ(one.first(), TASK_ENG_DATABASE_FAILURE); }),
                HasLine(one.second));
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().getMatchTasks(tasks, text), TASK_ENG_DATABASE_FAILURE); }),
      Not(HasLine("")));
  EXPECT_TRUE(tasks.isEmpty());
  EXPECT_TRUE(list.isEmpty());
  EXPECT_EQ(count(), 3);
  EXPECT_EQ(categories().size(), 6U);
  EXPECT_EQ(store().getAllIDs(list, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                              ZTASK_ENG_Model::TASK_SORT_PRIORITY),
            TASK_ENG_OK);
}

TEST_F(StoreFaults, FailsWithoutCategoryIndex) {
  fill();
  sql("DROP INDEX task_index_category");
  const auto before = everything();
  Task record = meeting();
  QString name("meeting");
  unsigned int uid = 55;
  const std::string adding =
      logOf([&] { EXPECT_EQ(store().addTask(record), TASK_ENG_DATABASE_FAILURE); });
  EXPECT_THAT(adding, HasLine("GetCategoryId failed! [ret=4]"));
  EXPECT_THAT(adding, HasLine("Get category id failed!"));
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().updateTask(record), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("Get categoryid failed![ret=6]"));
  EXPECT_EQ(store().addCategory(name, uid), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(store().removeCategory(name, true), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().removeCategory(name, false), TASK_ENG_DATABASE_FAILURE); }),
      HasLine("RemoveCategory failed! [ret=4]"));
  QValueList<Task> tasks;
  EXPECT_EQ(store().getTasks(tasks, name), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(uid, 55U);
  EXPECT_TRUE(everything() == before);
}

TEST_F(StoreFaults, ReturnsRecordsWithoutCategoryTable) {
  fill();
  sql("DROP TABLE task_table_category");
  Task record;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getTask(1, record), TASK_ENG_OK); }),
              HasLine("GetCategory failed! [ret=4]"));
  EXPECT_TRUE(record.getString(Task::TASK_FIELD_CATEGORY).isNull());
  QValueList<QString> names;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().getAllCategories(names), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("GetCategory failed! [ret=4]"));
  QString name("party");
  QString other("feast");
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().renameCategory(name, other), TASK_ENG_DATABASE_FAILURE); }),
      HasLine("RenameCategory failed! [ret=4]"));
}

TEST_F(StoreFaults, RemovesNothingIfOneRowCannotBeRemoved) {
  fill();
  refuse("DELETE ON task_table_task WHEN OLD.UID = 3");
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().removeTasksWithCategoryId(3), TASK_ENG_DATABASE_FAILURE); }),
      HasLine("RemoveAll failed! [ret=7]"));
  EXPECT_THAT(uids(), ElementsAre(1, 2, 3));
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().removeAll(), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("RemoveAll failed! [ret=7]"));
  EXPECT_THAT(uids(), ElementsAre(1, 2, 3));
  QString name("meeting");
  EXPECT_EQ(store().removeCategory(name, true), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(uids(), ElementsAre(1, 2, 3));
  EXPECT_EQ(categories().at(2), "meeting");
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().removeTask(3), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("RemoveTask failed! [ret=7]"));
  EXPECT_THAT(reports(), ElementsAre());
  // The failed removal of all tasks left no transaction open.
  EXPECT_EQ(store().removeTask(1), TASK_ENG_OK);
  close();
  EXPECT_THAT(uids(), ElementsAre(2, 3));
}

TEST_F(StoreFaults, RemovesTasksOfCategoryThatCannotBeRemoved) {
  fill();
  refuse("DELETE ON task_table_category");
  QString name("meeting");
  EXPECT_THAT(
      logOf([&] { EXPECT_EQ(store().removeCategory(name, true), TASK_ENG_DATABASE_FAILURE); }),
      HasLine("RemoveCategory failed! [ret=7]"));
  EXPECT_THAT(uids(), ElementsAre(2));
  EXPECT_EQ(categories().at(2), "meeting");
  EXPECT_THAT(reports(), testing::UnorderedElementsAre(removal(1), removal(3)));
}

TEST_F(StoreFaults, RenamesNothingIfOneRowCannotBeRenamed) {
  fill();
  sql("UPDATE task_table_category SET name = 'meeting' WHERE name = 'party'");
  refuse("UPDATE ON task_table_category WHEN OLD.UID = 6");
  QString name("meeting");
  QString other("feast");
  EXPECT_EQ(store().renameCategory(name, other), TASK_ENG_DATABASE_FAILURE);
  EXPECT_THAT(categories(),
              ElementsAre("(null)", "none", "meeting", "vacation", "appointment", "meeting"));
}

TEST_F(StoreFaults, StoresNothingIfRowCannotBeWritten) {
  fill();
  const auto before = everything();
  refuse("INSERT ON task_table_task");
  Task record = meeting();
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addTask(record), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("AddTask failed! [ret=7]"));
  sql("DROP TRIGGER refusal");
  refuse("UPDATE ON task_table_task");
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().updateTask(record), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("UpdateTask failed! [ret=7]"));
  sql("DROP TRIGGER refusal");
  refuse("INSERT ON task_table_category");
  QString name("work");
  unsigned int uid = 55;
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().addCategory(name, uid), TASK_ENG_DATABASE_FAILURE); }),
              HasLine("AddCategory failed! [ret=7]"));
  EXPECT_EQ(uid, 55U);
  EXPECT_TRUE(everything() == before);
  EXPECT_THAT(reports(), ElementsAre());
}

TEST_F(StoreFaults, StaysClosedIfNullCategoryCannotBeAdded) {
  prepare();
  sql("DELETE FROM task_table_category WHERE name IS NULL");
  refuse("INSERT ON task_table_category");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("AddCategory failed! [ret=7]"));
  EXPECT_THAT(log, HasLine("Add null category failed!! The db ret is 6"));
  EXPECT_THAT(log, HasLine("Create task table failed! [ret=6]"));
  int number = 0;
  EXPECT_EQ(store().getCount(number), TASK_ENG_NOT_OPEN);
}

}  // namespace
