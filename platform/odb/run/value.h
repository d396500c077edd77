#pragma once

#include "script/ast.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ulo::odb {

// A value while a text runs. A text is a view: of a column of the current row, of a parameter, of
// the tree. 16-bit units are kept as their bytes in the machine's order, for SQLite aligns them
// as it likes.
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
  // Takes over a value in the memory that it has.
  void assign(const Value& value) {
    type_ = value.type;
    number_ = value.number;
    text_.assign(value.text);
  }
  // Valid while this object lives unchanged.
  [[nodiscard]] Value view() const { return {type_, number_, text_}; }

private:
  Type type_ = Type::null;
  std::int64_t number_ = 0;
  std::string text_;
};

// Text in UTF-8: lone surrogates become U+FFFD.
std::string toUtf8(std::string_view unitBytes);
// Text in 16-bit units; bytes that are not UTF-8 become U+FFFD.
std::string toUnits(std::string_view utf8);

// -1, 0 or 1. Requires: neither is null. Texts compare by their bytes (a unicode one as UTF-8).
// Throws Failure when one is a number and the other a text.
int compare(const Value& left, const Value& right);

// The value as it fits a place of type `target`: integer, boolean, unicode or varchar. `storage`
// holds its text where it had to be converted. Throws Failure(DB_BAD_TYPE) when it doesn't fit.
Value fitted(const Value& value, Type target, std::string& storage);

}  // namespace ulo::odb
