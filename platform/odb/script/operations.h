#pragma once

#include "ast.h"

#include <string_view>

namespace ulo::odb {

// Kinds of arguments of operations.
enum class Argument {
  value,      // an expression
  tuple,      // a variable that holds a tuple
  quoted,     // a quoted name of a table, an index or a column
  field,      // a quoted column name, or its position in the key
  plainName,  // an unquoted name of a column of the buffer
};

// An operation of the script language. An operation without a target is a function.
struct Operation {
  Type of;  // type of the target; Type::nothing for functions
  std::string_view name;
  Op op;
  Type gives;
  int arguments;
  Argument kinds[2];
};

inline constexpr Operation operations[] = {
    {Type::nothing, "open_cursor", Op::openCursor, Type::cursor, 1, {Argument::quoted}},
    {Type::nothing, "open_table", Op::openTable, Type::table, 1, {Argument::quoted}},
    {Type::nothing, "check_table_exist", Op::tableExists, Type::boolean, 1, {Argument::quoted}},
    {Type::nothing, "get_null_varchar", Op::nullVarchar, Type::null, 0, {}},
    {Type::nothing, "contains", Op::contains, Type::boolean, 2, {Argument::value, Argument::value}},
    {Type::nothing,
     "buffer_put",
     Op::bufferPut,
     Type::nothing,
     2,
     {Argument::plainName, Argument::value}},
    {Type::nothing, "buffer_move_next", Op::bufferMoveNext, Type::nothing, 0, {}},
    {Type::nothing, "set_session_tag", Op::setSessionTag, Type::nothing, 1, {Argument::value}},
    {Type::cursor, "new_empty_key_tuple", Op::newKey, Type::tuple, 0, {}},
    {Type::cursor, "get_data_tuple", Op::dataTuple, Type::tuple, 0, {}},
    {Type::cursor, "find", Op::find, Type::boolean, 1, {Argument::tuple}},
    {Type::cursor, "move_next", Op::moveNext, Type::boolean, 0, {}},
    {Type::cursor, "move_next_in_dup", Op::moveNextInDup, Type::boolean, 0, {}},
    {Type::cursor, "get_field", Op::getField, Type::any, 1, {Argument::quoted}},
    {Type::cursor, "del", Op::deleteRow, Type::nothing, 0, {}},
    {Type::cursor, "update", Op::updateRow, Type::nothing, 1, {Argument::tuple}},
    {Type::table, "get_record_number", Op::recordNumber, Type::integer, 0, {}},
    {Type::tuple, "set_field", Op::setField, Type::nothing, 2, {Argument::field, Argument::value}},
};

}  // namespace ulo::odb
