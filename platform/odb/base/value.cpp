#include "value.h"

#include "failure.h"

#include <cstring>

namespace ulo::odb {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t c) {
  return c >= 0xD800 && c < 0xDC00;
}
bool isLowSurrogate(char32_t c) {
  return c >= 0xDC00 && c < 0xE000;
}

void appendUtf8(std::string& out, char32_t c) {
  const auto tail = [&](unsigned shift) {
    out += static_cast<char>(0x80U | ((c >> shift) & 0x3FU));
  };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0U | (c >> 6U));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0U | (c >> 12U));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | (c >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

void appendUnit(std::string& out, char32_t unit) {
  const auto value = static_cast<std::uint16_t>(unit);
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.append(bytes, sizeof value);
}

// Removes and returns the first character.
char32_t takeUtf8(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80)
    return lead;
  const int length = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4)
    return replacement;
  char32_t c = lead & (0x3FU >> static_cast<unsigned>(length));
  for (int i = 0; i < length; ++i) {
    if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0U) != 0x80)
      return replacement;
    c = (c << 6U) | (static_cast<unsigned char>(text.front()) & 0x3FU);
    text.remove_prefix(1);
  }
  constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
  if (c < smallest[length - 1] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
    return replacement;
  return c;
}

}  // namespace

std::string toUtf8(std::string_view unitBytes) {
  std::string result;
  const std::size_t count = unitBytes.size() / 2;
  const auto unitAt = [&](std::size_t i) {
    std::uint16_t unit = 0;
    std::memcpy(&unit, unitBytes.data() + 2 * i, sizeof unit);
    return char32_t{unit};
  };
  for (std::size_t i = 0; i < count; ++i) {
    const char32_t c = unitAt(i);
    if (isHighSurrogate(c) && i + 1 < count && isLowSurrogate(unitAt(i + 1))) {
      appendUtf8(result, 0x10000 + ((c - 0xD800) << 10U) + (unitAt(i + 1) - 0xDC00));
      ++i;
    } else {
      appendUtf8(result, isHighSurrogate(c) || isLowSurrogate(c) ? replacement : c);
    }
  }
  return result;
}

std::string toUnits(std::string_view utf8) {
  std::string result;
  while (!utf8.empty()) {
    const char32_t c = takeUtf8(utf8);
    if (c < 0x10000) {
      appendUnit(result, c);
    } else {
      appendUnit(result, 0xD800 + ((c - 0x10000) >> 10U));
      appendUnit(result, 0xDC00 + ((c - 0x10000) & 0x3FFU));
    }
  }
  return result;
}

int compare(const Value& left, const Value& right) {
  if (left.isNumber() && right.isNumber())
    return left.number < right.number ? -1 : left.number > right.number ? 1 : 0;
  if (left.isNumber() || right.isNumber())
    throw Failure(DB_BAD_TYPE, "a number is compared with a text");
  if (left.type == right.type && left.text == right.text)
    return 0;
  std::string leftBytes;
  std::string rightBytes;
  const Value a = fitted(left, Type::varchar, leftBytes);
  const Value b = fitted(right, Type::varchar, rightBytes);
  const int order = a.text.compare(b.text);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool containsUnits(std::string_view text, std::string_view part) {
  constexpr std::size_t unit = sizeof(std::uint16_t);
  const char* const end = text.data() + text.size();
  for (const char* from = text.data(); part.size() <= static_cast<std::size_t>(end - from);) {
    if (part.empty())
      return true;
    // Faster than std::string_view::find, by far.
    const auto* const found = static_cast<const char*>(
        memmem(from, static_cast<std::size_t>(end - from), part.data(), part.size()));
    if (found == nullptr)
      return false;
    if (static_cast<std::size_t>(found - text.data()) % unit == 0)
      return true;
    from = found + 1;
  }
  return false;
}

bool contains(const Value& text, const Value& part) {
  if (text.isNumber() || part.isNumber())
    throw Failure(DB_BAD_TYPE, "expected a text, found a number");
  if (text.type == Type::varchar && part.type == Type::varchar)
    return text.text.find(part.text) != std::string_view::npos;
  std::string textUnits;
  std::string partUnits;
  return containsUnits(fitted(text, Type::unicode, textUnits).text,
                       fitted(part, Type::unicode, partUnits).text);
}

Value fitted(const Value& value, Type target, std::string& storage) {
  if (value.isNull() || value.type == target)
    return value;
  if (value.isNumber() && target == Type::integer)
    return Value::integer(value.number);
  if (value.isNumber() && target == Type::boolean)
    return Value::boolean(value.number != 0);
  if (value.isText() && target == Type::unicode) {
    storage = toUnits(value.text);
    return {target, 0, storage};
  }
  if (value.isText() && target == Type::varchar) {
    storage = toUtf8(value.text);
    return {target, 0, storage};
  }
  throw Failure(DB_BAD_TYPE, std::string("a value of type ") + typeName(value.type) +
                                 " stands where " + typeName(target) + " is wanted");
}

}  // namespace ulo::odb
