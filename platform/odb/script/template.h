#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

namespace ulo::odb {

// A text with its printf arguments. Numbers outside quotes stay out of the text, which keeps
// their "%d": texts that differ in such numbers alone are the same program.
struct FormattedText {
  std::string text;
  std::vector<std::int64_t> arguments;  // in the order of the "%d"s of `text`
};

// Formats a template; see ulodb2.h for the conversions. Throws Failure.
FormattedText formatTemplate(const char* text, va_list arguments);

}  // namespace ulo::odb
