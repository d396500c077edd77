#pragma once

#include "base/value.h"
#include "compile/cursor_sql.h"
#include "compile/plan.h"
#include "sqlite/statement.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

namespace ulo::odb {

// The fields that a script has set in a tuple, by table column.
class Tuple {
public:
  void clear() { columns_.clear(); }
  void set(int column, const Value& value);

  // The columns that are set, in ascending order.
  [[nodiscard]] const std::vector<int>& columns() const { return columns_; }
  [[nodiscard]] bool has(int column) const {
    return std::binary_search(columns_.begin(), columns_.end(), column);
  }
  // Requires: the field is set. Valid until it is set again.
  [[nodiscard]] Value value(int column) const {
    return values_[static_cast<std::size_t>(column)].view();
  }

private:
  std::vector<int> columns_;
  std::vector<OwnedValue> values_;  // by column; clear() keeps their memory
};

// A cursor of a running script. Keeps its statements for the next run.
class Cursor {
public:
  // Both must outlive the cursor.
  Cursor(sqlite3* database, const CursorPlan& plan) : database_(database), plan_(plan) {}

  // Opens the cursor before the first row.
  void open();
  // Ends all reading. The cursor is then not on a row.
  void close();

  // Returns true if the cursor has not been moved since it was opened.
  [[nodiscard]] bool isBeforeFirst() const { return where_ == Where::beforeFirst; }
  // Allows the cursor to skip rows that do not match the plan's filter. `values` are the filter
  // operands; they must remain valid until the next call. If null or empty, no row is skipped.
  void setFilter(const std::vector<Value>* values) { filter_ = values; }
  // Restricts moveNext to the rows that match the filter. The caller will read all of them.
  // Requires: the cursor is before the first row.
  void walkFiltered();
  // Moves to each matching row in turn and calls `row` with the statement that holds it. Requires
  // the same.
  template <typename Row> void forEachFiltered(Row row) {
    walkFiltered();
    while (live_->step())
      row(*live_);
    live_ = nullptr;
    where_ = Where::end;
  }
  // Returns the number of matching rows and moves past the last one. Requires the same.
  std::int64_t countFiltered();

  // Deletes all rows and moves past the last one. Requires the same.
  void deleteAll();

  // Moves to the first row whose key equals the fields of `key`, including nulls. Returns false and
  // is not on a row if there is none.
  bool find(const Tuple& key);
  // Moves to the next row in order, even if the current row was deleted. Returns false and is not
  // on a row after the last row and after a failed find.
  bool moveNext();
  // Moves to the next row with the same key. Returns false and is not on a row if there is none;
  // moveNext continues from there.
  bool moveNextInDup();

  // Returns null if the cursor is not on a row. Valid until the cursor moves. `place` is an index
  // into the plan's `fetched`.
  [[nodiscard]] Value field(int place) const;
  [[nodiscard]] Type typeAt(int place) const {
    return typeOf(plan_.fetched[static_cast<std::size_t>(place)]);
  }
  // Both throw Failure if there is no current row.
  void deleteRow();
  void update(const Tuple& data);

private:
  enum class Where {
    beforeFirst,
    found,    // positioned by find; following rows have not been looked up yet
    walking,  // rows come from `live_`, then from `ahead_`
    end,
  };
  // Rows that follow in order: those after the position at one level of the key.
  struct Stretch {
    int level;
    Behind behind;
  };

  [[nodiscard]] Type typeOf(int column) const {
    return plan_.source.table->columns[static_cast<std::size_t>(column)].type;
  }
  void bindFilter(SqlStatement& statement, int firstParameter);
  SqlStatement& prepared(std::unique_ptr<SqlStatement>& statement, const std::string& sql);
  void requireRow(const char* what) const;
  void keepPosition();
  void goOnAfterKey();
  bool startNextStretch();
  bool stepLive(bool sameKeyOnly);
  bool advance(bool sameKeyOnly);
  SqlStatement* fetchRow(std::int64_t uid);

  sqlite3* database_;
  const CursorPlan& plan_;

  Where where_ = Where::beforeFirst;
  SqlStatement* row_ = nullptr;       // holds the current row; null if there is none
  bool rowIsDeleted_ = false;         // the current row was deleted; its position is kept
  SqlStatement* live_ = nullptr;      // yields the next rows
  bool liveIsSameKey_ = false;        // all of its rows have the key of the position
  std::vector<Stretch> ahead_;        // to read after `live_`; last one first
  std::vector<OwnedValue> position_;  // values of the order's columns; empty if not kept
  // If the plan lists first: the UIDs of the next rows, last one first.
  std::optional<std::vector<std::int64_t>> listed_;

  const std::vector<Value>* filter_ = nullptr;

  std::unique_ptr<SqlStatement> walk_;
  std::unique_ptr<SqlStatement> filteredWalk_;
  std::unique_ptr<SqlStatement> filteredCount_;
  std::unique_ptr<SqlStatement> byUid_;
  std::unique_ptr<SqlStatement> delete_;
  std::unique_ptr<SqlStatement> deleteAll_;
  // By the columns searched or set.
  std::map<std::vector<int>, std::unique_ptr<SqlStatement>> finds_;
  std::map<std::vector<int>, std::unique_ptr<SqlStatement>> updates_;
  std::map<std::tuple<int, Behind, bool>, std::unique_ptr<SqlStatement>> stretches_;
};

}  // namespace ulo::odb
