// The SQL of cursors. Statements that return rows select the columns in the plan's `fetched`.
#pragma once

#include "base/catalog.h"
#include "plan.h"

#include <string>
#include <vector>

namespace ulo::odb {

// All rows in order.
std::string walkSql(const CursorPlan& plan);
// The rows that match the plan's filter, in order; all of them will be read. The parameters are the
// filter operands.
std::string filteredWalkSql(const CursorPlan& plan);
// The number of rows that match the filter.
std::string filteredCountSql(const CursorPlan& plan);
// The rows whose `columns`, which belong to the key, equal the parameters, in order. The parameters
// are in key order.
std::string findSql(const CursorPlan& plan, const std::vector<int>& columns);
// The rows after a position: the first `level` columns of the order equal the parameters, and the
// next column is after its parameter, is not null, or is null. If `filtered`, the filter operands
// are further parameters.
enum class Behind { value, notNull, null };
std::string behindSql(const CursorPlan& plan, int level, Behind behind, bool filtered = false);
// The row with a UID.
std::string rowSql(const CursorPlan& plan);
std::string deleteSql(const CursorPlan& plan);
// Deletes all rows.
std::string deleteAllSql(const CursorPlan& plan);
// Sets table columns to the parameters; the UID is the last parameter.
std::string updateSql(const CursorPlan& plan, const std::vector<int>& columns);
// The number of rows of a table.
std::string countSql(const Table& table);

}  // namespace ulo::odb
