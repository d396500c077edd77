#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// A printf template; see ulodb2.h for its conversions.
//
// Its arguments become part of the formatted text, except for numbers outside quotes: the text
// keeps their "%d", so that texts that differ only in such numbers are the same program.
class Template {
public:
  // Throws Failure if the text has other conversions.
  explicit Template(std::string text);

  [[nodiscard]] const std::string& text() const { return text_; }
  // Reads the arguments of its conversions. Appends those that become part of the text to
  // `inserted`, each followed by a zero byte, and the others to `numbers`, truncated to 32 bits.
  // Throws Failure if a text is null.
  void read(va_list arguments, std::string& inserted, std::vector<std::int64_t>& numbers) const;
  // Returns the text for the arguments in `inserted`, which are those of one call of read. Throws
  // Failure if the text becomes too long.
  [[nodiscard]] std::string format(std::string_view inserted) const;

private:
  enum class Conversion { percent, text, signedInt, unsignedInt, signedLong, unsignedLong };
  struct Spelling {
    std::string_view text;
    Conversion conversion;
  };
  struct Place {
    std::size_t at;  // offset of the conversion in the text
    const Spelling* spelling;
    bool
        changesQuotes;  // an odd number of quotes lies between the previous conversion and this one
  };

  static const Spelling spellings[];

  std::string text_;
  std::vector<Place> places_;
};

}  // namespace ulo::odb
