#include "template.h"

#include "base/failure.h"

#include <algorithm>

namespace ulo::odb {
namespace {

// Truncates to 32 bits, interpreted as an int.
std::int64_t lifted(std::int64_t number) {
  return static_cast<std::int32_t>(number);
}

}  // namespace

const Template::Spelling Template::spellings[] = {
    {"%%", Conversion::percent},     {"%s", Conversion::text},
    {"%d", Conversion::signedInt},   {"%i", Conversion::signedInt},
    {"%u", Conversion::unsignedInt}, {"%ld", Conversion::signedLong},
    {"%li", Conversion::signedLong}, {"%lu", Conversion::unsignedLong},
};

Template::Template(std::string text) : text_(std::move(text)) {
  for (std::size_t at = text_.find('%'); at != std::string::npos; at = text_.find('%', at)) {
    const std::string_view rest = std::string_view(text_).substr(at);
    const auto* const found =
        std::find_if(std::begin(spellings), std::end(spellings), [&](const Spelling& spelling) {
          return rest.substr(0, spelling.text.size()) == spelling.text;
        });
    if (found == std::end(spellings))
      throw Failure(DB_SYNTAX, "the template has a conversion other than %s, %d, %i, %u, %ld, "
                               "%li, %lu and %%: " +
                                   std::string(rest.substr(0, 3)));
    places_.push_back({at, found});
    at += found->text.size();
  }
}

TemplateArguments Template::read(va_list arguments) const {
  TemplateArguments result;
  for (const Place& place : places_) {
    switch (place.spelling->conversion) {
    case Conversion::percent:
      break;
    case Conversion::text: {
      const char* part = va_arg(arguments, const char*);
      if (part == nullptr)
        throw Failure(DB_BAD_ARGUMENT, "the argument of a %s is null");
      result.texts.emplace_back(part);
      break;
    }
    case Conversion::signedInt:
      result.numbers.push_back(va_arg(arguments, int));
      break;
    case Conversion::unsignedInt:
      result.numbers.push_back(static_cast<std::int32_t>(va_arg(arguments, unsigned int)));
      break;
    case Conversion::signedLong:
      result.numbers.push_back(va_arg(arguments, long));
      break;
    case Conversion::unsignedLong:
      result.numbers.push_back(static_cast<std::int64_t>(va_arg(arguments, unsigned long)));
      break;
    }
  }
  return result;
}

FormattedText Template::format(const TemplateArguments& arguments) const {
  FormattedText result;
  std::string& out = result.text;
  bool inQuotes = false;
  const auto append = [&](std::string_view part) {
    if (out.size() + part.size() > DB_MAX_TEXT)
      throw Failure(DB_LIMIT, "the text is longer than " + std::to_string(DB_MAX_TEXT) + " bytes");
    out.append(part);
    inQuotes ^= std::count(part.begin(), part.end(), '\'') % 2 != 0;
  };
  auto text = arguments.texts.begin();
  auto number = arguments.numbers.begin();
  std::size_t done = 0;
  for (const Place& place : places_) {
    append(std::string_view(text_).substr(done, place.at - done));
    done = place.at + place.spelling->text.size();
    if (place.spelling->conversion == Conversion::percent) {
      append("%");
    } else if (place.spelling->conversion == Conversion::text) {
      append(*text++);
    } else if (inQuotes) {
      append(std::to_string(*number++));
    } else {
      result.arguments.push_back(lifted(*number++));
      append("%d");
    }
  }
  append(std::string_view(text_).substr(done));
  return result;
}

std::vector<std::int64_t> Template::liftedNumbers(const TemplateArguments& arguments) {
  std::vector<std::int64_t> numbers = arguments.numbers;
  std::transform(numbers.begin(), numbers.end(), numbers.begin(), lifted);
  return numbers;
}

}  // namespace ulo::odb
