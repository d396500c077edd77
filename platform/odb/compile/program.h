// A text compiled for a database: its tree with all names resolved, and the SQLite access that each
// of its cursors needs.
#pragma once

#include "base/catalog.h"
#include "plan.h"
#include "script/ast.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

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

}  // namespace ulo::odb
