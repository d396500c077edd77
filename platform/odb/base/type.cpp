#include "type.h"

namespace ulo::odb {

const char* typeName(Type type) {
  switch (type) {
  case Type::nothing:
    return "nothing";
  case Type::null:
    return "null";
  case Type::any:
    return "a parameter";
  case Type::integer:
    return "integer";
  case Type::boolean:
    return "bool";
  case Type::unicode:
    return "unicode";
  case Type::varchar:
    return "varchar";
  case Type::cursor:
    return "cursor";
  case Type::table:
    return "table";
  case Type::tuple:
    break;
  }
  return "tuple";
}

}  // namespace ulo::odb
