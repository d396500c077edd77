#pragma once

#include "value.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace ulo::odb {

// The rows that a script puts out. All cells of a row lie beside each other, all texts in two
// pools: no cell has memory of its own.
class ResultBuffer {
public:
  explicit ResultBuffer(const std::vector<ColumnDeclaration>& columns);

  // Puts a value into the current row; into the next row when the current one holds that column
  // already. Throws Failure.
  void put(int column, const Value& value);
  // Ends the current row. Nothing happens when nothing was put since the last one ended.
  void endRow() { rowIsOpen_ = false; }

  [[nodiscard]] std::size_t rows() const { return rows_; }
  [[nodiscard]] std::size_t columns() const { return types_.size(); }
  // Null where nothing was put. Requires: row < rows(), column < columns().
  [[nodiscard]] Value value(std::size_t row, std::size_t column) const;
  // Zero-terminated; null for a null or a number. Valid while the buffer lives and is not
  // written. Same requirements.
  const unsigned short* units(std::size_t row, std::size_t column);
  const char* bytes(std::size_t row, std::size_t column);

private:
  struct Cell {
    std::int64_t value = 0;  // the number, or where in its pool the text begins
    std::int32_t size = 0;   // of a text, in units or bytes
    bool isSet = false;      // put in this row
    bool isNull = true;
  };

  void beginRow();
  Cell& cell(std::size_t row, std::size_t column) { return cells_[row * types_.size() + column]; }
  [[nodiscard]] const Cell& cell(std::size_t row, std::size_t column) const {
    return cells_[row * types_.size() + column];
  }

  std::vector<Type> types_;
  std::vector<Cell> cells_;
  std::vector<unsigned short> units_;
  std::vector<char> bytes_;
  std::deque<std::string> converted_;  // texts that were asked for in the other form
  std::size_t rows_ = 0;
  bool rowIsOpen_ = false;
};

}  // namespace ulo::odb
