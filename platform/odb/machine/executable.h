#pragma once

#include "base/value.h"
#include "compile/program.h"
#include "cursor.h"
#include "result_buffer.h"
#include "sqlite/statement.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace ulo::odb {

// A parameter of a block.
struct Parameter {
  bool isBound = false;
  OwnedValue value;
};
struct ParameterView {
  const Parameter* first = nullptr;
  std::size_t count = 0;
};

// Enables the plans of loops and row copies. Every text returns the same rows either way, which
// tests verify.
extern bool pushDownEnabled;

// Limit of loop passes per run, DB_MAX_LOOP_PASSES by default. A program that runs arbitrary texts,
// such as a fuzzer, can lower it to keep each run short.
extern int loopPassLimit;

// A program with its prepared statements on one connection.
class Executable {
public:
  // `database` must outlive the object.
  Executable(sqlite3* database, std::shared_ptr<const Program> program);

  [[nodiscard]] const Program& program() const { return *program_; }

  // The inputs and outputs of a run.
  struct Run {
    ParameterView parameters;
    const std::vector<std::int64_t>& arguments;
    ResultBuffer& result;
    std::optional<int> tag;  // set if the text sets the tag
  };
  // Runs the program once. Does not begin a transaction. Throws Failure.
  void run(Run& run);

private:
  struct Slot {
    std::int64_t number = 0;
    Tuple tuple;
    Cursor* cursor = nullptr;
  };

  void runInsert(Run& run);
  void runCreate(const Statement& statement);
  void execute(const Node& node);
  void executeBlock(const Node& node);
  void executeLoop(const Node& node);
  void executePlanned(const Node& node, const LoopPlan& plan);
  void copyRow(const RowCopy& copy);
  void copyRows(const Node& node, const RowCopy& copy, Cursor& cursor);
  void executeOnward(const Node& node, Cursor& cursor, Slot& found);
  void walk(const Node& node);
  // Counts a loop pass. Throws Failure if there are too many.
  void onePass(const Node& node) {
    if (++loopPasses_ > loopPassLimit)
      tooManyPasses(node);
  }
  [[noreturn]] static void tooManyPasses(const Node& node);
  bool filterValues(const std::vector<Condition>& conditions, std::vector<Value>& values) const;
  void declare(const Node& node);
  Value evaluate(const Node& node);
  static Value literal(const Node& node);
  [[nodiscard]] bool truth(const Node& node);
  [[nodiscard]] bool holds(const Node& node);
  [[nodiscard]] bool containsText(const Node& node);
  Value arithmetic(const Node& node);
  [[nodiscard]] bool isBound(const Node& parameter) const;
  // The value of a literal, a parameter or a number of the template.
  [[nodiscard]] Value constant(const Node& node) const;
  std::int64_t count(const Table& table);
  bool tableExists(const std::string& name);
  Slot& slotOf(const Node& node) { return slots_[static_cast<std::size_t>(node.slot)]; }
  Cursor& cursorOf(const Node& node) { return *slotOf(node).cursor; }

  sqlite3* database_;
  std::shared_ptr<const Program> program_;
  std::vector<std::unique_ptr<Cursor>> cursors_;
  std::vector<Slot> slots_;
  std::unique_ptr<SqlStatement> insert_;
  std::map<const Table*, std::unique_ptr<SqlStatement>> counts_;
  std::unique_ptr<SqlStatement> tableExists_;
  Run* run_ = nullptr;
  int loopPasses_ = 0;
};

}  // namespace ulo::odb
