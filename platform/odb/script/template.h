#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// The printf arguments of one call.
struct TemplateArguments {
  std::vector<std::string_view> texts;
  std::vector<std::int64_t> numbers;
};

// A text with its printf arguments. Numbers outside quotes stay out of the text, which keeps
// their "%d": texts that differ in such numbers alone are the same program.
struct FormattedText {
  std::string text;
  std::vector<std::int64_t> arguments;  // in the order of the "%d"s of `text`
};

// A printf template; see ulodb2.h for its conversions.
class Template {
public:
  // Throws Failure when it has other conversions.
  explicit Template(std::string text);

  [[nodiscard]] const std::string& text() const { return text_; }
  // The arguments that its conversions ask for. Throws Failure when a text is null.
  [[nodiscard]] TemplateArguments read(va_list arguments) const;
  // Throws Failure when the text becomes too long.
  [[nodiscard]] FormattedText format(const TemplateArguments& arguments) const;
  // The numbers of a formatted text, none of which stands in quotes.
  static std::vector<std::int64_t> liftedNumbers(const TemplateArguments& arguments);

private:
  enum class Conversion { percent, text, signedInt, unsignedInt, signedLong, unsignedLong };
  struct Spelling {
    std::string_view text;
    Conversion conversion;
  };
  struct Place {
    std::size_t at;  // of the conversion in the text
    const Spelling* spelling;
  };

  static const Spelling spellings[];

  std::string text_;
  std::vector<Place> places_;
};

}  // namespace ulo::odb
