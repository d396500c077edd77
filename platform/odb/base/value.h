#pragma once

#include "type.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ulo::odb {

// A value of a running text. Strings are views: of a column of the current row, of a parameter, or
// of the tree. 16-bit units are stored as bytes in native order, because SQLite does not align
// them.
struct Value {
  Type type = Type::null;  // null, integer, boolean, unicode or varchar
  std::int64_t number = 0;
  std::string_view text;

  static Value integer(std::int64_t number) { return {Type::integer, number, {}}; }
  static Value boolean(bool truth) { return {Type::boolean, truth ? 1 : 0, {}}; }

  [[nodiscard]] bool isNull() const { return type == Type::null; }
  [[nodiscard]] bool isNumber() const { return type == Type::integer || type == Type::boolean; }
  [[nodiscard]] bool isText() const { return type == Type::unicode || type == Type::varchar; }
};

// A value that owns its text.
class OwnedValue {
public:
  OwnedValue() = default;
  explicit OwnedValue(const Value& value)
      : type_(value.type), number_(value.number), text_(value.text) {}
  // Copies a value, reusing the memory already allocated.
  void assign(const Value& value) {
    type_ = value.type;
    number_ = value.number;
    text_.assign(value.text);
  }
  // Valid until the object is modified or destroyed.
  [[nodiscard]] Value view() const { return {type_, number_, text_}; }

private:
  Type type_ = Type::null;
  std::int64_t number_ = 0;
  std::string text_;
};

// Converts to UTF-8. Lone surrogates become U+FFFD.
std::string toUtf8(std::string_view unitBytes);
// Converts to 16-bit units. Bytes that are not UTF-8 become U+FFFD.
std::string toUnits(std::string_view utf8);

// Returns -1, 0 or 1. Requires: neither is null. Texts compare by their bytes (a unicode text as
// UTF-8). Throws Failure if one is a number and the other a text.
int compare(const Value& left, const Value& right);

// Returns true if `text` contains `part`, with the same case; every text contains an empty one.
// Requires: neither is null. Two varchar texts are compared by their bytes, others by their 16-bit
// units. Throws Failure(DB_BAD_TYPE) if one is a number.
bool contains(const Value& text, const Value& part);
// The same for the bytes of 16-bit units.
bool containsUnits(std::string_view text, std::string_view part);

// Converts the value to type `target`: integer, boolean, unicode or varchar. `storage` holds the
// text if it had to be converted. Throws Failure(DB_BAD_TYPE) if the value does not fit.
Value fitted(const Value& value, Type target, std::string& storage);

}  // namespace ulo::odb
