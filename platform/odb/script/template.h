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

// A formatted text. Numbers outside quotes are not inserted; the text keeps their "%d", so that
// texts that differ only in such numbers are the same program.
struct FormattedText {
  std::string text;
  std::vector<std::int64_t> arguments;  // in the order of the "%d"s in `text`
};

// A printf template; see ulodb2.h for its conversions.
class Template {
public:
  // Throws Failure if the text has other conversions.
  explicit Template(std::string text);

  [[nodiscard]] const std::string& text() const { return text_; }
  // Reads the arguments of its conversions. Throws Failure if a text is null.
  [[nodiscard]] TemplateArguments read(va_list arguments) const;
  // Throws Failure if the text becomes too long.
  [[nodiscard]] FormattedText format(const TemplateArguments& arguments) const;
  // Returns the numbers of a formatted text. Requires: none of them is within quotes.
  static std::vector<std::int64_t> liftedNumbers(const TemplateArguments& arguments);

private:
  enum class Conversion { percent, text, signedInt, unsignedInt, signedLong, unsignedLong };
  struct Spelling {
    std::string_view text;
    Conversion conversion;
  };
  struct Place {
    std::size_t at;  // offset of the conversion in the text
    const Spelling* spelling;
  };

  static const Spelling spellings[];

  std::string text_;
  std::vector<Place> places_;
};

}  // namespace ulo::odb
