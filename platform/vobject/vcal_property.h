// The properties of a vCalendar text: assembled from its lines, checked for whether the vObject
// library reads them correctly, and written in a form that it does.
#pragma once

#include "vcal_lines.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ulo {

enum class Encoding { plain, quotedPrintable, base64 };

// The part of a property before the colon.
struct Header {
  std::string name;     // without its groups; empty if invalid
  std::string charset;  // of the last CHARSET; empty if there is none or it is not a valid word
  Encoding encoding = Encoding::plain;
  std::size_t parameters = 0;
  bool begins = false;   // a component
  bool ends = false;     // a component
  bool fielded = false;  // the library splits the value into named fields
  bool clean = true;     // the library reads it correctly
};
[[nodiscard]] Header parseHeader(std::string_view text);

// Parses headers. Remembers those of longer texts, because their to-dos have the same ones.
class HeaderParser {
public:
  [[nodiscard]] const Header& parse(std::string_view text);

private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  static constexpr std::size_t forgotten = 16;  // headers of a short text
  static constexpr std::size_t mostKnown = 64;
  static constexpr std::size_t longestKnown = 128;  // bytes
  std::unordered_map<std::string, Header, Hash, std::equal_to<>> known_;
  Header other_;
  std::size_t parsed_ = 0;
};

// Compares two words, ignoring the case of ASCII letters.
[[nodiscard]] bool sameWord(std::string_view one, std::string_view other);

// One property with all lines that belong to it.
struct Property {
  Header header;
  // Unfolded. Soft breaks of quoted-printable are kept as "=" and line feed; BASE64 has no line
  // breaks.
  std::string value;
  std::size_t line = 0;  // number of its first line
  std::size_t size = 0;  // bytes of all of its lines
  bool blank = false;    // an empty line; `value` and `header` are empty
  bool tooLong = false;  // the value is truncated
  bool clean = true;     // the library reads all of it correctly

  // Keeps the memory of the value.
  void clear();
  [[nodiscard]] bool isBegin() const { return header.begins; }
  [[nodiscard]] bool isEnd() const { return header.ends; }
  [[nodiscard]] bool isComponent() const { return isBegin() || isEnd(); }
  // The component name of a BEGIN or END, in upper case.
  [[nodiscard]] std::string component() const;
  // Parser stack depth that the property needs in the library.
  [[nodiscard]] std::size_t weight() const;
};

class PropertyReader {
public:
  explicit PropertyReader(ByteSource& source) : lines_(source) {}

  // Returns false at the end of the text. `foldsVanish`: a fold is removed, as in iCalendar 2.0,
  // instead of replaced with one blank, as in vCalendar 1.0.
  bool next(Property& property, bool foldsVanish);

private:
  struct Assembly;
  void joinBase64(Assembly& assembly);
  LineReader lines_;
  HeaderParser headers_;
  // Kept for their memory.
  Line line_;
  std::string text_;
};

enum class Written {
  asItIs,  // unchanged; the library reads it correctly
  anew,    // rewritten in another form
  empty,   // omitted: without a value, for which the library would use the next line
  unfit,   // omitted: the library has no form for it
};
// Appends the property to a text for the library.
Written appendProperty(std::string& text, const Property& property);

}  // namespace ulo
