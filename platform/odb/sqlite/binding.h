#pragma once

#include "run/value.h"
#include "statement.h"

namespace ulo::odb {

// Binds a value to a parameter (from 1) that stands for a column of type `type`; a copy of its
// text is taken. Throws Failure(DB_BAD_TYPE) when it doesn't fit the column.
void bind(SqlStatement& statement, int parameter, const Value& value, Type type);

// A column (from 0) of the current row, of a table column of type `type`. Its text is valid until
// the next step.
Value columnValue(const SqlStatement& statement, int column, Type type);

}  // namespace ulo::odb
