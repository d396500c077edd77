// The syntax tree of a text. The parser builds it; the checker adds the meaning of names.
#pragma once

#include "base/failure.h"
#include "base/type.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ulo::odb {

enum class Op {
  // values
  integer,
  boolean,
  text,
  parameter,
  argument,
  variable,
  // operators
  negate,
  logicalNot,
  add,
  subtract,
  equal,
  notEqual,
  less,
  lessEqual,
  greater,
  greaterEqual,
  logicalAnd,
  logicalOr,
  // operations; see `operations` in operations.h
  openCursor,
  openTable,
  tableExists,
  nullVarchar,
  contains,
  newKey,
  dataTuple,
  find,
  moveNext,
  moveNextInDup,
  getField,
  deleteRow,
  updateRow,
  recordNumber,
  setField,
  bufferPut,
  bufferMoveNext,
  setSessionTag,
  // statements
  block,
  declareVariable,
  assign,
  conditional,
  loop,
};

const char* opName(Op op);

struct Node;
using NodePtr = std::unique_ptr<Node>;

// Contents of each kind of node:
//   values           number or text
//   variable         text is the name
//   operators        their operands
//   operations       operand 0 is the target variable (if any), the others are the arguments; the
//                    name or number of a field is in text or number
//   declareVariable  text is the name, type its type, operand 0 the initial value
//   assign           text is the name, operand 0 the value
//   conditional      condition, then-block, and the else-block or nothing
//   loop             condition, block
struct Node {
  Node(Op kind, Position place) : op(kind), at(place) {}

  Op op;
  Position at;
  Type type = Type::nothing;  // of the node's value
  std::int64_t number = 0;
  std::string text;
  bool fieldByNumber =
      false;  // setField: by the position in `number` instead of the name in `text`
  std::vector<NodePtr> operands;

  // Set by the checker.
  int slot = -1;    // of the variable that the node reads, sets or operates on
  int column = -1;  // getField: index in the cursor's row; bufferPut: buffer column; setField:
                    // column of the table
  int plan = -1;    // loop: index of its loop plan, if any; block: index of its row copy, if any
};

struct ColumnDeclaration {
  std::string name;
  Type type = Type::integer;
  Position at;
};

// A script.
struct Script {
  std::vector<ColumnDeclaration> buffer;  // of the schema named by `declare buffer`; else empty
  NodePtr body;                           // a block
};

// A statement of the SQL-like language.
struct TableColumn : ColumnDeclaration {
  bool automatic = false;  // numbered by the database
};
struct IndexColumn {
  std::string name;
  bool descending = false;
  Position at;
};
struct Statement {
  enum class Kind { createTable, createIndex, insert } kind = Kind::insert;
  std::string table;
  Position tableAt;
  std::vector<TableColumn> columns;       // createTable; insert: their names
  std::vector<ColumnDeclaration> unique;  // createTable: names of the unique key
  std::string index;                      // createIndex
  std::vector<IndexColumn> indexColumns;  // createIndex
  std::vector<NodePtr> values;            // insert
  bool returnUid = false;                 // insert
};

}  // namespace ulo::odb
