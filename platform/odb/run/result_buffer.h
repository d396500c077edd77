#pragma once

#include "value.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace ulo::odb {

// The rows that a script puts out, kept by columns: a number takes four bytes, a bool one, a text
// its units and an offset. No cell has memory of its own.
class ResultBuffer {
public:
  explicit ResultBuffer(const std::vector<ColumnDeclaration>& columns);

  // Puts a value into the current row; into the next row when the current one holds that column
  // already. Throws Failure.
  void put(int column, const Value& value);
  // Ends the current row. Nothing happens when nothing was put since the last one ended.
  void endRow() { openColumns_ = 0; }

  [[nodiscard]] std::size_t rows() const { return rows_; }
  [[nodiscard]] std::size_t columns() const { return columns_.size(); }
  // Null where nothing was put. Requires: row < rows(), column < columns().
  [[nodiscard]] Value value(std::size_t row, std::size_t column) const;
  // The number of an integer or bool column, else 0. Same requirements.
  [[nodiscard]] int number(std::size_t row, std::size_t column) const;
  // Zero-terminated; null for a null or a number. Valid while the buffer lives and is not
  // written. Same requirements.
  const unsigned short* units(std::size_t row, std::size_t column);
  const char* bytes(std::size_t row, std::size_t column);

private:
  // A column may be shorter than the buffer: what is missing is null.
  struct Column {
    Type type;
    std::vector<std::int32_t> integers;
    std::vector<std::uint8_t> booleans;
    std::vector<std::size_t> starts;    // of texts, in their pool
    std::vector<unsigned short> units;  // texts with their terminators
    std::vector<char> bytes;
    std::vector<bool> nulls;  // empty while there is none

    [[nodiscard]] std::size_t size() const;
    void append(const Value& value);
    void appendNull();
  };

  [[nodiscard]] bool isNull(std::size_t row, const Column& column) const {
    return row >= column.size() || (row < column.nulls.size() && column.nulls[row]);
  }

  std::vector<Column> columns_;
  std::deque<std::string> converted_;  // texts that were asked for in the other form
  std::size_t rows_ = 0;
  std::uint64_t openColumns_ = 0;  // bits of the columns put into the row that is not ended
};

}  // namespace ulo::odb
