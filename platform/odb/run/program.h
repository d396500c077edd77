// A text made ready to run on one database: its tree with every name resolved, and what each of
// its cursors needs of SQLite.
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
  Op op;              // with the column on the left
  const Node* value;  // a parameter, a number of the template, a number or a bool
};

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
  // All that it does is to go through all rows and delete them.
  bool empties = false;
  // The rows are listed before the walk begins: the loop changes the order that it walks in.
  bool listsFirst = false;
  // What its loop asks of each row, when the loop does nothing with the others: SQLite may as well
  // leave those out.
  std::vector<Condition> filter;

  // Where a table column stands in `fetched`; added when it is new.
  int fetch(int column);
};

// A column of the buffer that is filled from a cursor's row or with the same value each time.
struct Copy {
  int target;                      // column of the buffer
  int place = -1;                  // in the cursor's row
  const Node* constant = nullptr;  // a literal, when it is not from the row
};

// A whole row put into the buffer by the first statements of a block: puts of different columns,
// from one cursor's row or literals, and the end of the row.
struct RowCopy {
  int cursor = -1;  // slot of the cursor; -1 when there are only literals
  std::vector<Copy> copies;
  std::size_t statements = 0;  // that it stands for
};

// A loop that does more than to run its block over and over.
struct LoopPlan {
  enum class Kind {
    whole,   // while ($c->move_next()) {..}: goes through all rows from the first
    onward,  // while (..) { if (..) {..} $t = $c->move_next(); }: goes on from where it stands
  } kind = Kind::whole;
  int cursor = 0;               // slot of the cursor
  const Node* block = nullptr;  // whole: what is done with each row that passes the filter
  int found = -1;               // onward: slot of the variable that move_next sets
  int counter = -1;             // whole: slot of the variable, when all it does is to count rows
  bool onlyCopies = false;      // whole: when all it does is the block's row copy
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
  std::vector<LoopPlan> loops;
  std::vector<RowCopy> rowCopies;
  bool writes = false;
  // It asks SQLite more than once, and all answers have to show the same state.
  bool needsSnapshot = false;
  int arguments = 0;  // numbers of the template that it wants

  [[nodiscard]] bool removes() const {
    return std::any_of(cursors.begin(), cursors.end(),
                       [](const CursorPlan& cursor) { return cursor.deletes; });
  }

  // Of an insert: the types of its columns, by the order of the statement.
  std::vector<Type> insertTypes;
};

// Reads and checks a text. Throws Failure.
std::unique_ptr<Program> makeProgram(std::string_view text, const Catalog& catalog);

// Finds the blocks that put a whole row out, the loops whose conditions SQLite can check, and what
// these do; of programs that write only the one that empties a table. Requires a program that has
// been checked.
void planLoops(Program& program);

// The SQL of a cursor. In all of them the columns of a row are those of `fetched`.
// All rows in order.
std::string walkSql(const CursorPlan& plan);
// The rows that pass the plan's filter, in order, all of which will be read; the parameters are
// the values of the filter.
std::string filteredWalkSql(const CursorPlan& plan);
// Their number.
std::string filteredCountSql(const CursorPlan& plan);
// Rows whose `columns`, which are of the key, equal the parameters, in order; the parameters come
// in the order of the key.
std::string findSql(const CursorPlan& plan, const std::vector<int>& columns);
// Rows behind a position: the first `level` columns of the order equal the parameters, and the
// next one lies behind its parameter, is not null, or is null. With the filter's values as further
// parameters when `filtered`.
enum class Behind { value, notNull, null };
std::string behindSql(const CursorPlan& plan, int level, Behind behind, bool filtered = false);
// The row of a UID.
std::string rowSql(const CursorPlan& plan);
std::string deleteSql(const CursorPlan& plan);
// Of all rows.
std::string deleteAllSql(const CursorPlan& plan);
// Sets table columns to the parameters; the UID is the parameter behind them.
std::string updateSql(const CursorPlan& plan, const std::vector<int>& columns);
std::string insertSql(const Program& program);
std::string countSql(const Table& table);

}  // namespace ulo::odb
