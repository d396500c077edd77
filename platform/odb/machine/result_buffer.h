#pragma once

#include "base/ulodb2_codes.h"
#include "base/value.h"
#include "script/ast.h"

#include <cstdint>
#include <list>
#include <vector>

namespace ulo::odb {

// The rows that a script outputs, stored by column: a number occupies four bytes, a bool one, a
// text its units and an offset. Cells do not allocate memory individually.
class ResultBuffer {
public:
  ResultBuffer() = default;
  explicit ResultBuffer(const std::vector<ColumnDeclaration>& columns);

  // Puts a value into the current row, or into a new row if the current one already has a value in
  // that column. Throws Failure.
  void put(int column, const Value& value);
  // Ends the current row. Does nothing if nothing was put since the previous row ended.
  void endRow() { openColumns_ = 0; }

  [[nodiscard]] std::size_t rows() const { return rows_; }
  [[nodiscard]] std::size_t columns() const { return columns_.size(); }
  // Null if nothing was put. Requires: row < rows(), column < columns().
  [[nodiscard]] Value value(std::size_t row, std::size_t column) const;
  // Returns the value of an integer or bool column, otherwise 0. Same requirements.
  [[nodiscard]] int number(std::size_t row, std::size_t column) const {
    return columns_[column].number(row);
  }
  // Texts that were converted from units to bytes or vice versa.
  using Converted = std::list<std::string>;
  // Zero-terminated; null for a null or a number. Valid until the buffer is modified or destroyed
  // or, if the text had to be converted, `converted` is. Same requirements.
  const unsigned short* units(std::size_t row, std::size_t column, Converted& converted) const;
  const char* bytes(std::size_t row, std::size_t column, Converted& converted) const;

  // For writing complete rows: call addRow, then put one value into each column that the rows have.
  // An open row (`rowIsOpen`) must be ended first.

  // A column may be shorter than the buffer; missing values are null.
  class Column {
  public:
    explicit Column(Type type) : type_(type) {}

    [[nodiscard]] Type type() const { return type_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    // Appends a value. Throws Failure(DB_BAD_TYPE) if it does not fit.
    void put(const Value& value) {
      if (value.type == type_)
        append(value);
      else
        putOther(value);
    }
    // Requires: an integer column.
    void putInteger(std::int64_t number) {
      integers_.push_back(static_cast<std::int32_t>(number));
      ++size_;
    }
    [[nodiscard]] bool isNull(std::size_t row) const {
      return row >= size_ || (row < nulls_.size() && nulls_[row]);
    }
    // Returns 0 for a null and for a text.
    [[nodiscard]] int number(std::size_t row) const {
      if (type_ == Type::integer)
        return row < size_ ? integers_[row] : 0;
      return row < size_ && type_ == Type::boolean ? booleans_[row] : 0;
    }
    // Requires: the row is not null.
    [[nodiscard]] Value value(std::size_t row) const;
    // Appends `value` until the column has `size` values.
    void fill(std::size_t size, const Value& value) {
      if (size_ < size)
        fillUp(size, value);
    }

  private:
    // Requires: the value has the column's type.
    void append(const Value& value) {
      if (size_++ == 0)
        reserveFirst();
      if (type_ == Type::integer)
        integers_.push_back(static_cast<std::int32_t>(value.number));
      else if (type_ == Type::boolean)
        booleans_.push_back(value.number != 0 ? 1 : 0);
      else
        appendText(value.text);
    }
    void reserveFirst();
    void appendText(std::string_view text);
    void putOther(const Value& value);
    void fillUp(std::size_t size, const Value& value);

    Type type_;
    std::size_t size_ = 0;
    std::vector<std::int32_t> integers_;
    std::vector<std::uint8_t> booleans_;
    std::vector<std::size_t> starts_;    // offsets of texts in their pool
    std::vector<unsigned short> units_;  // texts with their terminators
    std::vector<char> bytes_;
    std::vector<bool> nulls_;  // empty while there are no nulls
  };
  [[nodiscard]] bool rowIsOpen() const { return openColumns_ != 0; }
  // Valid until the buffer is moved or destroyed.
  Column& column(int place) { return columns_[static_cast<std::size_t>(place)]; }
  // Throws Failure.
  void addRow() {
    if (rows_ == DB_MAX_ROWS)
      tooManyRows();
    ++rows_;
  }

private:
  [[noreturn]] static void tooManyRows();

  std::vector<Column> columns_;
  std::size_t rows_ = 0;
  std::uint64_t openColumns_ = 0;  // bit mask of the columns put into the open row
};

}  // namespace ulo::odb
