#include "result_buffer.h"

#include <cstring>

namespace ulo::odb {

static_assert(DB_MAX_COLUMNS <= 64, "a row's columns fit the bits of one word");

std::size_t ResultBuffer::Column::size() const {
  switch (type) {
  case Type::integer:
    return integers.size();
  case Type::boolean:
    return booleans.size();
  default:
    return starts.size();
  }
}

void ResultBuffer::Column::appendNull() {
  nulls.resize(size());
  nulls.push_back(true);
  append(type == Type::integer || type == Type::boolean ? Value{type, 0, {}} : Value{type, 0, ""});
}

// Requires: the value is of this column's type.
void ResultBuffer::Column::append(const Value& value) {
  switch (type) {
  case Type::integer:
    integers.push_back(static_cast<std::int32_t>(value.number));
    break;
  case Type::boolean:
    booleans.push_back(value.number != 0 ? 1 : 0);
    break;
  case Type::unicode: {
    const std::size_t start = units.size();
    starts.push_back(start);
    units.resize(start + value.text.size() / 2 + 1);
    if (!value.text.empty())
      std::memcpy(&units[start], value.text.data(), value.text.size() & ~std::size_t{1});
    break;
  }
  default:
    starts.push_back(bytes.size());
    bytes.insert(bytes.end(), value.text.begin(), value.text.end());
    bytes.push_back('\0');
  }
}

ResultBuffer::ResultBuffer(const std::vector<ColumnDeclaration>& columns) {
  for (const ColumnDeclaration& column : columns)
    columns_.push_back({column.type, {}, {}, {}, {}, {}, {}});
}

void ResultBuffer::put(int place, const Value& given) {
  const std::uint64_t bit = std::uint64_t{1} << static_cast<unsigned>(place);
  if (openColumns_ == 0 || (openColumns_ & bit) != 0) {
    if (rows_ == DB_MAX_ROWS)
      throw Failure(DB_LIMIT, "the result has more than " + std::to_string(DB_MAX_ROWS) + " rows");
    ++rows_;
    openColumns_ = 0;
  }
  openColumns_ |= bit;
  Column& column = columns_[static_cast<std::size_t>(place)];
  std::string storage;
  const Value value = fitted(given, column.type, storage);
  while (column.size() + 1 < rows_)
    column.appendNull();
  if (value.isNull())
    column.appendNull();
  else
    column.append(value);
}

int ResultBuffer::number(std::size_t row, std::size_t place) const {
  const Column& column = columns_[place];
  if (isNull(row, column))
    return 0;
  return column.type == Type::integer   ? column.integers[row]
         : column.type == Type::boolean ? column.booleans[row]
                                        : 0;
}

Value ResultBuffer::value(std::size_t row, std::size_t place) const {
  const Column& column = columns_[place];
  if (isNull(row, column))
    return {};
  if (column.type == Type::integer || column.type == Type::boolean)
    return {column.type, number(row, place), {}};
  const std::size_t start = column.starts[row];
  const bool isLast = row + 1 == column.starts.size();
  if (column.type == Type::unicode) {
    const std::size_t end = (isLast ? column.units.size() : column.starts[row + 1]) - 1;
    return {
        column.type, 0, {reinterpret_cast<const char*>(&column.units[start]), 2 * (end - start)}};
  }
  const std::size_t end = (isLast ? column.bytes.size() : column.starts[row + 1]) - 1;
  return {column.type, 0, {&column.bytes[start], end - start}};
}

const unsigned short* ResultBuffer::units(std::size_t row, std::size_t place) {
  const Value text = value(row, place);
  if (!text.isText())
    return nullptr;
  if (text.type == Type::unicode)
    return &columns_[place].units[columns_[place].starts[row]];
  converted_.push_back(toUnits(text.text) + std::string(2, '\0'));
  return reinterpret_cast<const unsigned short*>(converted_.back().data());
}

const char* ResultBuffer::bytes(std::size_t row, std::size_t place) {
  const Value text = value(row, place);
  if (!text.isText())
    return nullptr;
  if (text.type == Type::varchar)
    return text.text.data();
  converted_.push_back(toUtf8(text.text));
  return converted_.back().c_str();
}

}  // namespace ulo::odb
