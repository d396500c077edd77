// The tables of a database, read from the SQL that created them.

#include "base/catalog_sql.h"
#include "sqlite/schema.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <sqlite3.h>

namespace {

using ulo::odb::Catalog;
using ulo::odb::catalogFromSql;
using ulo::odb::Source;
using ulo::odb::Table;

// Describes what a cursor on a table or an index reads.
std::string described(const Catalog& catalog, const std::string& name) {
  const Source source = catalog.source(name);
  if (source.table == nullptr)
    return name + ": nothing";
  const Table& table = *source.table;
  std::string text = name + ": " + table.name + " by";
  for (const auto& part : source.key)
    text += " " + table.columns[static_cast<std::size_t>(part.column)].name +
            (part.descending ? " desc" : "");
  text += ", columns";
  for (const auto& column : table.columns)
    text += " " + column.name + " " + typeName(column.type);
  return text;
}

class CatalogSql : public testing::Test {
protected:
  void SetUp() override { ASSERT_EQ(DB_Open(1), DB_OK); }
  void TearDown() override {
    sqlite3_close(database_);
    DB_Close();
  }

  sqlite3* database() {
    if (database_ == nullptr)
      sqlite3_open((directory_.path() / "tasks.db").c_str(), &database_);
    return database_;
  }
  // Expects that the SQL is read, and describes the same tables as SQLite does.
  void expectRead(const std::vector<std::string>& names) {
    const auto fromSql = catalogFromSql(ulo::odb::schemaStatements(database()));
    ASSERT_TRUE(fromSql);
    const Catalog fromSqlite = ulo::odb::readCatalog(database());
    for (const std::string& name : names) {
      EXPECT_EQ(described(*fromSql, name), described(fromSqlite, name));
      EXPECT_THAT(described(*fromSql, name), testing::Not(testing::HasSubstr("nothing")));
    }
    for (const char* reserved : {"ulo_changes", "ulo_journal", "sqlite_sequence"})
      EXPECT_EQ(described(*fromSql, reserved), described(fromSqlite, reserved));
  }

  DataDirectory directory_;
  sqlite3* database_ = nullptr;
};

TEST_F(CatalogSql, ReadsTablesOfStore) {
  createTaskTables();
  expectRead({"task_table_task", "task_index_priority", "task_index_due", "task_index_alarm",
              "task_index_categoryId", "task_index_end", "task_table_category",
              "task_index_category"});
}

TEST_F(CatalogSql, ReadsAllTypesAndUidInAnyColumn) {
  ASSERT_EQ(
      DB_Exec("create table t (name varchar, end unicode, f bool, n integer auto, m integer)"),
      DB_OK);
  ASSERT_EQ(DB_Exec("create index i on t (end desc, n, f desc)"), DB_OK);
  expectRead({"t", "i"});
}

TEST_F(CatalogSql, ReadsRenamedTable) {
  ASSERT_EQ(DB_Exec("create table t (n integer auto, m integer)"), DB_OK);
  ASSERT_EQ(DB_Exec("create index i on t (m)"), DB_OK);
  for (const char* sql : {"ALTER TABLE t RENAME TO \"a \"\"b\"\", (c)\"",
                          "ALTER TABLE \"a \"\"b\"\", (c)\" RENAME COLUMN m TO \"m, k)\""})
    ASSERT_EQ(sqlite3_exec(database(), sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  expectRead({"a \"b\", (c)", "i"});
}

// SQLite describes these.
TEST(CatalogSqlText, LeavesOtherFormsToSqlite) {
  const std::string table =
      "CREATE TABLE \"t\" (\"n\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"n\" <= 2147483647), "
      "\"m\" INTEGER)";
  ASSERT_TRUE(catalogFromSql({table, "CREATE INDEX \"i\" ON \"t\" (\"m\")"}));
  EXPECT_TRUE(catalogFromSql({table, "CREATE TRIGGER x", "CREATE TABLE ulo_x (y)"}));
  for (const char* other :
       {"CREATE INDEX \"i\" ON \"t\" (\"M\")",
        "CREATE INDEX \"i\" ON \"T\" (\"m\")",
        "CREATE INDEX \"i\" ON \"t\" (\"m\") WHERE \"m\" > 1",
        "CREATE INDEX i ON t (m)",
        "CREATE INDEX \"i\" ON \"t\" (\"m\" COLLATE NOCASE)",
        "CREATE INDEX \"i\" ON \"t\" (",
        "CREATE UNIQUE INDEX \"i\" ON \"t\" (\"m\")",
        "CREATE VIEW v AS SELECT 1",
        "CREATE VIRTUAL TABLE v USING fts5(x)",
        "CREATE TABLE \"ulo_x\" (\"y\" INTEGER)",
        "CREATE TABLE ul (x)",
        "CREATE TABLE u",
        "CREATE TABLE \"u\" (\"x\" INTEGER)",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY)",
        "CREATE TABLE \"u",
        "CREATE TABLE ",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"x\" <= 2147483647)",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"x\" <= 2147483647), "
        "\"y\" TEXT)",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"x\" <= 2147483647), "
        "\"y\" INTEGER DEFAULT 1)",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"x\" <= 2147483647), "
        "\"y\" INTEGER) STRICT",
        "CREATE TABLE \"u\" (\"x\" INTEGER PRIMARY KEY AUTOINCREMENT CHECK (\"y\" <= 2147483647))",
        ""})
    EXPECT_FALSE(catalogFromSql({table, other})) << other;
}

}  // namespace
