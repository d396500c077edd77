// The properties of a vCalendar text: assembled from its lines, checked for whether the vObject
// library reads them correctly, and written in a form that it does.
#pragma once

#include "vcal_lines.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ulo {

enum class Encoding { plain, quotedPrintable, base64 };

// The part of a property before the colon.
struct Header {
  std::string name;     // without its groups; empty if invalid
  std::string charset;  // of the last CHARSET; empty if there is none or it is not a valid word
  Encoding encoding = Encoding::plain;
  std::size_t parameters = 0;
  bool clean = true;  // the library reads it correctly
};
[[nodiscard]] Header parseHeader(std::string_view text);

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

  [[nodiscard]] bool isBegin() const;
  [[nodiscard]] bool isEnd() const;
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
