// How the cursors and loops of a script access SQLite.
#pragma once

#include "base/catalog.h"
#include "script/ast.h"

#include <cstddef>
#include <vector>

namespace ulo::odb {

// A condition on a row. A column is compared with a value that is the same for all rows, or
// contains it; or all or some of several conditions are true.
struct Condition {
  Op op;            // a comparison with the column on its left, or contains; or logicalAnd or
                    // logicalOr of the parts
  int column = -1;  // of the table
  const Node* value = nullptr;  // a parameter, a template number or a literal
  std::vector<Condition> parts = {};
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
  // The loop's conditions, all of which must be true, if the loop ignores all other rows; SQLite
  // may then skip them.
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

}  // namespace ulo::odb
