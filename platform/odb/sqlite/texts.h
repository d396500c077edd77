// The texts that tasks came with, in the database file.
#pragma once

#include "statement.h"

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ulo::odb {

// The table of the texts. It is created with the first text, so a database without texts has the
// same schema as one of an older version. While it exists, a trigger removes the text of each task
// that is removed, by whichever program.
inline constexpr char textsTable[] = "ulo_texts";

// The SQL of the table and its trigger by their names, as SQLite's schema contains it.
const std::map<std::string, std::string>& textsSchema();

// Returns true if the table exists. Throws Failure.
bool hasTexts(sqlite3* database);

// Creates whichever of the table and its trigger is missing. Requires a transaction. Throws
// Failure.
void createTexts(sqlite3* database);

// Drops the table, because the task table is new. Throws Failure.
void dropTexts(sqlite3* database);

// The texts of one connection. Must be destroyed before it. All operations throw Failure.
class Texts {
public:
  explicit Texts(sqlite3* database) : database_(database) {}

  // Sets the text of a task; an empty text removes it. Returns false if the task is not stored.
  // Requires a transaction.
  bool set(std::int64_t uid, std::string_view text);
  // Returns true if there is a table of texts.
  [[nodiscard]] bool exist() const { return select_ != nullptr || hasTexts(database_); }
  // Returns the text of a task. It is valid until the next operation of this object. Requires: the
  // table exists.
  std::optional<std::string_view> get(std::int64_t uid);

private:
  SqlStatement& prepared(std::unique_ptr<SqlStatement>& statement, const std::string& sql);
  [[nodiscard]] bool areComplete();

  sqlite3* database_;
  std::string text_;
  std::unique_ptr<SqlStatement> complete_;
  std::unique_ptr<SqlStatement> hasTask_;
  std::unique_ptr<SqlStatement> select_;
  std::unique_ptr<SqlStatement> insert_;
  std::unique_ptr<SqlStatement> remove_;
};

}  // namespace ulo::odb
