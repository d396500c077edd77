// Opening the store: its tables, their first rows, and the directory for files.

#include "store_test.h"

#include <QDir>

#include <fstream>

namespace {

using testing::ElementsAre;
using testing::Not;

const std::vector<std::string> firstCategories = {"(null)",   "none",        "meeting",
                                                  "vacation", "appointment", "party"};

TEST_F(StoreTest, CreatesTablesAndSixCategoriesInNewDatabase) {
  const std::string log = logOf([&] { store(); });
  EXPECT_EQ(log, line("After opening task_eng_port") + line("After opening task_ui_port") +
                     line("DB task_table_task table is not exit!Creating task table...") +
                     line("DB task_table_category table is not exit!Creating event table..."));
  EXPECT_EQ(categories(), firstCategories);
  EXPECT_EQ(count(), 0);
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE type = 'index' AND tbl_name = "
                  "'task_table_task' AND name LIKE 'task%' ORDER BY name"),
              ElementsAre("task_index_alarm", "task_index_categoryId", "task_index_due",
                          "task_index_end", "task_index_priority"));
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE type = 'index' AND tbl_name = "
                  "'task_table_category' AND name LIKE 'task%'"),
              ElementsAre("task_index_category"));
  EXPECT_THAT(
      sql("SELECT name, flag FROM task_table_category ORDER BY UID"),
      ElementsAre("null|1", "none|1", "meeting|1", "vacation|1", "appointment|1", "party|1"));
}

TEST_F(StoreTest, LeavesCompleteDatabaseUnchanged) {
  add(task("kept"));
  close();
  const auto before = sql("SELECT UID, name, flag FROM task_table_category");
  const std::string log = logOf([&] { store(); });
  EXPECT_EQ(log, line("After opening task_eng_port") + line("After opening task_ui_port") +
                     line("OK, DB task_table_task table do exit!") +
                     line("OK, DB task_table_category table do exit!Checking records in category "
                          "table...") +
                     line("Checking complete, The record in category table is 6") +
                     line("OK! the null category exists!!"));
  EXPECT_EQ(sql("SELECT UID, name, flag FROM task_table_category"), before);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(logOf([&] { close(); }),
            line("Before closing task_eng_port") + line("Before closing task_ui_port"));
}

TEST_F(StoreTest, AddsMissingNullCategory) {
  prepare();
  sql("DELETE FROM task_table_category WHERE name IS NULL");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("Checking complete, The record in category table is 5"));
  EXPECT_THAT(log, HasLine("The category  is not exist!"));
  EXPECT_THAT(log, HasLine("the category is null"));
  EXPECT_THAT(log, Not(HasLine("Attention Please")));
  EXPECT_THAT(sql("SELECT flag FROM task_table_category WHERE name IS NULL"), ElementsAre("0"));
  EXPECT_THAT(categories(),
              ElementsAre("none", "meeting", "vacation", "appointment", "party", "(null)"));
}

TEST_F(StoreTest, AddsNullCategoryToEmptyTable) {
  prepare();
  sql("DELETE FROM task_table_category");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("The category table is empty!"));
  EXPECT_THAT(log, HasLine("Checking complete, The record in category table is 0"));
  EXPECT_THAT(log, HasLine("Attention Please, No record in category table!!!"));
  EXPECT_THAT(log, HasLine("We have to add 'null' category to make calendar work!"));
  EXPECT_THAT(categories(), ElementsAre("(null)"));
  // UIDs are not reused.
  EXPECT_THAT(sql("SELECT UID > 6 FROM task_table_category"), ElementsAre("1"));
}

TEST_F(StoreTest, CreatesSingleMissingTable) {
  const unsigned int uid = add(task("kept"));
  close();
  sql("DROP TABLE task_table_category");
  EXPECT_THAT(logOf([&] { store(); }), HasLine("OK, DB task_table_task table do exit!"));
  EXPECT_EQ(categories(), firstCategories);
  EXPECT_EQ(code(uid), TASK_ENG_OK);
  addCategory("work");
  close();
  sql("DROP TABLE task_table_task");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("DB task_table_task table is not exit!Creating task table..."));
  EXPECT_THAT(log, HasLine("Checking complete, The record in category table is 7"));
  EXPECT_EQ(count(), 0);
}

// An index cannot be created if its name is taken.

TEST_F(StoreTest, StaysClosedIfIndexCannotBeCreated) {
  prepare();
  sql("DROP TABLE task_table_task");
  sql("CREATE INDEX task_index_alarm ON task_table_category (flag)");
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Create task table failed! [ret=6]"));
  int number = 55;
  EXPECT_EQ(store().getCount(number), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(number, 55);
  // No part of the task table remains.
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE tbl_name = 'task_table_task'"),
              ElementsAre());
}

TEST_F(StoreTest, OpensIfOnlyTaskTableCannotBeCreated) {
  prepare();
  sql("DROP TABLE task_table_task");
  sql("DROP TABLE task_table_category");
  sql("CREATE TABLE other (UID INTEGER PRIMARY KEY AUTOINCREMENT, x)");
  sql("INSERT INTO other (x) VALUES (1)");  // a database without rows would be replaced
  sql("CREATE INDEX task_index_alarm ON other (x)");
  EXPECT_THAT(logOf([&] { store(); }), Not(HasLine("Create task table failed!")));
  EXPECT_EQ(categories(), firstCategories);
  int number = 55;
  EXPECT_EQ(store().getCount(number), TASK_ENG_DATABASE_FAILURE);
}

TEST_F(StoreTest, StaysClosedIfCategoryIndexCannotBeCreated) {
  prepare();
  sql("INSERT INTO task_table_task (priority) VALUES (1)");
  sql("DROP TABLE task_table_category");
  sql("CREATE INDEX task_index_category ON task_table_task (status)");
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Create task table failed! [ret=6]"));
  EXPECT_THAT(sql("SELECT name FROM sqlite_schema WHERE name = 'task_table_category'"),
              ElementsAre());
}

TEST_F(StoreTest, StaysClosedIfNullCategoryCannotBeInserted) {
  prepare();
  sql("DROP TABLE task_table_category");
  // All UIDs of the new table are used up.
  sql("INSERT INTO sqlite_sequence VALUES ('task_table_category', 9223372036854775807)");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("Insert null category failed!! The ret is"));
  EXPECT_THAT(log, HasLine("Create task table failed! [ret=6]"));
  EXPECT_THAT(sql("SELECT count(*) FROM task_table_category"), ElementsAre("0"));
}

void expectClosed(Store& store) {
  Task task;
  int number = 55;
  QValueList<QString> names;
  EXPECT_EQ(store.addTask(task), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getTask(1, task), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getCount(number), TASK_ENG_NOT_OPEN);
  EXPECT_EQ(store.getAllCategories(names), TASK_ENG_NOT_OPEN);
  // These two functions do not check whether the store is open.
  QValueList<Task> tasks;
  QString name("none");
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, 0, 1), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(store.getTasks(tasks, Task::TASK_FIELD_DUE, 1, 0), TASK_ENG_BAD_PARAMETER);
  EXPECT_EQ(store.getTasks(tasks, name), TASK_ENG_DATABASE_FAILURE);
  EXPECT_EQ(number, 55);
  EXPECT_TRUE(tasks.isEmpty());
}

TEST_F(StoreTest, StaysClosedIfFileIsNotDatabase) {
  std::ofstream(directory_.path() / "tasks.db") << std::string(8192, 'x');
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Open db failed! [ret=11]"));
  expectClosed(store());
}

TEST_F(StoreTest, StaysClosedIfFileIsDirectory) {
  std::filesystem::create_directory(directory_.path() / "tasks.db");
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Open db failed! [ret="));
  expectClosed(store());
}

TEST_F(StoreTest, StaysClosedWithoutDataDirectory) {
  const std::string file = (directory_.path() / "file").string();
  std::ofstream(file) << "x";
  setenv("ULO_DATA_DIR", file.c_str(), 1);
  EXPECT_THAT(logOf([&] { store(); }), HasLine("Open db failed! [ret=9]"));
  expectClosed(store());
  close();
  // A store that is created later opens.
  setenv("ULO_DATA_DIR", directory_.path().c_str(), 1);
  EXPECT_EQ(count(), 0);
}

TEST_F(StoreTest, StaysClosedIfCategoriesCannotBeRead) {
  prepare();
  sql("ALTER TABLE task_table_category RENAME COLUMN name TO title");
  const std::string log = logOf([&] { store(); });
  EXPECT_THAT(log, HasLine("GetCategory failed! [ret="));
  EXPECT_THAT(log, HasLine("Get all categories failed when initialise db."));
  EXPECT_THAT(log, HasLine("Create task table failed! [ret=6]"));
}

TEST_F(StoreTest, TwoStoresInOneThreadCloseInAnyOrder) {
  auto first = std::make_unique<Store>();
  auto second = std::make_unique<Store>();
  first.reset();
  Task task;
  EXPECT_EQ(second->addTask(task), TASK_ENG_OK);
}

// The directory for files.

class TaskWritePath : public StoreTest {
protected:
  ~TaskWritePath() override { unsetenv("ULO_APP_WRITE_PATH"); }
  void writePath(const std::filesystem::path& path) {
    setenv("ULO_APP_WRITE_PATH", path.c_str(), 1);
  }
  TemporaryDirectory place_;
};

TEST_F(TaskWritePath, IsCreatedOnFirstUse) {
  writePath(place_.path());
  const QString expected = QString::fromStdString((place_.path() / "tasks").string());
  for (int round = 0; round < 2; ++round) {
    QString path;
    EXPECT_TRUE(store().getTaskWritePath(path));
    EXPECT_EQ(path, expected);
    EXPECT_TRUE(std::filesystem::is_directory(place_.path() / "tasks"));
  }
  const auto entries = std::filesystem::directory_iterator(place_.path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST_F(TaskWritePath, AcceptsNonAsciiName) {
  const auto place = place_.path() / "Aufgäben 任务";
  std::filesystem::create_directory(place);
  writePath(place);
  QString path;
  EXPECT_TRUE(store().getTaskWritePath(path));
  EXPECT_EQ(path.toStdString(), (place / "tasks").string());
}

TEST_F(TaskWritePath, FailsIfDirectoryCannotBeCreated) {
  std::ofstream(place_.path() / "tasks") << "a file";
  QString path("as it was");
  for (const auto& place : {place_.path(), place_.path() / "missing"}) {
    writePath(place);
    EXPECT_EQ(logOf([&] {
                EXPECT_FALSE(store().getTaskWritePath(path));
              }).rfind(line("Make dir tasks failed!!!")) == std::string::npos,
              false);
    EXPECT_EQ(path, QString("as it was"));
  }
}

TEST_F(TaskWritePath, WorksOnClosedStore) {
  std::ofstream(directory_.path() / "tasks.db") << std::string(8192, 'x');
  writePath(place_.path());
  QString path;
  EXPECT_TRUE(store().getTaskWritePath(path));
}

}  // namespace
