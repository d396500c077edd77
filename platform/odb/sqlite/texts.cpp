#include "texts.h"

#include "base/sql_name.h"
#include "handle.h"
#include "journal.h"
#include "sqlite_failure.h"

namespace ulo::odb {
namespace {

constexpr const char* completeSql =
    "SELECT count(*) FROM sqlite_schema WHERE name IN ('ulo_texts', 'ulo_texts_removal')";
constexpr const char* selectSql = "SELECT text FROM ulo_texts WHERE uid = ?";
constexpr const char* removeSql = "DELETE FROM ulo_texts WHERE uid = ?";
constexpr const char* insertSql = "INSERT INTO ulo_texts (uid, text) VALUES (?, ?) "
                                  "ON CONFLICT (uid) DO UPDATE SET text = excluded.text";

std::string quotedUid() {
  return quoteName(followedTable.uidColumn);
}

std::string hasTaskSql() {
  return "SELECT 1 FROM " + quoteName(followedTable.name) + " WHERE " + quotedUid() + " = ?";
}

}  // namespace

const std::map<std::string, std::string>& textsSchema() {
  static const std::map<std::string, std::string> schema = {
      {textsTable, "CREATE TABLE ulo_texts (uid INTEGER PRIMARY KEY, text BLOB NOT NULL)"},
      {"ulo_texts_removal",
       "CREATE TRIGGER ulo_texts_removal AFTER DELETE ON " + quoteName(followedTable.name) +
           " BEGIN DELETE FROM ulo_texts WHERE uid = OLD." + quotedUid() + "; END"},
  };
  return schema;
}

bool hasTexts(sqlite3* database) {
  return numberOf(database, std::string("SELECT 1 FROM sqlite_schema WHERE name = '") + textsTable +
                                "' AND type = 'table'") != 0;
}

void createTexts(sqlite3* database) {
  for (const auto& [name, sql] : textsSchema())
    if (numberOf(database, "SELECT 1 FROM sqlite_schema WHERE name = '" + name + "'") == 0)
      execute(database, sql);
}

void dropTexts(sqlite3* database) {
  execute(database, std::string("DROP TABLE IF EXISTS ") + textsTable);
}

SqlStatement& Texts::prepared(std::unique_ptr<SqlStatement>& statement, const std::string& sql) {
  if (!statement)
    statement = std::make_unique<SqlStatement>(database_, sql);
  return *statement;
}

bool Texts::areComplete() {
  SqlStatement& count = prepared(complete_, completeSql);
  const ResetAtEnd reset(count);
  return count.step() && count.integer(0) == static_cast<std::int64_t>(textsSchema().size());
}

bool Texts::set(std::int64_t uid, std::string_view text) {
  SqlStatement& task = prepared(hasTask_, hasTaskSql());
  {
    const ResetAtEnd reset(task);
    sqlite3_bind_int64(task.handle(), 1, uid);
    if (!task.step())
      return false;
  }
  if (!areComplete()) {
    if (text.empty() && !hasTexts(database_))
      return true;
    createTexts(database_);
  }
  SqlStatement& change = text.empty() ? prepared(remove_, removeSql) : prepared(insert_, insertSql);
  const ResetAtEnd reset(change);
  sqlite3_bind_int64(change.handle(), 1, uid);
  if (!text.empty() &&
      sqlite3_bind_blob64(change.handle(), 2, text.data(), text.size(), SQLITE_STATIC) != SQLITE_OK)
    throw sqliteFailure(database_, "binding a text");
  change.run();
  return true;
}

std::optional<std::string_view> Texts::get(std::int64_t uid) {
  SqlStatement& select = prepared(select_, selectSql);
  const ResetAtEnd reset(select);
  sqlite3_bind_int64(select.handle(), 1, uid);
  if (!select.step())
    return std::nullopt;
  const void* bytes = sqlite3_column_blob(select.handle(), 0);
  const int size = sqlite3_column_bytes(select.handle(), 0);
  if (bytes == nullptr && size > 0)
    throw Failure(DB_NO_MEMORY, "no memory for a text of the database");
  text_.assign(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
  return text_;
}

}  // namespace ulo::odb
