#pragma once

#include "cursor.h"
#include "program.h"
#include "result_buffer.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace ulo::odb {

// The parameters of a block.
struct Parameter {
  bool isBound = false;
  OwnedValue value;
};
struct ParameterView {
  const Parameter* first = nullptr;
  std::size_t count = 0;
};

// Whether the plans of loops and row copies are used. Every text gives the same rows either way;
// tests compare them.
extern bool pushDownEnabled;

// Passes through all loops of one run, DB_MAX_LOOP_PASSES. A text may use them all for nothing;
// where any text is run, as by a fuzzer, a lower limit keeps each of them short.
extern int loopPassLimit;

// A program with the statements that it has prepared so far, on one connection.
class Executable {
public:
  // `database` must outlive it.
  Executable(sqlite3* database, std::shared_ptr<const Program> program);

  [[nodiscard]] const Program& program() const { return *program_; }

  // What a run needs and gives besides its rows.
  struct Run {
    ParameterView parameters;
    const std::vector<std::int64_t>& arguments;
    ResultBuffer& result;
    std::optional<int> tag;  // set when the text sets the tag
  };
  // Runs it once, without a transaction of its own. Throws Failure.
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
  // Throws Failure when there have been too many.
  void onePass(const Node& node) {
    if (++loopPasses_ > loopPassLimit)
      tooManyPasses(node);
  }
  [[noreturn]] static void tooManyPasses(const Node& node);
  bool filterValues(const CursorPlan& plan, std::vector<Value>& values) const;
  void declare(const Node& node);
  Value evaluate(const Node& node);
  static Value literal(const Node& node);
  [[nodiscard]] bool truth(const Node& node);
  [[nodiscard]] bool holds(const Node& node);
  Value arithmetic(const Node& node);
  Value parameter(const Node& node) const;
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
