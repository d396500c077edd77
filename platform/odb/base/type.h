#pragma once

namespace ulo::odb {

// Types of columns and expressions.
enum class Type {
  nothing,  // of operations without a value
  null,
  any,  // of parameters: known only at run time
  integer,
  boolean,
  unicode,  // 16-bit units
  varchar,  // bytes, UTF-8
  cursor,
  table,
  tuple,
};

const char* typeName(Type type);

}  // namespace ulo::odb
