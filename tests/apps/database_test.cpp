// db explain, db check and stats.

#include "ulotask_runner.h"

#include <algorithm>

namespace {

using testing::HasSubstr;

class DatabaseVerbs : public UlotaskTest {
protected:
  std::string databaseFile() { return path("data/tasks.db"); }
};

constexpr const char* walk = "sml:declare schema s (uid integer);\n"
                             "declare buffer schema s;\n"
                             "cursor $c = open_cursor('task_index_due');\n"
                             "while ($c->move_next()) {\n"
                             "buffer_put(uid, $c->get_field('UID'));\n"
                             "buffer_move_next();\n"
                             "};";

TEST_F(DatabaseVerbs, ExplainPrintsTokensTreeAndSql) {
  const std::string out = succeed({"db", "explain", walk}).out;
  EXPECT_THAT(out, HasSubstr("open_cursor"));
  EXPECT_THAT(out, HasSubstr("task_index_due"));
  EXPECT_THAT(out, HasSubstr("SELECT"));
  EXPECT_EQ(succeed({"db", "explain", file("walk.sml", walk)}).out, out);
  EXPECT_EQ(succeed({"db", "explain", "-"}, walk).out, out);
}

TEST_F(DatabaseVerbs, ExplainAcceptsStatementsAndChangesNothing) {
  add({"one"});
  const std::string out =
      succeed(
          {"db", "explain", "insert into task_table_category(name, flag) values ('%d%s', true)"})
          .out;
  EXPECT_THAT(out, HasSubstr("%d%s"));
  EXPECT_THAT(succeed({"db", "check"}).out, HasSubstr("1 task and 5 categories"));
}

TEST_F(DatabaseVerbs, ExplainReportsErrorsWithPosition) {
  const Outcome run = ulotask({"db", "explain", "sml:declare schema s (uid integer);\ncursor c;"});
  EXPECT_EQ(run.code, 13);
  EXPECT_THAT(run.out, HasSubstr("line 2, column 8"));
  EXPECT_EQ(ulotask({"db", "explain", "sml:cursor $c = open_cursor('no_such_table');"}).code, 13);
  EXPECT_EQ(ulotask({"db", "explain", "dance"}).code, 13);
}

TEST_F(DatabaseVerbs, ExplainShowsNoControlCharacter) {
  const Outcome run = ulotask({"db", "explain", "sml:\x1b[31m"});
  EXPECT_EQ(run.code, 13);
  EXPECT_THAT(run.out + run.err, testing::Not(HasSubstr("\x1b")));
}

TEST_F(DatabaseVerbs, ExplainLimitsTextLikeDatabase) {
  EXPECT_EQ(ulotask({"db", "explain", "-"}, "sml:" + std::string(70000, ' ')).code, 8);
}

TEST_F(DatabaseVerbs, CheckFindsAFreshStoreSound) {
  EXPECT_EQ(succeed({"db", "check"}).out, "database file: sound\n"
                                          "category of tasks without one: sound\n"
                                          "categories: sound\n"
                                          "default categories: sound\n"
                                          "change journal: sound\n"
                                          "0 tasks and 5 categories\n");
}

TEST_F(DatabaseVerbs, CheckFindsTheCategoryOfTasksWithoutOneTwice) {
  succeed({"list"});
  sql("INSERT INTO task_table_category(name, flag) VALUES (NULL, 1)");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("category of tasks without one: stored 2 times\n"));
  EXPECT_EQ(run.err, "ulotask: 1 defect in the store; try \"ulotask db check --repair\"\n");
}

TEST_F(DatabaseVerbs, CheckFindsADamagedFile) {
  for (int i = 0; i < 20; ++i)
    add({"task", "--note", std::string(4000, 'n')});
  sql("PRAGMA wal_checkpoint(TRUNCATE)");
  // Overwrites the last pages, which hold notes.
  std::string bytes = readWhole(databaseFile());
  std::fill(bytes.end() - 20000, bytes.end() - 4000, '\x55');
  file("data/tasks.db", bytes);
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("database file: damaged"));
}

TEST_F(DatabaseVerbs, CheckFindsADamagedJournal) {
  add({"one"});
  sql("DROP TABLE ulo_changes");
  const Outcome run = ulotask({"db", "check"});
  EXPECT_EQ(run.code, 11);
  EXPECT_THAT(run.out, HasSubstr("the table ulo_changes is missing\n"));
}

TEST_F(DatabaseVerbs, FileThatIsNotDatabaseCannotBeOpened) {
  succeed({"list"});
  file("data/tasks.db", std::string(8192, 'x'));
  EXPECT_EQ(ulotask({"db", "check"}).code, 10);
  EXPECT_EQ(ulotask({"list"}).code, 10);
}

TEST_F(DatabaseVerbs, CheckCountsTasksOfRemovedCategories) {
  add({"one", "--category", "garden"});
  add({"two", "--category", "garden"});
  add({"three"});
  sql("DELETE FROM task_table_category WHERE name = 'garden'");
  EXPECT_THAT(succeed({"db", "check"}).out,
              HasSubstr("note: 2 tasks of a category that was removed: they read as of category "
                        "None\n"));
}

TEST_F(DatabaseVerbs, TaskOfRemovedCategoryCanBeDone) {
  add({"one", "--category", "garden"});
  sql("DELETE FROM task_table_category WHERE name = 'garden'");
  EXPECT_EQ(succeed({"show", "1", "--json"}).object()["category"].toString(), "None");
  const Outcome run = ulotask({"done", "1"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "Done: task 1: one\n");
  EXPECT_EQ(run.err,
            "ulotask: the category of task 1: one is gone; the task is stored without one\n");
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  EXPECT_TRUE(task["category"].isNull());
  EXPECT_TRUE(task["completed"].toBool());
}

class Stats : public UlotaskTest {};

TEST_F(Stats, CountsViewsCategoriesAndChanges) {
  add({"due", "--due", "2026-01-05", "--category", "garden"});
  add({"done too", "--due", "2026-01-05"});
  add({"later"});
  succeed({"done", "2"});
  succeed({"edit", "3", "--status", "accepted"});
  const QJsonObject found = succeed({"stats", "--json"}).object();
  EXPECT_EQ(found["tasks"].toObject(),
            (QJsonObject{{"all", 3}, {"due", 2}, {"incomplete", 1}, {"completed", 1}}));
  EXPECT_EQ(found["categories"].toInt(), 6);
  EXPECT_EQ(found["lastChange"].toInt(), 5);
  EXPECT_EQ(found["directory"].toString().toStdString(), path("data"));
}

TEST_F(Stats, PrintsSizesOfDatabases) {
  add({"one"});
  file("data/other.txt", "not of a database");
  const QJsonObject files = succeed({"stats", "--json"}).object()["files"].toObject();
  EXPECT_EQ(files["tasks.db"].toInt(), static_cast<int>(readWhole(path("data/tasks.db")).size()));
  EXPECT_FALSE(files.contains("other.txt"));
}

TEST_F(Stats, PrintsOneLineForEach) {
  const std::string out = succeed({"stats"}).out;
  EXPECT_THAT(out, testing::StartsWith("WHAT               HOW MUCH\n"
                                       "tasks, all         0\n"
                                       "tasks, due         0\n"
                                       "tasks, incomplete  0\n"
                                       "tasks, completed   0\n"
                                       "categories         5\n"));
  EXPECT_THAT(out, testing::ContainsRegex("\ntasks\\.db +[0-9]+ bytes\n"));
  EXPECT_THAT(out, testing::EndsWith("last change        entry 0\n"));
}

TEST_F(Stats, ReportsJournalThatCannotBeRead) {
  add({"one"});
  sql("ALTER TABLE ulo_changes RENAME COLUMN entry TO away");
  const Outcome run = ulotask({"stats"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "ulotask: the change journal can't be read; the log says why\n");
}

}  // namespace
