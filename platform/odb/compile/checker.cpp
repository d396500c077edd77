#include "checker.h"

#include <algorithm>

namespace ulo::odb {
namespace {

bool isNumber(Type type) {
  return type == Type::integer || type == Type::boolean;
}
bool isText(Type type) {
  return type == Type::unicode || type == Type::varchar;
}
bool isValue(Type type) {
  return isNumber(type) || isText(type) || type == Type::null || type == Type::any;
}

// Returns true if a value of type `given` may be used where `wanted` is expected. Parameters are
// checked at run time.
bool fits(Type wanted, Type given) {
  if (given == Type::null || given == Type::any)
    return true;
  return (isNumber(wanted) && isNumber(given)) || (isText(wanted) && isText(given));
}

void expectFit(Type wanted, const Node& value) {
  if (!isValue(value.type) || !fits(wanted, value.type))
    throw Failure(DB_BAD_TYPE, value.at,
                  std::string("expected ") + typeName(wanted) + ", found " + typeName(value.type));
}

class Checker {
public:
  Checker(Program& program, const Catalog& catalog) : program_(program), catalog_(catalog) {}

  void checkScript() {
    statement(*program_.script->body);
    for (CursorPlan& plan : program_.cursors)
      finish(plan);
    program_.needsSnapshot = queries_ > 1;
  }

  void checkStatement() {
    const Statement& statement = *program_.statement;
    program_.writes = true;
    const auto table = catalog_.table(statement.table);
    if (statement.kind == Statement::Kind::createTable)
      return checkNameIsFree(statement.table, statement.tableAt);
    if (!table)
      throw Failure(DB_UNKNOWN_NAME, statement.tableAt, "no table '" + statement.table + "'");
    if (statement.kind == Statement::Kind::createIndex) {
      checkNameIsFree(statement.index, statement.tableAt);
      for (const IndexColumn& column : statement.indexColumns)
        columnOf(*table, column.name, column.at);
      return;
    }
    for (std::size_t i = 0; i < statement.columns.size(); ++i) {
      const TableColumn& column = statement.columns[i];
      const int place = columnOf(*table, column.name, column.at);
      if (place == table->uid)
        throw Failure(DB_BAD_TYPE, column.at, "the database numbers '" + column.name + "' itself");
      const Type type = table->columns[static_cast<std::size_t>(place)].type;
      expression(*statement.values[i]);
      expectFit(type, *statement.values[i]);
      program_.insertTypes.push_back(type);
    }
  }

private:
  void checkNameIsFree(const std::string& name, Position at) const {
    if (catalog_.source(name).table)
      throw Failure(DB_CONSTRAINT, at, "there is a table or index '" + name + "' already");
  }

  static int columnOf(const Table& table, const std::string& name, Position at) {
    const int column = table.find(name);
    if (column < 0)
      throw Failure(DB_UNKNOWN_NAME, at, "table '" + table.name + "' has no column '" + name + "'");
    return column;
  }

  // Statements

  void statement(Node& node) {
    switch (node.op) {
    case Op::block: {
      const std::size_t outer = visible_.size();
      for (const NodePtr& operand : node.operands)
        statement(*operand);
      visible_.resize(outer);
      break;
    }
    case Op::declareVariable:
      declare(node);
      break;
    case Op::assign: {
      node.slot = slotOf(node);
      const Type type = variableAt(node.slot).type;
      if (!isNumber(type))
        throw Failure(DB_BAD_TYPE, node.at,
                      std::string("a ") + typeName(type) + " can't be assigned again");
      expression(*node.operands[0]);
      expectFit(type, *node.operands[0]);
      break;
    }
    case Op::conditional:
    case Op::loop:
      loops_ += node.op == Op::loop ? 1 : 0;
      expression(*node.operands[0]);
      expectFit(Type::boolean, *node.operands[0]);
      for (std::size_t i = 1; i < node.operands.size(); ++i)
        statement(*node.operands[i]);
      loops_ -= node.op == Op::loop ? 1 : 0;
      break;
    default:
      expression(node);
    }
  }

  void declare(Node& node) {
    Variable variable{node.text, node.type, -1, false, nullptr};
    Node& first = *node.operands[0];
    switch (node.type) {
    case Type::cursor: {
      expectOp(first, first.op == Op::openCursor, "open_cursor");
      CursorPlan plan;
      plan.source = catalog_.source(first.text);
      if (!plan.source.table)
        throw Failure(DB_UNKNOWN_NAME, first.at, "no table or index '" + first.text + "'");
      plan.fetched.push_back(plan.source.table->uid);
      variable.cursor = static_cast<int>(program_.cursors.size());
      program_.cursors.push_back(std::move(plan));
      break;
    }
    case Type::table:
      expectOp(first, first.op == Op::openTable, "open_table");
      variable.table = catalog_.table(first.text);
      if (!variable.table)
        throw Failure(DB_UNKNOWN_NAME, first.at, "no table '" + first.text + "'");
      break;
    case Type::tuple:
      expectOp(first, first.op == Op::newKey || first.op == Op::dataTuple,
               "new_empty_key_tuple or get_data_tuple");
      variable.isKey = first.op == Op::newKey;
      variable.cursor = target(first, Type::cursor).cursor;
      break;
    default:
      expression(first);
      expectFit(node.type, first);
    }
    addVariable(node, std::move(variable));
  }

  static void expectOp(const Node& node, bool isOne, const std::string& name) {
    if (!isOne)
      throw Failure(DB_SYNTAX, node.at, "expected " + name + " here");
  }

  void addVariable(Node& node, Variable variable) {
    // A name can be declared again only after the block that declares it.
    for (std::size_t i = 0; i < visible_.size(); ++i)
      if (variableAt(visible_[i]).name == variable.name)
        throw Failure(DB_SYNTAX, node.at, "variable $" + variable.name + " is declared twice");
    if (program_.variables.size() == DB_MAX_VARIABLES)
      throw Failure(DB_LIMIT, node.at,
                    "there are more than " + std::to_string(DB_MAX_VARIABLES) + " variables");
    node.slot = static_cast<int>(program_.variables.size());
    visible_.push_back(node.slot);
    program_.variables.push_back(std::move(variable));
  }

  // Expressions

  [[nodiscard]] const Variable& variableAt(int slot) const {
    return program_.variables[static_cast<std::size_t>(slot)];
  }

  [[nodiscard]] int slotOf(const Node& node) const {
    for (const int slot : visible_)
      if (variableAt(slot).name == node.text)
        return slot;
    throw Failure(DB_UNKNOWN_NAME, node.at, "no variable $" + node.text + " is declared here");
  }

  // Returns the target variable of the operation and stores its slot in the node.
  const Variable& target(Node& node, Type type) {
    Node& asked = *node.operands[0];
    asked.slot = node.slot = slotOf(asked);
    const Variable& variable = variableAt(node.slot);
    if (variable.type != type)
      throw Failure(DB_BAD_TYPE, asked.at,
                    std::string("expected a ") + typeName(type) + ", $" + variable.name +
                        " is of type " + typeName(variable.type));
    return variable;
  }

  CursorPlan& planOf(const Variable& variable) {
    return program_.cursors[static_cast<std::size_t>(variable.cursor)];
  }

  // The tuple passed to find or update must belong to the cursor's table.
  void tupleArgument(Node& node, bool key, const CursorPlan& plan) {
    Node& argument = *node.operands[1];
    argument.slot = slotOf(argument);
    const Variable& tuple = variableAt(argument.slot);
    if (tuple.type != Type::tuple || tuple.isKey != key)
      throw Failure(DB_BAD_TYPE, argument.at,
                    key ? "expected a key tuple" : "expected a data tuple");
    const Source& source = planOf(tuple).source;
    const auto sameColumn = [](const KeyColumn& a, const KeyColumn& b) {
      return a.column == b.column && a.descending == b.descending;
    };
    const bool sameKey = std::equal(source.key.begin(), source.key.end(), plan.source.key.begin(),
                                    plan.source.key.end(), sameColumn);
    if (source.table != plan.source.table || (key && !sameKey))
      throw Failure(DB_BAD_TYPE, argument.at,
                    "tuple $" + tuple.name + " belongs to a cursor over something else");
  }

  void expression(Node& node) {
    switch (node.op) {
    case Op::argument:
      program_.arguments = std::max(program_.arguments, static_cast<int>(node.number) + 1);
      break;
    case Op::variable:
      node.slot = slotOf(node);
      node.type = variableAt(node.slot).type;
      break;
    case Op::negate:
    case Op::add:
    case Op::subtract:
      operands(node, Type::integer);
      node.type = Type::integer;
      break;
    case Op::logicalNot:
    case Op::logicalAnd:
    case Op::logicalOr:
      operands(node, Type::boolean);
      node.type = Type::boolean;
      break;
    case Op::equal:
    case Op::notEqual:
    case Op::less:
    case Op::lessEqual:
    case Op::greater:
    case Op::greaterEqual:
      comparison(node);
      break;
    default:
      operation(node);
    }
  }

  void operands(Node& node, Type type) {
    for (const NodePtr& operand : node.operands) {
      expression(*operand);
      expectFit(type, *operand);
    }
  }

  void comparison(Node& node) {
    for (const NodePtr& operand : node.operands) {
      expression(*operand);
      if (!isValue(operand->type))
        throw Failure(DB_BAD_TYPE, operand->at,
                      std::string("expected a value, found ") + typeName(operand->type));
    }
    const Type left = node.operands[0]->type;
    const Type right = node.operands[1]->type;
    if ((isNumber(left) && isText(right)) || (isText(left) && isNumber(right)))
      throw Failure(DB_BAD_TYPE, node.at,
                    std::string("a value of type ") + typeName(left) + " is compared with one of " +
                        typeName(right));
    node.type = Type::boolean;
  }

  void operation(Node& node) {
    switch (node.op) {
    case Op::openCursor:
    case Op::openTable:
    case Op::newKey:
    case Op::dataTuple:
      throw Failure(DB_SYNTAX, node.at,
                    "a cursor, table or tuple can only be the first value of a variable");
    case Op::find: {
      CursorPlan& plan = planOf(target(node, Type::cursor));
      tupleArgument(node, true, plan);
      plan.finds = true;
      addQuery();
      break;
    }
    case Op::moveNext:
      planOf(target(node, Type::cursor)).moves = true;
      break;
    case Op::moveNextInDup:
      planOf(target(node, Type::cursor)).movesInDup = true;
      break;
    case Op::getField: {
      CursorPlan& plan = planOf(target(node, Type::cursor));
      const int column = columnOf(*plan.source.table, node.text, node.at);
      node.column = plan.fetch(column);
      node.type = plan.source.table->columns[static_cast<std::size_t>(column)].type;
      break;
    }
    case Op::deleteRow:
      planOf(target(node, Type::cursor)).deletes = true;
      program_.writes = true;
      break;
    case Op::updateRow: {
      CursorPlan& plan = planOf(target(node, Type::cursor));
      tupleArgument(node, false, plan);
      plan.updates = true;
      program_.writes = true;
      break;
    }
    case Op::recordNumber:
      target(node, Type::table);
      addQuery();
      break;
    case Op::tableExists:
      addQuery();
      break;
    case Op::contains:
      operands(node, Type::unicode);
      break;
    case Op::setField:
      setField(node);
      break;
    case Op::bufferPut:
      bufferPut(node);
      break;
    case Op::setSessionTag:
      operands(node, Type::integer);
      break;
    default:
      break;
    }
  }

  void addQuery() { queries_ += loops_ > 0 ? 2 : 1; }

  void setField(Node& node) {
    const Variable& tuple = target(node, Type::tuple);
    const CursorPlan& plan = planOf(tuple);
    const std::vector<KeyColumn>& key = plan.source.key;
    if (node.fieldByNumber) {
      if (node.number >= static_cast<std::int64_t>(key.size()))
        throw Failure(DB_UNKNOWN_NAME, node.at,
                      "the key has " + std::to_string(key.size()) + " columns, there is no " +
                          std::to_string(node.number));
      node.column = key[static_cast<std::size_t>(node.number)].column;
    } else {
      node.column = columnOf(*plan.source.table, node.text, node.at);
    }
    const bool inKey = std::any_of(key.begin(), key.end(), [&](const KeyColumn& column) {
      return column.column == node.column;
    });
    if (tuple.isKey && !inKey)
      throw Failure(DB_UNKNOWN_NAME, node.at, "column '" + node.text + "' is not in the key");
    if (!tuple.isKey && node.column == plan.source.table->uid)
      throw Failure(DB_BAD_TYPE, node.at, "the UID of a row can't be changed");
    Node& value = *node.operands[1];
    expression(value);
    expectFit(plan.source.table->columns[static_cast<std::size_t>(node.column)].type, value);
    if (!tuple.isKey)
      changed_.push_back({plan.source.table.get(), node.column});
  }

  void bufferPut(Node& node) {
    const auto& columns = program_.script->buffer;
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const auto& column) { return column.name == node.text; });
    if (found == columns.end())
      throw Failure(DB_UNKNOWN_NAME, node.at,
                    columns.empty() ? "the script declares no buffer"
                                    : "the buffer has no column '" + node.text + "'");
    node.column = static_cast<int>(found - columns.begin());
    operands(node, found->type);
  }

  // Called when the whole script is known. Determines which columns the cursor must fetch to
  // continue from its position, and whether the script's own updates would disturb its order.
  void finish(CursorPlan& plan) {
    plan.order = plan.source.key;
    const int uid = plan.source.table->uid;
    const auto inKey = [&](int column) {
      return std::any_of(plan.source.key.begin(), plan.source.key.end(),
                         [&](const KeyColumn& key) { return key.column == column; });
    };
    if (!inKey(uid))
      plan.order.push_back({uid, false});
    if ((plan.finds && plan.moves) || plan.movesInDup)
      for (const KeyColumn& column : plan.order)
        plan.orderFetched.push_back(plan.fetch(column.column));
    plan.listsFirst = (plan.moves || plan.movesInDup) &&
                      std::any_of(changed_.begin(), changed_.end(), [&](const auto& change) {
                        return change.first == plan.source.table.get() && inKey(change.second);
                      });
    queries_ += plan.finds ? (plan.moves || plan.movesInDup ? 1 : 0) : 1;
  }

  Program& program_;
  const Catalog& catalog_;
  std::vector<int> visible_;
  std::vector<std::pair<const Table*, int>> changed_;  // columns set by data tuples
  int loops_ = 0;                                      // number of loops around the current node
  int queries_ = 0;  // number of queries; a query in a loop counts as 2
};

}  // namespace

void checkProgram(Program& program, const Catalog& catalog) {
  Checker checker(program, catalog);
  if (program.script)
    checker.checkScript();
  else
    checker.checkStatement();
}

}  // namespace ulo::odb
