#pragma once

#include "program.h"
#include "sqlite/statement.h"
#include "value.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

namespace ulo::odb {

// The fields that a script set in a tuple, by their table columns.
class Tuple {
public:
  void clear() { columns_.clear(); }
  void set(int column, const Value& value);

  // Those that are set, ascending.
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
  std::vector<OwnedValue> values_;  // by column; they keep their memory
};

// A cursor of a running script. It keeps its statements for the next run.
class Cursor {
public:
  // Both must outlive the cursor.
  Cursor(sqlite3* database, const CursorPlan& plan) : database_(database), plan_(plan) {}

  // Before the first row.
  void open();
  // Ends all reading; the cursor stands on no row.
  void close();

  // Whether it has not been moved since it was opened.
  [[nodiscard]] bool isBeforeFirst() const { return where_ == Where::beforeFirst; }
  // From here on the rows that don't pass the plan's filter may be left out; `values` are those
  // that it compares with, and live until the next call. Empty: no row is left out.
  void setFilter(const std::vector<Value>* values) { filter_ = values; }
  // Makes the rows that pass the filter the ones that moveNext goes to; all of them will be asked
  // for. Requires: before the first row.
  void walkFiltered();
  // Goes to each of them in turn and calls `row`, with the statement that holds it.
  template <typename Row> void forEachFiltered(Row row) {
    walkFiltered();
    while (live_->step())
      row(*live_);
    live_ = nullptr;
    where_ = Where::end;
  }
  // The number of rows that pass it; the cursor is behind the last one then. Requires the same.
  std::int64_t countFiltered();

  // Deletes all rows; the cursor is behind the last one then. Requires the same.
  void deleteAll();

  // To the first row whose key equals the fields of `key`, nulls included. False, and on no row,
  // when there is none.
  bool find(const Tuple& key);
  // To the next row of the order; also after the current row was deleted. False, and on no row,
  // behind the last one and after a find that failed.
  bool moveNext();
  // To the next row with the same key. False, and on no row, when there is none; moveNext goes on
  // from there.
  bool moveNextInDup();

  // Null when the cursor stands on no row. Valid until the cursor moves. `place` counts in the
  // plan's `fetched`.
  [[nodiscard]] Value field(int place) const;
  [[nodiscard]] Type typeAt(int place) const {
    return typeOf(plan_.fetched[static_cast<std::size_t>(place)]);
  }
  // Both require a current row, else they throw Failure.
  void deleteRow();
  void update(const Tuple& data);

private:
  enum class Where {
    beforeFirst,
    found,    // where find went: further rows are to be looked for
    walking,  // rows come from `live_`, then from `ahead_`
    end,
  };
  // Rows that follow in the order: those behind the position at one level of the key.
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
  SqlStatement* row_ = nullptr;       // holds the current row, null when there is none
  bool rowIsDeleted_ = false;         // the current row was deleted; its position is kept
  SqlStatement* live_ = nullptr;      // the next rows come from it
  bool liveIsSameKey_ = false;        // and they all have the key of the position
  std::vector<Stretch> ahead_;        // after `live_`, the last one first
  std::vector<OwnedValue> position_;  // of the order's columns; empty when not kept
  std::optional<std::vector<std::int64_t>> listed_;  // when the plan lists first: UIDs, the last
                                                     // one first

  const std::vector<Value>* filter_ = nullptr;

  std::unique_ptr<SqlStatement> walk_;
  std::unique_ptr<SqlStatement> filteredWalk_;
  std::unique_ptr<SqlStatement> filteredCount_;
  std::unique_ptr<SqlStatement> byUid_;
  std::unique_ptr<SqlStatement> delete_;
  std::unique_ptr<SqlStatement> deleteAll_;
  // By the columns that are looked for or set.
  std::map<std::vector<int>, std::unique_ptr<SqlStatement>> finds_;
  std::map<std::vector<int>, std::unique_ptr<SqlStatement>> updates_;
  std::map<std::tuple<int, Behind, bool>, std::unique_ptr<SqlStatement>> stretches_;
};

}  // namespace ulo::odb
