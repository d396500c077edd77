#include "explain.h"

#include "base/failure.h"
#include "base/ulodb2_codes.h"
#include "compile/cursor_sql.h"
#include "compile/statement_sql.h"
#include "script/parser.h"
#include "script/printer.h"

#include <cstring>
#include <exception>
#include <memory>

namespace ulo::odb {
namespace {

std::string valueText(const Value& value) {
  switch (value.type) {
  case Type::null:
    return "null";
  case Type::boolean:
    return value.number != 0 ? "true" : "false";
  case Type::unicode:
    return "'" + toUtf8(value.text) + "'";
  case Type::varchar:
    return "'" + std::string(value.text) + "'";
  default:
    return std::to_string(value.number);
  }
}

// Lists the SQL statements that a cursor may execute, each with its purpose.
void listSql(const CursorPlan& plan, const std::string& name, const LineSink& line) {
  const auto list = [&](const std::string& what, const std::string& sql) {
    line("$" + name + " " + what + ": " + sql);
  };
  if (plan.moves && !plan.finds && !plan.empties)
    list("walk", plan.filter.empty() ? walkSql(plan) : filteredWalkSql(plan));
  if (plan.finds) {
    std::vector<int> whole;
    for (const KeyColumn& column : plan.source.key)
      whole.push_back(column.column);
    list("find", findSql(plan, whole));
  }
  const auto keySize = static_cast<int>(plan.source.key.size());
  if (plan.finds && plan.moves)
    for (int level = keySize - 1; level >= 0; --level)
      list("behind", behindSql(plan, level, Behind::value, !plan.filter.empty()));
  if (plan.movesInDup && plan.order.size() > plan.source.key.size())
    list("same key", behindSql(plan, keySize, Behind::value));
  if (plan.listsFirst)
    list("row", rowSql(plan));
  if (plan.deletes)
    list("del", plan.empties ? deleteAllSql(plan) : deleteSql(plan));
  if (plan.updates)
    line("$" + name + " update: the fields that were set");
}

// Passes every SQL statement that runs to `line` during its lifetime. An exception from `line` must
// not propagate through SQLite: it interrupts the run, and `check` rethrows it.
class Trace {
public:
  Trace(sqlite3* database, const LineSink& line) : database_(database), line_(line) {
    sqlite3_trace_v2(database, SQLITE_TRACE_STMT, &Trace::statement, this);
  }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  ~Trace() { sqlite3_trace_v2(database_, 0, nullptr, nullptr); }

  void check() const {
    if (thrown_)
      std::rethrow_exception(thrown_);
  }

private:
  static int statement(unsigned, void* context, void* handle, void* text) {
    auto& trace = *static_cast<Trace*>(context);
    // Statements run by triggers are reported as comments; the triggers are those of the journal.
    if (trace.thrown_ || std::strncmp(static_cast<const char*>(text), "--", 2) == 0)
      return 0;
    try {
      trace.tell(static_cast<sqlite3_stmt*>(handle));
    } catch (...) {
      trace.thrown_ = std::current_exception();
      sqlite3_interrupt(trace.database_);
    }
    return 0;
  }

  void tell(sqlite3_stmt* statement) const {
    line_(std::string("sql: ") + sqlite3_sql(statement));
    if (sqlite3_bind_parameter_count(statement) == 0)
      return;
    struct Free {
      void operator()(char* text) const { sqlite3_free(text); }
    };
    const std::unique_ptr<char, Free> expanded(sqlite3_expanded_sql(statement));
    line_(std::string("  as: ") + (expanded == nullptr ? "" : expanded.get()));
  }

  sqlite3* database_;
  std::exception_ptr thrown_;
  const LineSink& line_;
};

}  // namespace

void explain(Session& session, const std::string& text, int what, ParameterView parameters,
             const LineSink& line) {
  if (text.size() > DB_MAX_TEXT)
    throw Failure(DB_LIMIT, "the text is longer than " + std::to_string(DB_MAX_TEXT) + " bytes");
  if ((what & DB_EXPLAIN_TOKENS) != 0)
    for (const std::string& token : listTokens(text))
      line("token " + token);
  if ((what & DB_EXPLAIN_TREE) != 0)
    for (const std::string& node :
         isScript(text) ? listTree(parseScript(text)) : listTree(parseStatement(text)))
      line("tree  " + node);
  if ((what & DB_EXPLAIN_SQL) != 0) {
    const std::shared_ptr<const Program> program = session.program(text);
    for (const Variable& variable : program->variables) {
      if (variable.type == Type::cursor)
        listSql(program->cursors[static_cast<std::size_t>(variable.cursor)], variable.name, line);
      if (variable.type == Type::table)
        line("$" + variable.name + " count: " + countSql(*variable.table));
    }
    if (program->statement)
      line(program->statement->kind == Statement::Kind::insert ? insertSql(*program->statement)
           : program->statement->kind == Statement::Kind::createTable
               ? createTableSql(*program->statement)
               : createIndexSql(*program->statement));
  }
  if ((what & DB_EXPLAIN_RUN) == 0)
    return;
  Session::Answer answer;
  {
    Executable executable(session.handle(), session.program(text));
    const Trace trace(session.handle(), line);
    try {
      answer = session.run(executable, {}, parameters, [&] { trace.check(); });
    } catch (const Failure&) {
      trace.check();
      throw;
    }
  }
  const ResultBuffer& result = *answer.rows;
  for (std::size_t row = 0; row < result.rows(); ++row) {
    std::string cells = "row:";
    for (std::size_t column = 0; column < result.columns(); ++column)
      cells += (column > 0 ? " | " : " ") + valueText(result.value(row, column));
    line(cells);
  }
  if (answer.tag)
    line("tag: " + std::to_string(*answer.tag));
}

}  // namespace ulo::odb
