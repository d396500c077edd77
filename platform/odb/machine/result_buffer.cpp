#include "result_buffer.h"

#include "base/failure.h"

#include <cstring>

namespace ulo::odb {

static_assert(DB_MAX_COLUMNS <= 64, "a row's columns fit the bits of one word");

// Most results are short: a page, a record.
void ResultBuffer::Column::reserveFirst() {
  constexpr std::size_t firstRows = 16;
  if (type_ == Type::integer)
    integers_.reserve(firstRows);
  else if (type_ == Type::boolean)
    booleans_.reserve(firstRows);
  else
    starts_.reserve(firstRows);
}

void ResultBuffer::Column::appendText(std::string_view text) {
  if (type_ == Type::unicode) {
    const std::size_t start = units_.size();
    starts_.push_back(start);
    units_.resize(start + text.size() / 2 + 1);
    if (!text.empty())
      std::memcpy(&units_[start], text.data(), text.size() & ~std::size_t{1});
  } else {
    starts_.push_back(bytes_.size());
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    bytes_.push_back('\0');
  }
}

void ResultBuffer::Column::putOther(const Value& given) {
  std::string storage;
  const Value value = fitted(given, type_, storage);
  if (!value.isNull())
    return append(value);
  nulls_.resize(size_);
  nulls_.push_back(true);
  append({type_, 0, {}});
}

Value ResultBuffer::Column::value(std::size_t row) const {
  if (type_ == Type::integer || type_ == Type::boolean)
    return {type_, number(row), {}};
  const std::size_t start = starts_[row];
  const bool isLast = row + 1 == starts_.size();
  const std::size_t poolSize = type_ == Type::unicode ? units_.size() : bytes_.size();
  const std::size_t size = (isLast ? poolSize : starts_[row + 1]) - 1 - start;
  if (type_ == Type::unicode)
    return {type_, 0, {reinterpret_cast<const char*>(&units_[start]), 2 * size}};
  return {type_, 0, {&bytes_[start], size}};
}

void ResultBuffer::Column::fillUp(std::size_t size, const Value& value) {
  if (value.type == Type::boolean && type_ == Type::boolean) {
    booleans_.resize(size, value.number != 0 ? 1 : 0);
    size_ = size;
  }
  while (size_ < size)
    put(value);
}

ResultBuffer::ResultBuffer(const std::vector<ColumnDeclaration>& columns) {
  columns_.reserve(columns.size());
  for (const ColumnDeclaration& column : columns)
    columns_.emplace_back(column.type);
}

void ResultBuffer::tooManyRows() {
  throw Failure(DB_LIMIT, "the result has more than " + std::to_string(DB_MAX_ROWS) + " rows");
}

void ResultBuffer::put(int place, const Value& value) {
  const std::uint64_t bit = std::uint64_t{1} << static_cast<unsigned>(place);
  const bool startsRow = openColumns_ == 0 || (openColumns_ & bit) != 0;
  Column& column = columns_[static_cast<std::size_t>(place)];
  column.fill(startsRow ? rows_ : rows_ - 1, {});
  if (startsRow) {
    addRow();
    openColumns_ = 0;
  }
  openColumns_ |= bit;
  column.put(value);
}

Value ResultBuffer::value(std::size_t row, std::size_t place) const {
  const Column& column = columns_[place];
  return column.isNull(row) ? Value() : column.value(row);
}

const unsigned short* ResultBuffer::units(std::size_t row, std::size_t place,
                                          Converted& converted) const {
  const Value text = value(row, place);
  if (!text.isText())
    return nullptr;
  // The pools align units and terminate each text with a zero.
  if (text.type == Type::unicode)
    return reinterpret_cast<const unsigned short*>(text.text.data());
  converted.push_back(toUnits(text.text) + std::string(2, '\0'));
  return reinterpret_cast<const unsigned short*>(converted.back().data());
}

const char* ResultBuffer::bytes(std::size_t row, std::size_t place, Converted& converted) const {
  const Value text = value(row, place);
  if (!text.isText())
    return nullptr;
  if (text.type == Type::varchar)
    return text.text.data();
  converted.push_back(toUtf8(text.text));
  return converted.back().c_str();
}

}  // namespace ulo::odb
