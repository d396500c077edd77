#include "result_buffer.h"

#include <cstring>

namespace ulo::odb {

ResultBuffer::ResultBuffer(const std::vector<ColumnDeclaration>& columns) {
  for (const ColumnDeclaration& column : columns)
    types_.push_back(column.type);
}

void ResultBuffer::beginRow() {
  if (rows_ == DB_MAX_ROWS)
    throw Failure(DB_LIMIT, "the result has more than " + std::to_string(DB_MAX_ROWS) + " rows");
  cells_.resize(cells_.size() + types_.size());
  ++rows_;
  rowIsOpen_ = true;
}

void ResultBuffer::put(int column, const Value& given) {
  const auto place = static_cast<std::size_t>(column);
  if (!rowIsOpen_ || cell(rows_ - 1, place).isSet)
    beginRow();
  std::string storage;
  const Value value = fitted(given, types_[place], storage);
  Cell& target = cell(rows_ - 1, place);
  target.isSet = true;
  target.isNull = value.isNull();
  switch (value.type) {
  case Type::integer:
  case Type::boolean:
    target.value = value.number;
    break;
  case Type::unicode:
    target.value = static_cast<std::int64_t>(units_.size());
    target.size = static_cast<std::int32_t>(value.text.size() / 2);
    units_.resize(units_.size() + value.text.size() / 2 + 1);
    if (!value.text.empty())
      std::memcpy(&units_[static_cast<std::size_t>(target.value)], value.text.data(),
                  value.text.size() & ~std::size_t{1});
    break;
  case Type::varchar:
    target.value = static_cast<std::int64_t>(bytes_.size());
    target.size = static_cast<std::int32_t>(value.text.size());
    bytes_.insert(bytes_.end(), value.text.begin(), value.text.end());
    bytes_.push_back('\0');
    break;
  default:
    break;
  }
}

Value ResultBuffer::value(std::size_t row, std::size_t column) const {
  const Cell& source = cell(row, column);
  const Type type = types_[column];
  const auto start = static_cast<std::size_t>(source.value);
  const auto size = static_cast<std::size_t>(source.size);
  if (source.isNull)
    return {};
  if (type == Type::unicode)
    return {type, 0, {reinterpret_cast<const char*>(&units_[start]), 2 * size}};
  if (type == Type::varchar)
    return {type, 0, {&bytes_[start], size}};
  return {type, source.value, {}};
}

const unsigned short* ResultBuffer::units(std::size_t row, std::size_t column) {
  const Value text = value(row, column);
  if (!text.isText())
    return nullptr;
  if (text.type == Type::unicode)
    return &units_[static_cast<std::size_t>(cell(row, column).value)];
  converted_.push_back(toUnits(text.text) + std::string(2, '\0'));
  return reinterpret_cast<const unsigned short*>(converted_.back().data());
}

const char* ResultBuffer::bytes(std::size_t row, std::size_t column) {
  const Value text = value(row, column);
  if (!text.isText())
    return nullptr;
  if (text.type == Type::varchar)
    return &bytes_[static_cast<std::size_t>(cell(row, column).value)];
  converted_.push_back(toUtf8(text.text));
  return converted_.back().c_str();
}

}  // namespace ulo::odb
