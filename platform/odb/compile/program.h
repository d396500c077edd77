// A text compiled for a database: its tree with all names resolved, and the SQLite access that each
// of its cursors needs.
#pragma once

#include "catalog.h"
#include "script/ast.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// A comparison of a column with a value that is the same for all rows.
struct Condition {
  int column;         // of the table
  Op op;              // operator, with the column on the left
  const Node* value;  // a parameter, a template number, a number or a bool
};

// How a script uses one cursor variable, determined before it runs.
struct CursorPlan {
  Source source;
  std::vector<KeyColumn> order;   // the key, followed by the UID unless it is in the key
  std::vector<int> fetched;       // table columns read for each row; the first is the UID
  std::vector<int> orderFetched;  // indexes of the columns of `order` in `fetched`, if continued
  bool finds = false;
  bool moves = false;
  bool movesInDup = false;
  bool deletes = false;
  bool updates = false;
  // The script only walks all rows and deletes them.
  bool empties = false;
  // The rows are listed before the walk begins, because the loop changes the order in which it
  // walks.
  bool listsFirst = false;
  // The loop's condition on each row, if the loop ignores all other rows; SQLite may then skip
  // them.
  std::vector<Condition> filter;

  // Returns the index of a table column in `fetched`, adding it if necessary.
  int fetch(int column);
};

// A column of the buffer that is filled from a cursor's row or with a constant.
struct Copy {
  int target;                      // column of the buffer
  int place = -1;                  // index in the cursor's row
  const Node* constant = nullptr;  // a literal, if the value is not from the row
};

// A complete row put into the buffer by the first statements of a block: puts into different
// columns, from one cursor's row or literals, and the end of the row.
struct RowCopy {
  int cursor = -1;  // slot of the cursor; -1 if there are only literals
  std::vector<Copy> copies;
  std::size_t statements = 0;  // number of statements it replaces
};

// A loop that is not run by simply repeating its block.
struct LoopPlan {
  enum class Kind {
    whole,   // while ($c->move_next()) {..}: walks all rows from the first
    onward,  // while (..) { if (..) {..} $t = $c->move_next(); }: continues from the current row
  } kind = Kind::whole;
  int cursor = 0;               // slot of the cursor
  const Node* block = nullptr;  // whole: executed for each row that matches the filter
  int found = -1;               // onward: slot of the variable set by move_next
  int counter = -1;         // whole: slot of the counter variable, if the block only counts rows
  bool onlyCopies = false;  // whole: the block only performs its row copy
};

struct Variable {
  std::string name;
  Type type = Type::nothing;
  int cursor = -1;                     // of cursors and tuples: index into Program::cursors
  bool isKey = false;                  // of tuples: a key for find, not data for update
  std::shared_ptr<const Table> table;  // of tables
};

struct Program {
  // Exactly one of the two is set.
  std::unique_ptr<Script> script;
  std::unique_ptr<Statement> statement;

  std::vector<Variable> variables;
  std::vector<CursorPlan> cursors;
  std::vector<LoopPlan> loops;
  std::vector<RowCopy> rowCopies;
  bool writes = false;
  // The text queries SQLite more than once, and all results must show the same state.
  bool needsSnapshot = false;
  int arguments = 0;  // number of template numbers required

  [[nodiscard]] bool removes() const {
    return std::any_of(cursors.begin(), cursors.end(),
                       [](const CursorPlan& cursor) { return cursor.deletes; });
  }

  // Of an insert: the types of its columns, in statement order.
  std::vector<Type> insertTypes;
};

// Parses and checks a text. Throws Failure.
std::unique_ptr<Program> makeProgram(std::string_view text, const Catalog& catalog);

// Finds the blocks that output a complete row, the loops whose conditions SQLite can check, and
// what those do. In a program that writes, finds only a loop that empties a table. Requires a
// checked program.
void planLoops(Program& program);

// The SQL of a cursor. All of these statements select the columns in `fetched`.

// All rows in order.
std::string walkSql(const CursorPlan& plan);
// The rows that match the plan's filter, in order; all of them will be read. The parameters are the
// filter operands.
std::string filteredWalkSql(const CursorPlan& plan);
// The number of rows that match the filter.
std::string filteredCountSql(const CursorPlan& plan);
// The rows whose `columns`, which belong to the key, equal the parameters, in order. The parameters
// are in key order.
std::string findSql(const CursorPlan& plan, const std::vector<int>& columns);
// The rows after a position: the first `level` columns of the order equal the parameters, and the
// next column is after its parameter, is not null, or is null. If `filtered`, the filter operands
// are further parameters.
enum class Behind { value, notNull, null };
std::string behindSql(const CursorPlan& plan, int level, Behind behind, bool filtered = false);
// The row with a UID.
std::string rowSql(const CursorPlan& plan);
std::string deleteSql(const CursorPlan& plan);
// Deletes all rows.
std::string deleteAllSql(const CursorPlan& plan);
// Sets table columns to the parameters; the UID is the last parameter.
std::string updateSql(const CursorPlan& plan, const std::vector<int>& columns);
std::string insertSql(const Program& program);
std::string countSql(const Table& table);

}  // namespace ulo::odb
