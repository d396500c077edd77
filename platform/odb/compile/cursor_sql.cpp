#include "cursor_sql.h"

#include "base/sql_name.h"

#include <algorithm>
#include <functional>

namespace ulo::odb {
namespace {

const std::string& columnName(const CursorPlan& plan, int column) {
  return plan.source.table->columns[static_cast<std::size_t>(column)].name;
}

std::string quotedColumn(const CursorPlan& plan, int column) {
  return quoteName(columnName(plan, column));
}

std::string select(const CursorPlan& plan) {
  std::string sql = "SELECT ";
  for (std::size_t i = 0; i < plan.fetched.size(); ++i)
    sql += (i > 0 ? ", " : "") + quotedColumn(plan, plan.fetched[i]);
  return sql + " FROM " + quoteName(plan.source.table->name);
}

std::string uidEquals(const CursorPlan& plan) {
  return " WHERE " + quotedColumn(plan, plan.source.table->uid) + " = ?";
}

const char* sqlOperator(Op op) {
  switch (op) {
  case Op::equal:
    return " = ?";
  case Op::notEqual:
    return " <> ?";
  case Op::less:
    return " < ?";
  case Op::lessEqual:
    return " <= ?";
  case Op::greater:
    return " > ?";
  default:
    return " >= ?";
  }
}

std::string conditionSql(const CursorPlan& plan, const Condition& condition);

std::string joined(const CursorPlan& plan, const std::vector<Condition>& conditions,
                   const char* word) {
  std::string sql;
  for (const Condition& condition : conditions)
    sql += (sql.empty() ? "" : word) + conditionSql(plan, condition);
  return sql;
}

std::string conditionSql(const CursorPlan& plan, const Condition& condition) {
  switch (condition.op) {
  case Op::logicalAnd:
    return joined(plan, condition.parts, " AND ");
  case Op::logicalOr:
    return "(" + joined(plan, condition.parts, " OR ") + ")";
  case Op::contains:
    return std::string(containsFunction) + "(" + quotedColumn(plan, condition.column) + ", ?)";
  default:
    return quotedColumn(plan, condition.column) + sqlOperator(condition.op);
  }
}

std::string filter(const CursorPlan& plan, const char* before) {
  return plan.filter.empty() ? "" : before + joined(plan, plan.filter, " AND ");
}

bool allColumns(const std::vector<Condition>& conditions, const std::function<bool(int)>& holds) {
  return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
    return condition.parts.empty() ? holds(condition.column) : allColumns(condition.parts, holds);
  });
}

// Returns true if walking the key's index would look up each row in the table only to skip many of
// them. It is then cheaper to scan the table and sort the matching rows, but without statistics
// SQLite would walk the index. If all rows are wanted, sorting them costs as much as it saves.
bool sortsCheaper(const CursorPlan& plan) {
  const int uid = plan.source.table->uid;
  const auto inOrder = [&](int column) {
    return std::any_of(plan.order.begin(), plan.order.end(),
                       [&](const KeyColumn& key) { return key.column == column; });
  };
  const int first = plan.source.key.front().column;
  const bool isRange = std::any_of(plan.filter.begin(), plan.filter.end(), [&](const Condition& c) {
    return c.column == first && c.op != Op::notEqual && c.op != Op::contains;
  });
  const bool isCovered = std::all_of(plan.fetched.begin(), plan.fetched.end(), inOrder) &&
                         allColumns(plan.filter, inOrder);
  return !plan.filter.empty() && first != uid && !isRange && !isCovered;
}

// Sorts by the columns of the order from `level` on.
std::string orderBy(const CursorPlan& plan, std::size_t level) {
  std::string sql;
  for (std::size_t i = level; i < plan.order.size(); ++i)
    sql += (sql.empty() ? " ORDER BY " : ", ") + quotedColumn(plan, plan.order[i].column) +
           (plan.order[i].descending ? " DESC" : "");
  return sql;
}

}  // namespace

std::string walkSql(const CursorPlan& plan) {
  return select(plan) + orderBy(plan, 0);
}

std::string filteredWalkSql(const CursorPlan& plan) {
  return select(plan) + (sortsCheaper(plan) ? " NOT INDEXED" : "") + filter(plan, " WHERE ") +
         orderBy(plan, 0);
}

std::string filteredCountSql(const CursorPlan& plan) {
  return countSql(*plan.source.table) + filter(plan, " WHERE ");
}

std::string findSql(const CursorPlan& plan, const std::vector<int>& columns) {
  std::string where;
  for (const KeyColumn& key : plan.source.key)
    if (std::find(columns.begin(), columns.end(), key.column) != columns.end())
      where += (where.empty() ? " WHERE " : " AND ") + quotedColumn(plan, key.column) + " IS ?";
  return select(plan) + where + orderBy(plan, 0);
}

std::string behindSql(const CursorPlan& plan, int level, Behind behind, bool filtered) {
  const auto place = static_cast<std::size_t>(level);
  std::string sql = select(plan) + " WHERE ";
  for (std::size_t i = 0; i < place; ++i)
    sql += quotedColumn(plan, plan.order[i].column) + " IS ? AND ";
  sql += quotedColumn(plan, plan.order[place].column);
  switch (behind) {
  case Behind::value:
    sql += plan.order[place].descending ? " < ?" : " > ?";
    break;
  case Behind::notNull:
    sql += " IS NOT NULL";
    break;
  case Behind::null:
    sql += " IS NULL";
    break;
  }
  return sql + (filtered ? filter(plan, " AND ") : "") + orderBy(plan, place);
}

std::string rowSql(const CursorPlan& plan) {
  return select(plan) + uidEquals(plan);
}

std::string deleteSql(const CursorPlan& plan) {
  return deleteAllSql(plan) + uidEquals(plan);
}

std::string deleteAllSql(const CursorPlan& plan) {
  return "DELETE FROM " + quoteName(plan.source.table->name);
}

std::string updateSql(const CursorPlan& plan, const std::vector<int>& columns) {
  std::string sql = "UPDATE " + quoteName(plan.source.table->name) + " SET ";
  for (std::size_t i = 0; i < columns.size(); ++i)
    sql += (i > 0 ? ", " : "") + quotedColumn(plan, columns[i]) + " = ?";
  return sql + uidEquals(plan);
}

std::string countSql(const Table& table) {
  return "SELECT count(*) FROM " + quoteName(table.name);
}

}  // namespace ulo::odb
