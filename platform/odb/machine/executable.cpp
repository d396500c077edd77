#include "executable.h"

#include "base/failure.h"
#include "compile/cursor_sql.h"
#include "compile/statement_sql.h"
#include "sqlite/binding.h"
#include "sqlite/journal.h"
#include "sqlite/schema.h"
#include "sqlite/texts.h"

namespace ulo::odb {

bool pushDownEnabled = true;
int loopPassLimit = DB_MAX_LOOP_PASSES;

namespace {

// Closes all cursors at the end of a run, because an unfinished SELECT would keep its transaction
// open.
class CloseCursors {
public:
  explicit CloseCursors(std::vector<std::unique_ptr<Cursor>>& cursors) : cursors_(cursors) {}
  CloseCursors(const CloseCursors&) = delete;
  CloseCursors& operator=(const CloseCursors&) = delete;
  ~CloseCursors() {
    for (const auto& cursor : cursors_)
      cursor->close();
  }

private:
  std::vector<std::unique_ptr<Cursor>>& cursors_;
};

}  // namespace

Executable::Executable(sqlite3* database, std::shared_ptr<const Program> program)
    : database_(database), program_(std::move(program)), slots_(program_->variables.size()) {
  for (const CursorPlan& plan : program_->cursors)
    cursors_.push_back(std::make_unique<Cursor>(database, plan));
  for (std::size_t i = 0; i < slots_.size(); ++i)
    if (const int cursor = program_->variables[i].cursor; cursor >= 0)
      slots_[i].cursor = cursors_[static_cast<std::size_t>(cursor)].get();
}

void Executable::run(Run& run) {
  if (program_->arguments > static_cast<int>(run.arguments.size()))
    throw Failure(DB_BAD_PARAMETER, "the text wants " + std::to_string(program_->arguments) +
                                        " numbers of a template, there are " +
                                        std::to_string(run.arguments.size()));
  run_ = &run;
  loopPasses_ = 0;
  const CloseCursors closing(cursors_);
  if (program_->script)
    execute(*program_->script->body);
  else if (program_->statement->kind == Statement::Kind::insert)
    runInsert(run);
  else
    runCreate(*program_->statement);
}

void Executable::runCreate(const Statement& statement) {
  const bool isTable = statement.kind == Statement::Kind::createTable;
  SqlStatement(database_, isTable ? createTableSql(statement) : createIndexSql(statement)).run();
  if (isTable && isFollowed(statement.table)) {
    dropTexts(database_);
    beginJournal(database_);
  }
}

void Executable::runInsert(Run& run) {
  if (!insert_)
    insert_ = std::make_unique<SqlStatement>(database_, insertSql(*program_->statement));
  const Statement& statement = *program_->statement;
  const ResetAtEnd reset(*insert_);
  for (std::size_t i = 0; i < statement.values.size(); ++i)
    try {
      bind(*insert_, static_cast<int>(i) + 1, evaluate(*statement.values[i]),
           program_->insertTypes[i]);
    } catch (const Failure& failure) {
      throw failure.at(statement.values[i]->at);
    }
  insert_->run();
  if (statement.returnUid)
    run.tag = static_cast<int>(sqlite3_last_insert_rowid(database_));
}

void Executable::execute(const Node& node) {
  switch (node.op) {
  case Op::block:
    executeBlock(node);
    break;
  case Op::declareVariable:
    declare(node);
    break;
  case Op::assign:
    slotOf(node).number = evaluate(*node.operands[0]).number;
    break;
  case Op::conditional:
    if (truth(*node.operands[0]))
      execute(*node.operands[1]);
    else if (node.operands.size() > 2)
      execute(*node.operands[2]);
    break;
  case Op::loop:
    executeLoop(node);
    break;
  case Op::deleteRow:
    cursorOf(node).deleteRow();
    break;
  case Op::updateRow:
    cursorOf(node).update(slotOf(*node.operands[1]).tuple);
    break;
  case Op::setField:
    slotOf(node).tuple.set(node.column, evaluate(*node.operands[1]));
    break;
  case Op::bufferPut:
    run_->result.put(node.column, evaluate(*node.operands[0]));
    break;
  case Op::bufferMoveNext:
    run_->result.endRow();
    break;
  case Op::setSessionTag:
    run_->tag = static_cast<int>(evaluate(*node.operands[0]).number);
    break;
  default:
    evaluate(node);
  }
}

void Executable::executeBlock(const Node& node) {
  std::size_t done = 0;
  try {
    if (node.plan >= 0 && pushDownEnabled && !run_->result.rowIsOpen()) {
      const RowCopy& copy = program_->rowCopies[static_cast<std::size_t>(node.plan)];
      copyRow(copy);
      done = copy.statements;
    }
    for (; done < node.operands.size(); ++done)
      execute(*node.operands[done]);
  } catch (const Failure& failure) {
    throw failure.at(node.operands[done]->at);
  }
}

void Executable::tooManyPasses(const Node& node) {
  throw Failure(DB_LIMIT, node.at,
                "the loops have made more than " + std::to_string(loopPassLimit) + " passes");
}

void Executable::walk(const Node& node) {
  while (truth(*node.operands[0])) {
    onePass(node);
    execute(*node.operands[1]);
  }
}

void Executable::executeLoop(const Node& node) {
  if (node.plan >= 0 && pushDownEnabled)
    executePlanned(node, program_->loops[static_cast<std::size_t>(node.plan)]);
  else
    walk(node);
}

void Executable::executePlanned(const Node& node, const LoopPlan& plan) {
  const auto slot = static_cast<std::size_t>(plan.cursor);
  Cursor& cursor = *slots_[slot].cursor;
  std::vector<Value> values;
  const bool isWhole = plan.kind == LoopPlan::Kind::whole;
  const CursorPlan& source =
      program_->cursors[static_cast<std::size_t>(program_->variables[slot].cursor)];
  if (!filterValues(source.filter, values) || (isWhole && !cursor.isBeforeFirst()))
    return walk(node);
  cursor.setFilter(&values);
  if (!isWhole) {
    executeOnward(node, cursor, slots_[static_cast<std::size_t>(plan.found)]);
  } else if (source.empties) {
    cursor.deleteAll();
  } else if (plan.counter >= 0) {
    slots_[static_cast<std::size_t>(plan.counter)].number += cursor.countFiltered();
  } else if (plan.onlyCopies && !run_->result.rowIsOpen()) {
    copyRows(node, program_->rowCopies[static_cast<std::size_t>(plan.block->plan)], cursor);
  } else {
    cursor.walkFiltered();
    while (cursor.moveNext()) {
      onePass(node);
      execute(*plan.block);
    }
  }
  cursor.setFilter(nullptr);
}

// Outputs a row. Requires: the current row has ended.
void Executable::copyRow(const RowCopy& copy) {
  ResultBuffer& result = run_->result;
  const Cursor* cursor =
      copy.cursor < 0 ? nullptr : slots_[static_cast<std::size_t>(copy.cursor)].cursor;
  const std::size_t before = result.rows();
  result.addRow();
  for (const Copy& cell : copy.copies) {
    ResultBuffer::Column& column = result.column(cell.target);
    column.fill(before, {});
    column.put(cell.constant != nullptr ? literal(*cell.constant) : cursor->field(cell.place));
  }
}

// Outputs each row of the cursor's filtered walk.
void Executable::copyRows(const Node& node, const RowCopy& copy, Cursor& cursor) {
  struct Cell {
    ResultBuffer::Column& column;
    int place;
    Type type;
  };
  ResultBuffer& result = run_->result;
  std::vector<Cell> cells;
  std::vector<ResultBuffer::Column*> uids;  // hold the UID: first in the row and never null
  for (const Copy& cell : copy.copies) {
    ResultBuffer::Column& column = result.column(cell.target);
    column.fill(result.rows(), {});
    if (cell.place == 0 && column.type() == Type::integer)
      uids.push_back(&column);
    else if (cell.constant == nullptr)
      cells.push_back({column, cell.place, cursor.typeAt(cell.place)});
  }
  cursor.forEachFiltered([&](const SqlStatement& row) {
    onePass(node);
    result.addRow();
    for (ResultBuffer::Column* column : uids)
      column->putInteger(row.integer(0));
    for (const Cell& cell : cells)
      cell.column.put(columnValue(row, cell.place, cell.type));
  });
  for (const Copy& cell : copy.copies)
    if (cell.constant != nullptr)
      result.column(cell.target).fill(result.rows(), literal(*cell.constant));
}

// Checks the loop's condition before moving the cursor: the row after the last one needed is not
// wanted, and finding it may take long.
void Executable::executeOnward(const Node& node, Cursor& cursor, Slot& found) {
  while (truth(*node.operands[0])) {
    onePass(node);
    execute(*node.operands[1]->operands[0]);
    found.number = 1;
    if (!truth(*node.operands[0]))
      break;
    found.number = cursor.moveNext() ? 1 : 0;
  }
}

// Appends the operands of the conditions. Returns false if one is missing or of the wrong type: the
// loop must then walk, so that it fails at the right position of the text.
bool Executable::filterValues(const std::vector<Condition>& conditions,
                              std::vector<Value>& values) const {
  for (const Condition& condition : conditions) {
    if (!condition.parts.empty()) {
      if (!filterValues(condition.parts, values))
        return false;
      continue;
    }
    const Node& node = *condition.value;
    if (node.op == Op::parameter && !isBound(node))
      return false;
    const Value value = constant(node);
    if (condition.op == Op::contains ? value.isNumber() : value.isText())
      return false;
    values.push_back(value);
  }
  return true;
}

void Executable::declare(const Node& node) {
  Slot& slot = slotOf(node);
  switch (node.type) {
  case Type::cursor:
    slot.cursor->open();
    break;
  case Type::tuple:
    slot.tuple.clear();
    break;
  case Type::table:
    break;
  default:
    slot.number = evaluate(*node.operands[0]).number;
  }
}

bool Executable::truth(const Node& node) {
  const Value value = evaluate(node);
  if (value.isText())
    throw Failure(DB_BAD_TYPE, node.at, "expected bool, found a text");
  return value.number != 0;
}

bool Executable::isBound(const Node& parameter) const {
  const auto index = static_cast<std::size_t>(parameter.number);
  return index < run_->parameters.count && run_->parameters.first[index].isBound;
}

Value Executable::constant(const Node& node) const {
  switch (node.op) {
  case Op::parameter:
    if (!isBound(node))
      throw Failure(DB_BAD_PARAMETER, node.at,
                    "parameter :" + std::to_string(node.number) + " is not bound");
    return run_->parameters.first[static_cast<std::size_t>(node.number)].value.view();
  case Op::argument:
    return Value::integer(run_->arguments[static_cast<std::size_t>(node.number)]);
  default:
    return literal(node);
  }
}

Value Executable::literal(const Node& node) {
  return node.op == Op::text ? Value{Type::varchar, 0, node.text}
                             : Value{node.type, node.number, {}};
}

Value Executable::evaluate(const Node& node) {
  switch (node.op) {
  case Op::integer:
  case Op::boolean:
  case Op::text:
  case Op::parameter:
  case Op::argument:
    return constant(node);
  case Op::variable:
    return {node.type, slotOf(node).number, {}};
  case Op::logicalNot:
    return Value::boolean(!truth(*node.operands[0]));
  case Op::logicalAnd:
    return Value::boolean(truth(*node.operands[0]) && truth(*node.operands[1]));
  case Op::logicalOr:
    return Value::boolean(truth(*node.operands[0]) || truth(*node.operands[1]));
  case Op::negate:
  case Op::add:
  case Op::subtract:
    return arithmetic(node);
  case Op::equal:
  case Op::notEqual:
  case Op::less:
  case Op::lessEqual:
  case Op::greater:
  case Op::greaterEqual:
    return Value::boolean(holds(node));
  case Op::contains:
    return Value::boolean(containsText(node));
  case Op::getField:
    return cursorOf(node).field(node.column);
  case Op::find:
    return Value::boolean(cursorOf(node).find(slotOf(*node.operands[1]).tuple));
  case Op::moveNext:
    return Value::boolean(cursorOf(node).moveNext());
  case Op::moveNextInDup:
    return Value::boolean(cursorOf(node).moveNextInDup());
  case Op::recordNumber:
    return Value::integer(count(*program_->variables[static_cast<std::size_t>(node.slot)].table));
  case Op::tableExists:
    return Value::boolean(tableExists(node.text));
  default:
    return {};
  }
}

// A comparison with null is always false.
bool Executable::holds(const Node& node) {
  const Value left = evaluate(*node.operands[0]);
  const Value right = evaluate(*node.operands[1]);
  if (left.isNull() || right.isNull())
    return false;
  const int order = compare(left, right);
  switch (node.op) {
  case Op::equal:
    return order == 0;
  case Op::notEqual:
    return order != 0;
  case Op::less:
    return order < 0;
  case Op::lessEqual:
    return order <= 0;
  case Op::greater:
    return order > 0;
  default:
    return order >= 0;
  }
}

// A null contains nothing and is not contained in anything.
bool Executable::containsText(const Node& node) {
  const Value text = evaluate(*node.operands[0]);
  const Value part = evaluate(*node.operands[1]);
  return !text.isNull() && !part.isNull() && contains(text, part);
}

Value Executable::arithmetic(const Node& node) {
  Value values[2];
  for (std::size_t i = 0; i < node.operands.size(); ++i) {
    values[i] = evaluate(*node.operands[i]);
    if (values[i].isNull())
      return {};
    if (values[i].isText())
      throw Failure(DB_BAD_TYPE, node.at, "expected integer, found a text");
  }
  std::int64_t result = 0;
  const bool overflow =
      node.op == Op::negate ? __builtin_sub_overflow(std::int64_t{0}, values[0].number, &result)
      : node.op == Op::add  ? __builtin_add_overflow(values[0].number, values[1].number, &result)
                            : __builtin_sub_overflow(values[0].number, values[1].number, &result);
  if (overflow)
    throw Failure(DB_LIMIT, node.at, "the number leaves 64 bits");
  return Value::integer(result);
}

std::int64_t Executable::count(const Table& table) {
  SqlStatement& statement = preparedIn(counts_, &table, database_, [&] { return countSql(table); });
  const ResetAtEnd reset(statement);
  return statement.step() ? statement.integer(0) : 0;
}

bool Executable::tableExists(const std::string& name) {
  if (!tableExists_)
    tableExists_ = std::make_unique<SqlStatement>(
        database_,
        "SELECT 1 FROM sqlite_schema WHERE name = ? AND " + std::string(tablesOfPrograms));
  const ResetAtEnd reset(*tableExists_);
  bind(*tableExists_, 1, {Type::varchar, 0, localName(name)}, Type::varchar);
  return tableExists_->step();
}

}  // namespace ulo::odb
