// A text made ready to run on one database: its tree with every name resolved, and what each of
// its cursors needs of SQLite.
#pragma once

#include "catalog.h"
#include "script/ast.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// What one cursor variable does in the script, found out before it runs.
struct CursorPlan {
  Source source;
  std::vector<KeyColumn> order;   // the key, and the UID behind it unless it is in the key
  std::vector<int> fetched;       // table columns of each row; the first is the UID
  std::vector<int> orderFetched;  // where the columns of `order` stand in `fetched`, if continued
  bool finds = false;
  bool moves = false;
  bool movesInDup = false;
  bool deletes = false;
  bool updates = false;
  // The rows are listed before the walk begins: the loop changes the order that it walks in.
  bool listsFirst = false;

  // Where a table column stands in `fetched`; added when it is new.
  int fetch(int column);
};

struct Variable {
  std::string name;
  Type type = Type::nothing;
  int cursor = -1;                     // of cursors and tuples: index into Program::cursors
  bool isKey = false;                  // of tuples: a key for find, not data for update
  std::shared_ptr<const Table> table;  // of tables
};

struct Program {
  // One of the two.
  std::unique_ptr<Script> script;
  std::unique_ptr<Statement> statement;

  std::vector<Variable> variables;
  std::vector<CursorPlan> cursors;
  bool writes = false;
  // It asks SQLite more than once, and all answers have to show the same state.
  bool needsSnapshot = false;
  int arguments = 0;  // numbers of the template that it wants

  // Of an insert: the types of its columns, by the order of the statement.
  std::vector<Type> insertTypes;
};

// Reads and checks a text. Throws Failure.
std::unique_ptr<Program> makeProgram(std::string_view text, const Catalog& catalog);

// The SQL of a cursor. In all of them the columns of a row are those of `fetched`.
// All rows in order.
std::string walkSql(const CursorPlan& plan);
// Rows whose columns of the key equal the parameters, in order; `positions` are places in the
// key.
std::string findSql(const CursorPlan& plan, const std::vector<int>& positions);
// Rows behind a position: the first `level` columns of the order equal the parameters, and the
// next one lies behind its parameter, is not null, or is null.
enum class Behind { value, notNull, null };
std::string behindSql(const CursorPlan& plan, int level, Behind behind);
// The row of a UID.
std::string rowSql(const CursorPlan& plan);
std::string deleteSql(const CursorPlan& plan);
// Sets table columns to the parameters; the UID is the parameter behind them.
std::string updateSql(const CursorPlan& plan, const std::vector<int>& columns);
std::string insertSql(const Program& program);
std::string countSql(const Table& table);

}  // namespace ulo::odb
