#pragma once

#include "base/value.h"
#include "statement.h"

namespace ulo::odb {

// Binds a value to a parameter (from 1) for a column of type `type`. Copies its text. Throws
// Failure(DB_BAD_TYPE) if the value does not fit the column.
void bind(SqlStatement& statement, int parameter, const Value& value, Type type);

// Returns a column (from 0) of the current row, which belongs to a table column of type `type`. Its
// text is valid until the next step.
Value columnValue(const SqlStatement& statement, int column, Type type);

}  // namespace ulo::odb
