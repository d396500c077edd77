#include "loop_planner.h"

#include <algorithm>
#include <functional>

namespace ulo::odb {
namespace {

bool isConstant(const Node& node) {
  return node.op == Op::parameter || node.op == Op::argument || node.op == Op::integer ||
         node.op == Op::boolean;
}

bool isLiteral(const Node& node) {
  return node.op == Op::integer || node.op == Op::boolean || node.op == Op::text;
}

bool isComparison(Op op) {
  return op == Op::equal || op == Op::notEqual || op == Op::less || op == Op::lessEqual ||
         op == Op::greater || op == Op::greaterEqual;
}

// Returns the comparison with its operands swapped.
Op mirrored(Op op) {
  switch (op) {
  case Op::less:
    return Op::greater;
  case Op::lessEqual:
    return Op::greaterEqual;
  case Op::greater:
    return Op::less;
  case Op::greaterEqual:
    return Op::lessEqual;
  default:
    return op;
  }
}

bool anyNode(const Node& node, const std::function<bool(const Node&)>& holds) {
  return holds(node) ||
         std::any_of(node.operands.begin(), node.operands.end(),
                     [&](const NodePtr& operand) { return anyNode(*operand, holds); });
}

// Returns true if the node uses the cursor's current row, or moves the cursor.
bool usesPosition(const Node& node, int cursor) {
  return node.slot == cursor && (node.op == Op::getField || node.op == Op::moveNext ||
                                 node.op == Op::moveNextInDup || node.op == Op::dataTuple);
}
bool moves(const Node& node, int cursor) {
  return node.slot == cursor && (node.op == Op::find || node.op == Op::moveNext ||
                                 node.op == Op::moveNextInDup || node.op == Op::openCursor);
}

class LoopPlanner {
public:
  explicit LoopPlanner(Program& program) : program_(program) {}

  void run() {
    Node& body = *program_.script->body;
    if (program_.writes) {
      planRemoval(body);
      return;
    }
    planRowCopies(body);
    for (std::size_t i = 0; i < body.operands.size(); ++i)
      visit(*body.operands[i], false,
            {body.operands.begin() + static_cast<std::ptrdiff_t>(i) + 1, body.operands.end()});
  }

private:
  // Plans a script that opens a cursor, deletes each row it reaches, and does nothing else.
  void planRemoval(Node& body) {
    if (body.operands.size() != 2 || body.operands[0]->op != Op::declareVariable ||
        body.operands[1]->op != Op::loop)
      return;
    Node& loop = *body.operands[1];
    const Node& condition = *loop.operands[0];
    const Node& block = *loop.operands[1];
    if (condition.op != Op::moveNext || block.operands.size() != 1 ||
        block.operands[0]->op != Op::deleteRow || block.operands[0]->slot != condition.slot)
      return;
    LoopPlan plan;
    plan.cursor = condition.slot;
    plan.block = &block;
    planOf(plan.cursor).empties = true;
    loop.plan = static_cast<int>(program_.loops.size());
    program_.loops.push_back(plan);
  }

  void planRowCopies(Node& node) {
    if (node.op == Op::block) {
      RowCopy copy = rowCopyOf(node);
      if (copy.statements > 0) {
        node.plan = static_cast<int>(program_.rowCopies.size());
        program_.rowCopies.push_back(std::move(copy));
      }
    }
    for (const NodePtr& operand : node.operands)
      planRowCopies(*operand);
  }

  // Has no statements if the block begins with anything else.
  static RowCopy rowCopyOf(const Node& block) {
    RowCopy row;
    for (const NodePtr& statement : block.operands) {
      if (statement->op == Op::bufferMoveNext && !row.copies.empty()) {
        row.statements = row.copies.size() + 1;
        return row;
      }
      if (statement->op != Op::bufferPut ||
          std::any_of(row.copies.begin(), row.copies.end(),
                      [&](const Copy& copy) { return copy.target == statement->column; }))
        break;
      const Node& value = *statement->operands[0];
      if (value.op == Op::getField && (row.cursor < 0 || row.cursor == value.slot)) {
        row.cursor = value.slot;
        row.copies.push_back({statement->column, value.column, nullptr});
      } else if (isLiteral(value)) {
        row.copies.push_back({statement->column, -1, &value});
      } else {
        break;
      }
    }
    return {};
  }

  // The statements that run after the current one.
  struct Later {
    std::vector<NodePtr>::const_iterator first;
    std::vector<NodePtr>::const_iterator end;
  };

  void visit(Node& node, bool inLoop, Later later) {
    if (node.op == Op::loop) {
      if (!planWhole(node) && !inLoop)
        planOnward(node, later);
      visitAll(*node.operands[1], true, later);
    } else if (node.op == Op::conditional || node.op == Op::block) {
      for (const NodePtr& operand : node.operands)
        if (operand->op == Op::block)
          visitAll(*operand, inLoop, later);
    }
  }

  // Uses `later` for the statements of an inner block: what runs after the block also runs after
  // them. The rest of the block itself has no further planned loop over the same cursor, because a
  // cursor has at most one.
  void visitAll(const Node& block, bool inLoop, Later later) {
    for (std::size_t i = 0; i < block.operands.size(); ++i) {
      const bool isLast = i + 1 == block.operands.size();
      visit(*block.operands[i], inLoop || !isLast, later);
    }
  }

  CursorPlan& planOf(int slot) {
    return program_.cursors[static_cast<std::size_t>(
        program_.variables[static_cast<std::size_t>(slot)].cursor)];
  }

  // Converts an expression to conditions that must all be true. Returns false if SQLite cannot
  // check it.
  bool conditions(const Node& node, int cursor, std::vector<Condition>& found) {
    if (node.op == Op::logicalAnd)
      return conditions(*node.operands[0], cursor, found) &&
             conditions(*node.operands[1], cursor, found);
    if (node.op == Op::logicalOr)
      return alternatives(node, cursor, found);
    if (node.op == Op::contains)
      return containment(node, cursor, found);
    return comparison(node, cursor, found);
  }

  bool alternatives(const Node& node, int cursor, std::vector<Condition>& found) {
    Condition either{Op::logicalOr};
    for (const NodePtr& operand : node.operands) {
      Condition all{Op::logicalAnd};
      if (!conditions(*operand, cursor, all.parts))
        return false;
      either.parts.push_back(std::move(all));
    }
    found.push_back(std::move(either));
    return true;
  }

  // Other columns may hold texts in two forms.
  bool containment(const Node& node, int cursor, std::vector<Condition>& found) {
    const Node& field = *node.operands[0];
    const Node& part = *node.operands[1];
    if (field.op != Op::getField || field.slot != cursor || field.type != Type::unicode ||
        (part.op != Op::parameter && part.op != Op::text))
      return false;
    found.push_back({node.op, tableColumn(field, cursor), &part});
    return true;
  }

  // The column of the table that a get_field reads.
  int tableColumn(const Node& field, int cursor) {
    return planOf(cursor).fetched[static_cast<std::size_t>(field.column)];
  }

  bool comparison(const Node& node, int cursor, std::vector<Condition>& found) {
    if (!isComparison(node.op))
      return false;
    const Node* field = node.operands[0].get();
    const Node* value = node.operands[1].get();
    Op op = node.op;
    if (field->op != Op::getField) {
      std::swap(field, value);
      op = mirrored(op);
    }
    if (field->op != Op::getField || field->slot != cursor || !isConstant(*value) ||
        (field->type != Type::integer && field->type != Type::boolean))
      return false;
    found.push_back({op, tableColumn(*field, cursor), value});
    return true;
  }

  // Returns true if the cursor can use this loop's filter: only one loop per cursor has one.
  bool isFree(int cursor) const {
    return std::none_of(program_.loops.begin(), program_.loops.end(),
                        [&](const LoopPlan& loop) { return loop.cursor == cursor; });
  }

  static bool isPlainIf(const Node& node) {
    return node.op == Op::conditional && node.operands.size() == 2;
  }

  bool planWhole(Node& node) {
    const Node& condition = *node.operands[0];
    if (condition.op != Op::moveNext || !isFree(condition.slot))
      return false;
    LoopPlan plan;
    plan.cursor = condition.slot;
    plan.block = node.operands[1].get();
    CursorPlan& cursor = planOf(plan.cursor);
    if (anyNode(*plan.block, [&](const Node& n) { return moves(n, plan.cursor); }))
      return false;
    std::vector<Condition> filter;
    if (plan.block->operands.size() == 1 && isPlainIf(*plan.block->operands[0]) &&
        conditions(*plan.block->operands[0]->operands[0], plan.cursor, filter)) {
      cursor.filter = filter;
      plan.block = plan.block->operands[0]->operands[1].get();
    }
    plan.counter = counterOf(*plan.block);
    plan.onlyCopies = onlyCopies(*plan.block, plan.cursor);
    node.plan = static_cast<int>(program_.loops.size());
    program_.loops.push_back(plan);
    return true;
  }

  // Returns the slot of $i if the block is exactly { $i = $i + 1; }, otherwise -1.
  static int counterOf(const Node& block) {
    if (block.operands.size() != 1 || block.operands[0]->op != Op::assign)
      return -1;
    const Node& assign = *block.operands[0];
    const Node& sum = *assign.operands[0];
    const bool counts = sum.op == Op::add && sum.operands[0]->op == Op::variable &&
                        sum.operands[0]->slot == assign.slot &&
                        sum.operands[1]->op == Op::integer && sum.operands[1]->number == 1;
    return counts ? assign.slot : -1;
  }

  // Returns true if the block only outputs a row, with fields of this cursor or of none.
  [[nodiscard]] bool onlyCopies(const Node& block, int cursor) const {
    if (block.plan < 0)
      return false;
    const RowCopy& copy = program_.rowCopies[static_cast<std::size_t>(block.plan)];
    return copy.statements == block.operands.size() && (copy.cursor < 0 || copy.cursor == cursor);
  }

  void planOnward(Node& node, Later later) {
    const Node& block = *node.operands[1];
    if (block.operands.size() != 2 || !isPlainIf(*block.operands[0]) ||
        block.operands[1]->op != Op::assign || block.operands[1]->operands[0]->op != Op::moveNext)
      return;
    LoopPlan plan;
    plan.kind = LoopPlan::Kind::onward;
    plan.found = block.operands[1]->slot;
    plan.cursor = block.operands[1]->operands[0]->slot;
    std::vector<Condition> filter;
    const Node& then = *block.operands[0]->operands[1];
    // Skipping rows must not affect the loop's own condition, and nothing later may depend on where
    // the loop stopped.
    const auto dependsOnRow = [&](const Node& n) {
      return n.op == Op::find || usesPosition(n, plan.cursor) || n.op == Op::recordNumber ||
             n.op == Op::tableExists;
    };
    const auto seesWhereItStopped = [&](const Node& n) {
      return usesPosition(n, plan.cursor) || (n.op == Op::variable && n.slot == plan.found);
    };
    if (!isFree(plan.cursor) || anyNode(*node.operands[0], dependsOnRow) ||
        anyNode(then, [&](const Node& n) { return moves(n, plan.cursor); }) ||
        std::any_of(later.first, later.end,
                    [&](const NodePtr& n) { return anyNode(*n, seesWhereItStopped); }) ||
        !conditions(*block.operands[0]->operands[0], plan.cursor, filter))
      return;
    planOf(plan.cursor).filter = filter;
    node.plan = static_cast<int>(program_.loops.size());
    program_.loops.push_back(plan);
  }

  Program& program_;
};

}  // namespace

void planLoops(Program& program) {
  LoopPlanner(program).run();
}

}  // namespace ulo::odb
