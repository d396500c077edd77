#include "ast.h"

#include "operations.h"

namespace ulo::odb {

const char* opName(Op op) {
  for (const Operation& operation : operations)
    if (operation.op == op)
      return operation.name.data();
  switch (op) {
  case Op::integer:
    return "integer";
  case Op::boolean:
    return "bool";
  case Op::text:
    return "text";
  case Op::parameter:
    return "parameter";
  case Op::argument:
    return "argument";
  case Op::variable:
    return "variable";
  case Op::negate:
    return "negate";
  case Op::logicalNot:
    return "not";
  case Op::add:
    return "add";
  case Op::subtract:
    return "subtract";
  case Op::equal:
    return "equal";
  case Op::notEqual:
    return "not-equal";
  case Op::less:
    return "less";
  case Op::lessEqual:
    return "less-or-equal";
  case Op::greater:
    return "greater";
  case Op::greaterEqual:
    return "greater-or-equal";
  case Op::logicalAnd:
    return "and";
  case Op::logicalOr:
    return "or";
  case Op::block:
    return "block";
  case Op::declareVariable:
    return "declare";
  case Op::assign:
    return "assign";
  case Op::conditional:
    return "if";
  case Op::loop:
    return "while";
  default:
    return "?";
  }
}

}  // namespace ulo::odb
