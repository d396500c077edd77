#include "template.h"

#include "failure.h"

#include <cstring>

namespace ulo::odb {
namespace {

enum class Conversion { percent, text, signedInt, unsignedInt, signedLong, unsignedLong };

struct Spelling {
  const char* text;
  Conversion conversion;
};

constexpr Spelling spellings[] = {
    {"%%", Conversion::percent},     {"%s", Conversion::text},
    {"%d", Conversion::signedInt},   {"%i", Conversion::signedInt},
    {"%u", Conversion::unsignedInt}, {"%ld", Conversion::signedLong},
    {"%li", Conversion::signedLong}, {"%lu", Conversion::unsignedLong},
};

const Spelling& conversionAt(const char* text) {
  for (const Spelling& spelling : spellings)
    if (std::strncmp(text, spelling.text, std::strlen(spelling.text)) == 0)
      return spelling;
  throw Failure(DB_SYNTAX, std::string("the template has a conversion other than %s, %d, %i, %u, "
                                       "%ld, %li, %lu and %%: ") +
                               std::string(text, strnlen(text, 3)));
}

}  // namespace

FormattedText formatTemplate(const char* text, va_list arguments) {
  FormattedText result;
  std::string& out = result.text;
  out.reserve(std::strlen(text));
  bool quoted = false;
  const auto append = [&](const char* part, std::size_t size) {
    if (out.size() + size > DB_MAX_TEXT)
      throw Failure(DB_LIMIT, "the text is longer than " + std::to_string(DB_MAX_TEXT) + " bytes");
    for (std::size_t i = 0; i < size; ++i)
      quoted ^= part[i] == '\'';
    out.append(part, size);
  };
  const auto number = [&](std::int64_t value) {
    if (quoted) {
      const std::string digits = std::to_string(value);
      append(digits.data(), digits.size());
      return;
    }
    // 32 bits: a number beyond them comes back as the int that has these bits.
    result.arguments.push_back(static_cast<std::int32_t>(value));
    append("%d", 2);
  };

  while (*text != '\0') {
    const std::size_t plain = std::strcspn(text, "%");
    append(text, plain);
    text += plain;
    if (*text == '\0')
      break;
    const Spelling& spelling = conversionAt(text);
    text += std::strlen(spelling.text);
    switch (spelling.conversion) {
    case Conversion::percent:
      append("%", 1);
      break;
    case Conversion::text: {
      const char* part = va_arg(arguments, const char*);
      if (part == nullptr)
        throw Failure(DB_BAD_ARGUMENT, "the argument of a %s is null");
      append(part, std::strlen(part));
      break;
    }
    case Conversion::signedInt:
      number(va_arg(arguments, int));
      break;
    case Conversion::unsignedInt:
      number(static_cast<std::int32_t>(va_arg(arguments, unsigned int)));
      break;
    case Conversion::signedLong:
      number(va_arg(arguments, long));
      break;
    case Conversion::unsignedLong:
      number(static_cast<std::int64_t>(va_arg(arguments, unsigned long)));
      break;
    }
  }
  return result;
}

}  // namespace ulo::odb
