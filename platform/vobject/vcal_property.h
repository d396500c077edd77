// Properties of a vCalendar text: taken from its lines, judged by what the vObject library makes
// of them, and written so that it reads them right.
#pragma once

#include "vcal_lines.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ulo {

enum class Encoding { plain, quotedPrintable, base64 };

// What stands before the colon of a property.
struct Header {
  std::string name;     // without its groups; empty when it is none
  std::string charset;  // of the last CHARSET; empty without one and when it is no word
  Encoding encoding = Encoding::plain;
  std::size_t parameters = 0;
  bool clean = true;  // the library reads it right
};
[[nodiscard]] Header parseHeader(std::string_view text);

// Both are equal but for the case of ASCII letters.
[[nodiscard]] bool sameWord(std::string_view one, std::string_view other);

// One property with all lines that belong to it.
struct Property {
  Header header;
  // Unfolded; soft breaks of quoted-printable stand in it as "=" and line feed, BASE64 has no
  // breaks.
  std::string value;
  std::size_t line = 0;  // the first of its lines
  std::size_t size = 0;  // bytes of all its lines
  bool blank = false;    // an empty line; nothing else is set
  bool tooLong = false;  // the value is cut
  bool clean = true;     // the library reads all of it right

  [[nodiscard]] bool isBegin() const;
  [[nodiscard]] bool isEnd() const;
  // Of BEGIN and END: the name of the component, in upper case.
  [[nodiscard]] std::string component() const;
  // How deep the library's parser goes for the property alone.
  [[nodiscard]] std::size_t weight() const;
};

class PropertyReader {
public:
  explicit PropertyReader(ByteSource& source) : lines_(source) {}

  // False at the end of the text. A fold stands for one blank in vCalendar 1.0 and for nothing in
  // iCalendar 2.0.
  bool next(Property& property, bool foldsVanish);

private:
  struct Assembly;
  void joinBase64(Assembly& assembly);
  LineReader lines_;
};

enum class Written {
  asItIs,  // the library reads it as it stands in the text
  anew,    // in another form
  empty,   // left out: no value, which the library would take from the next line
  unfit,   // left out: the library has no form for it
};
// Appends the property to a text for the library.
Written appendProperty(std::string& text, const Property& property);

}  // namespace ulo
