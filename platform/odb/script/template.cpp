#include "template.h"

#include "base/failure.h"

#include <algorithm>

namespace ulo::odb {
namespace {

bool hasOddQuotes(std::string_view text) {
  return std::count(text.begin(), text.end(), '\'') % 2 != 0;
}

}  // namespace

const Template::Spelling Template::spellings[] = {
    {"%%", Conversion::percent},     {"%s", Conversion::text},
    {"%d", Conversion::signedInt},   {"%i", Conversion::signedInt},
    {"%u", Conversion::unsignedInt}, {"%ld", Conversion::signedLong},
    {"%li", Conversion::signedLong}, {"%lu", Conversion::unsignedLong},
};

Template::Template(std::string text) : text_(std::move(text)) {
  const std::string_view whole = text_;
  std::size_t done = 0;
  for (std::size_t at = text_.find('%'); at != std::string::npos; at = text_.find('%', at)) {
    const std::string_view rest = whole.substr(at);
    const auto* const found =
        std::find_if(std::begin(spellings), std::end(spellings), [&](const Spelling& spelling) {
          return rest.substr(0, spelling.text.size()) == spelling.text;
        });
    if (found == std::end(spellings))
      throw Failure(DB_SYNTAX, "the template has a conversion other than %s, %d, %i, %u, %ld, "
                               "%li, %lu and %%: " +
                                   std::string(rest.substr(0, 3)));
    places_.push_back({at, found, hasOddQuotes(whole.substr(done, at - done))});
    at += found->text.size();
    done = at;
  }
}

void Template::read(va_list arguments, std::string& inserted,
                    std::vector<std::int64_t>& numbers) const {
  bool inQuotes = false;
  for (const Place& place : places_) {
    inQuotes ^= place.changesQuotes;
    std::int64_t number = 0;
    switch (place.spelling->conversion) {
    case Conversion::percent:
      continue;
    case Conversion::text: {
      const char* part = va_arg(arguments, const char*);
      if (part == nullptr)
        throw Failure(DB_BAD_ARGUMENT, "the argument of a %s is null");
      const std::string_view text = part;
      inserted.append(text).push_back('\0');
      inQuotes ^= hasOddQuotes(text);
      continue;
    }
    case Conversion::signedInt:
      number = va_arg(arguments, int);
      break;
    case Conversion::unsignedInt:
      number = static_cast<std::int32_t>(va_arg(arguments, unsigned int));
      break;
    case Conversion::signedLong:
      number = va_arg(arguments, long);
      break;
    case Conversion::unsignedLong:
      number = static_cast<std::int64_t>(va_arg(arguments, unsigned long));
      break;
    }
    if (inQuotes)
      inserted.append(std::to_string(number)).push_back('\0');
    else
      numbers.push_back(static_cast<std::int32_t>(number));
  }
}

std::string Template::format(std::string_view inserted) const {
  std::string result;
  bool inQuotes = false;
  const auto append = [&](std::string_view part) {
    if (result.size() + part.size() > DB_MAX_TEXT)
      throw Failure(DB_LIMIT, "the text is longer than " + std::to_string(DB_MAX_TEXT) + " bytes");
    result.append(part);
    inQuotes ^= hasOddQuotes(part);
  };
  const auto appendInserted = [&] {
    const std::size_t end = inserted.find('\0');
    append(inserted.substr(0, end));
    inserted.remove_prefix(end + 1);
  };
  std::size_t done = 0;
  for (const Place& place : places_) {
    append(std::string_view(text_).substr(done, place.at - done));
    done = place.at + place.spelling->text.size();
    if (place.spelling->conversion == Conversion::percent)
      append("%");
    else if (place.spelling->conversion == Conversion::text || inQuotes)
      appendInserted();
    else
      append("%d");
  }
  append(std::string_view(text_).substr(done));
  return result;
}

}  // namespace ulo::odb
