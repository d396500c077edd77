#include "vcal_property.h"

#include "vcal_guard.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <utility>

namespace ulo {

namespace {

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";
// Parameters per property that are passed on unchanged; each costs the library one level.
constexpr std::size_t parameterLimit = 16;
// Fields per value that are passed on; each costs the library three levels.
constexpr std::size_t fieldLimit = 40;
// Significant characters of a component name; the library fails at 32.
constexpr std::size_t componentLimit = 30;

// Properties whose value the library splits into named fields.
constexpr std::array<std::string_view, 7> fieldedProperties = {
    "AALARM", "DALARM", "MALARM", "PALARM", "ADR", "N", "ORG"};

// Parameters, or parameter values, that tell the library how a value is encoded.
struct EncodingName {
  std::string_view name;
  Encoding encoding;
};
constexpr std::array<EncodingName, 3> encodingNames = {{
    {"QUOTED-PRINTABLE", Encoding::quotedPrintable},
    {"QP", Encoding::quotedPrintable},
    {"BASE64", Encoding::base64},
}};

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string_view trimLeft(std::string_view text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
  return text.substr(static_cast<std::size_t>(first - text.begin()));
}

std::string_view trimRight(std::string_view text) {
  while (!text.empty() && isBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

std::string_view trim(std::string_view text) {
  return trimRight(trimLeft(text));
}

bool isComponentWord(std::string_view text) {
  return sameWord(text, "BEGIN") || sameWord(text, "END");
}

// The library keeps words after the text they came with. It may then return a later CHARSET in the
// case of an earlier word.
bool spoilsCharset(std::string_view text) {
  constexpr std::string_view charset = "CHARSET";
  return text != charset && sameWord(text, charset);
}

// Returns true if the library accepts the text as one word anywhere. It looks for components even
// among parameters.
bool isWord(std::string_view text) {
  return !text.empty() && isLetter(text.front()) && !isComponentWord(text) &&
         !spoilsCharset(text) && std::all_of(text.begin(), text.end(), [](char c) {
           return isLetter(c) || isDigit(c) || c == '-' || c == '_' || c == '/' || c == '+' ||
                  c == '.';
         });
}

// Words separated by dots: the groups of a property and its name.
bool isGroupedWord(std::string_view text) {
  for (std::size_t dot = text.find('.'); dot != text.npos; dot = text.find('.')) {
    if (!isWord(text.substr(0, dot)))
      return false;
    text.remove_prefix(dot + 1);
  }
  return isWord(text);
}

bool isFielded(std::string_view name) {
  return std::any_of(fieldedProperties.begin(), fieldedProperties.end(),
                     [name](std::string_view fielded) { return sameWord(fielded, name); });
}

// Returns the value of a hexadecimal digit of either case, or -1 for anything else.
int hexDigit(char c) {
  if (isDigit(c))
    return c - '0';
  const char letter = upper(c);
  return letter >= 'A' && letter <= 'F' ? letter - 'A' + 10 : -1;
}

bool isUpperHexDigit(char c) {
  return isDigit(c) || (c >= 'A' && c <= 'F');
}

// Returns the byte encoded by "=XX" at `at`, or -1 if it is not valid.
int escapedByte(std::string_view text, std::size_t at) {
  if (at + 2 >= text.size())
    return -1;
  const int high = hexDigit(text[at + 1]);
  const int low = hexDigit(text[at + 2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// RFC 2045, 6.7. An invalid "=" is kept literally; lower-case digits are accepted.
std::string decodeQuotedPrintable(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '=') {
      bytes += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '\n') {
      ++i;
    } else if (const int byte = escapedByte(text, i); byte >= 0) {
      bytes += static_cast<char>(byte);
      i += 2;
    } else {
      bytes += '=';
    }
  }
  return bytes;
}

// RFC 2045, 6.8: bytes outside the alphabet are skipped; padding ends the data.
std::string decodeBase64(std::string_view text) {
  text = text.substr(0, text.find('='));
  return QByteArray::fromBase64(
             QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())))
      .toStdString();
}

void appendQuotedPrintable(std::string& text, std::string_view bytes) {
  static constexpr char digits[] = "0123456789ABCDEF";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const bool inside = i > 0 && i + 1 < bytes.size();
    if ((byte > ' ' && byte < 0x7F && byte != '=' && byte != ';') || (byte == ' ' && inside)) {
      text += bytes[i];
    } else {
      text += '=';
      text += digits[byte >> 4];
      text += digits[byte & 15];
    }
  }
}

// Returns true if the value means the same, also to the library, with and without quoted-printable
// encoding.
bool isPlainText(std::string_view value) {
  return !value.empty() && value.front() != ' ' && value.back() != ' ' &&
         std::all_of(value.begin(), value.end(),
                     [](char c) { return c >= ' ' && c <= '~' && c != '=' && c != ';'; });
}

// Appends quoted-printable text without its soft breaks.
void appendOnOneLine(std::string& text, std::string_view value) {
  constexpr std::string_view softBreak = "=\n";
  for (std::size_t at = value.find(softBreak); at != value.npos; at = value.find(softBreak)) {
    text += value.substr(0, at);
    value.remove_prefix(at + softBreak.size());
  }
  text += value;
}

// Returns true if the library reads the value of a quoted-printable property correctly: "=XX" is
// upper case and not a zero byte, and the value is not empty or only soft breaks.
bool readsQuotedPrintableRight(std::string_view value) {
  if (value.empty() || value.front() == ';')
    return false;
  bool empty = true;
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t equals = std::min(value.find('=', at), value.size());
    empty = empty && equals == at;
    if (equals == value.size())
      break;
    if (equals + 1 < value.size() && value[equals + 1] == '\n') {
      at = equals + 2;
      continue;
    }
    if (equals + 2 >= value.size() || !isUpperHexDigit(value[equals + 1]) ||
        !isUpperHexDigit(value[equals + 2]) ||
        (value[equals + 1] == '0' && value[equals + 2] == '0'))
      return false;
    empty = false;
    at = equals + 3;
  }
  return !empty;
}

// Returns true if the library reads a plain value correctly. It drops leading blanks of each field,
// and empty fields.
bool readsPlainRight(std::string_view value, bool fielded) {
  value = trimLeft(value);
  if (value.empty())
    return false;
  if (fielded)
    return true;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool startsField = i == 0 || value[i - 1] == ';';
    if (startsField && (value[i] == ';' || isBlank(value[i])))
      return false;
  }
  return value.back() != ';';
}

bool readsValueRight(const Header& header, std::string_view value) {
  switch (header.encoding) {
  case Encoding::plain:
    return readsPlainRight(value, header.fielded);
  case Encoding::quotedPrintable:
    return readsQuotedPrintableRight(value);
  case Encoding::base64:
    break;
  }
  return false;
}

std::size_t fieldCount(std::string_view value) {
  return static_cast<std::size_t>(std::count(value.begin(), value.end(), ';'));
}

// Finds the colon that ends a header, looking at each byte once however the header is folded.
// Ignores colons in quoted parameter values.
class ColonFinder {
public:
  std::size_t find(std::string_view text) {
    // Most headers have no quotation.
    if (const std::size_t colon = text.find(':', at_);
        colon != text.npos && !quoted_ && text.substr(0, colon).find('"', at_) == text.npos) {
      first_ = std::min(first_, colon);
      return at_ = colon;
    }
    for (; at_ < text.size(); ++at_) {
      const char c = text[at_];
      if (c == '"' && (quoted_ || (at_ > 0 && text[at_ - 1] == '=')))
        quoted_ = !quoted_;
      if (c != ':')
        continue;
      first_ = std::min(first_, at_);
      if (!quoted_)
        return at_;
    }
    return std::string_view::npos;
  }
  // The first colon, which ends the header if a quotation is not closed.
  [[nodiscard]] std::size_t first() const { return first_; }

private:
  std::size_t at_ = 0;
  std::size_t first_ = std::string_view::npos;
  bool quoted_ = false;
};

// Removes the name or the next parameter from the front of a header. Returns false for the last
// one.
bool takeToken(std::string_view& text, std::string_view& token) {
  bool quoted = false;
  std::size_t end = 0;
  for (; end < text.size() && (quoted || text[end] != ';'); ++end)
    if (text[end] == '"' && (quoted || (end > 0 && text[end - 1] == '=')))
      quoted = !quoted;
  if (quoted)  // an unclosed quotation does not count
    end = std::min(text.find(';'), text.size());
  const bool more = end < text.size();
  token = text.substr(0, end);
  text.remove_prefix(more ? end + 1 : end);
  return more;
}

void takeName(Header& header, std::string_view token) {
  const std::string_view name = trim(token);
  const std::size_t dot = name.rfind('.');
  const bool valid = isComponentWord(name) || isGroupedWord(name);
  header.clean = valid && name.size() == token.size();
  if (valid)
    header.name = name.substr(dot + 1);
}

void takeParameter(Header& header, std::string_view token) {
  const std::size_t equals = token.find('=');
  const std::string_view name = trim(token.substr(0, equals));
  std::string_view value = equals == token.npos ? std::string_view() : token.substr(equals + 1);
  header.clean = header.clean && isWord(name) && name.size() == std::min(equals, token.size()) &&
                 (equals == token.npos || isWord(value));
  value = trim(value);
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
    value = value.substr(1, value.size() - 2);

  bool tellsEncoding = false;
  for (const EncodingName& known : encodingNames) {
    if (!sameWord(name, known.name) && !sameWord(value, known.name))
      continue;
    tellsEncoding = true;
    // If the encoding is stated twice, the library also decodes the next property.
    header.clean = header.clean && header.encoding == Encoding::plain;
    header.encoding = std::max(header.encoding, known.encoding);
  }
  if (name == "CHARSET")
    header.charset = isWord(value) && !tellsEncoding ? value : std::string_view();
  // The library stores the value as 8-bit text, but the alarm field of that name is wide text.
  if (sameWord(name, "RUNTIME"))
    header.clean = false;
}

}  // namespace

bool sameWord(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return upper(a) == upper(b); });
}

Header parseHeader(std::string_view text) {
  Header header;
  if (text.size() > headerLimit) {
    header.clean = false;
    return header;
  }
  std::string_view token;
  bool more = takeToken(text, token);
  takeName(header, token);
  for (; more; ++header.parameters) {
    more = takeToken(text, token);
    takeParameter(header, token);
  }
  header.clean = header.clean && header.parameters <= parameterLimit;
  header.begins = header.parameters == 0 && sameWord(header.name, "BEGIN");
  header.ends = header.parameters == 0 && sameWord(header.name, "END");
  header.fielded = isFielded(header.name);
  return header;
}

const Header& HeaderParser::parse(std::string_view text) {
  if (const auto found = known_.find(text); found != known_.end())
    return found->second;
  other_ = parseHeader(text);
  if (++parsed_ <= forgotten || text.size() > longestKnown || known_.size() == mostKnown)
    return other_;
  return known_.emplace(text, other_).first->second;
}

void Property::clear() {
  header = {};
  value.clear();
  line = 0;
  size = 0;
  blank = false;
  tooLong = false;
  clean = true;
}

std::string Property::component() const {
  std::string_view name = trim(value);
  name = name.substr(0, name.find_first_of(" \t;:="));
  std::string result(name.substr(0, componentLimit));
  std::transform(result.begin(), result.end(), result.begin(), upper);
  return result;
}

std::size_t Property::weight() const {
  const bool split = header.encoding == Encoding::plain;
  return 1 + std::max(header.parameters, split ? 3 * fieldCount(value) : 0);
}

// Assembles the lines of one property.
struct PropertyReader::Assembly {
  Property& property;
  std::string& text;  // all lines so far
  HeaderParser& headers;
  std::size_t colon = std::string::npos;  // end of the header; npos until known
  ColonFinder finder;

  void append(std::string_view bytes) {
    property.size += bytes.size();
    property.tooLong = property.tooLong || text.size() + bytes.size() > propertyLimit;
    if (!property.tooLong)
      text += bytes;
  }
  void append(const Line& line, std::string_view bytes) {
    append(bytes);
    property.tooLong = property.tooLong || line.tooLong;
    property.clean = property.clean && !line.odd;
  }
  void setColon(std::size_t at) {
    colon = at;
    if (colon == std::string::npos)
      return;
    property.header = headers.parse(std::string_view(text).substr(0, colon));
    // The library uses the first nonempty line after the colon as the value.
    property.clean = property.clean && colon + 1 < text.size();
  }
};

namespace {

// Returns the part of a quoted-printable line up to and including the "=" of its soft break, or
// nothing if it has none. Blanks after the "=" were added in transport.
std::string_view softBroken(std::string_view line) {
  line = trimRight(line);
  return !line.empty() && line.back() == '=' ? line : std::string_view();
}

bool isBase64Line(std::string_view line) {
  return !line.empty() && std::all_of(line.begin(), line.end(), [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '/' || c == '=';
  });
}

}  // namespace

// The data continues while lines are folded or, if not folded, contain only data. An empty line
// ends it.
void PropertyReader::joinBase64(Assembly& assembly) {
  Line line;
  while (const Line* following = lines_.peek()) {
    const std::string_view data = trim(following->bytes);
    const bool folded = !following->bytes.empty() && isBlank(following->bytes.front());
    const bool padded = assembly.text.back() == '=';
    if (!data.empty() && !folded && (padded || !isBase64Line(data)))
      return;
    const bool end = data.empty();
    lines_.next(line);
    assembly.append(line, trim(line.bytes));
    if (end)
      return;
  }
}

bool PropertyReader::next(Property& property, bool foldsVanish) {
  Line& line = line_;
  std::string& text = text_;
  if (!lines_.next(line))
    return false;
  property.clear();
  property.line = line.number;
  text.clear();
  Assembly assembly{property, text, headers_, std::string::npos, {}};

  std::string_view start = line.bytes;
  if (start.substr(0, sizeof byteOrderMark - 1) == byteOrderMark)
    start.remove_prefix(sizeof byteOrderMark - 1);
  start = trimLeft(start);
  property.clean = start.size() == line.bytes.size();
  assembly.append(line, start);
  if (start.empty()) {
    property.blank = true;
    return true;
  }

  while (true) {
    if (assembly.colon == text.npos)
      assembly.setColon(assembly.finder.find(text));
    const bool known = assembly.colon != text.npos;
    if (known && property.isComponent())
      break;
    if (known && property.header.encoding == Encoding::base64) {
      joinBase64(assembly);
      break;
    }
    const bool quotedPrintable = known && property.header.encoding == Encoding::quotedPrintable;
    const std::string_view broken = quotedPrintable ? softBroken(line.bytes) : std::string_view();
    const Line* following = lines_.peek();
    if (!broken.empty()) {
      property.clean = property.clean && broken.size() == line.bytes.size() && following != nullptr;
      if (!property.tooLong)
        text.resize(text.size() - (line.bytes.size() - broken.size()));
      if (following == nullptr)
        break;
      lines_.next(line);
      assembly.append("\n");
      assembly.append(line, line.bytes);
    } else if (following != nullptr && !following->bytes.empty() &&
               isBlank(following->bytes.front())) {
      // The blank that the library inserts is wrong in a header, in quoted-printable and in
      // iCalendar 2.0.
      property.clean = property.clean && known && !quotedPrintable && !foldsVanish;
      lines_.next(line);
      if (!foldsVanish)
        assembly.append(" ");
      assembly.append(line, std::string_view(line.bytes).substr(1));
    } else if (!known && assembly.finder.first() != text.npos) {
      assembly.setColon(assembly.finder.first());
    } else {
      break;
    }
  }

  if (assembly.colon == text.npos)
    property.clean = false;
  else
    property.value.assign(text, assembly.colon + 1);
  property.clean = property.clean && property.header.clean && !property.tooLong;
  if (property.isComponent())
    property.clean = property.clean && sameWord(trimRight(property.value), property.component());
  else
    property.clean = property.clean && readsValueRight(property.header, property.value);
  return true;
}

Written appendProperty(std::string& text, const Property& property) {
  const Header& header = property.header;
  const auto appendHeader = [&](bool encoded) {
    text += header.name;
    if (!header.charset.empty())
      (text += ";CHARSET=") += header.charset;
    text += encoded ? ";ENCODING=QUOTED-PRINTABLE:" : ":";
  };
  const auto finish = [&] {
    text += "\r\n";
    return property.clean ? Written::asItIs : Written::anew;
  };

  if (header.encoding == Encoding::quotedPrintable && property.clean) {
    // The library needs less time for a property without an encoding.
    const bool encoded = header.fielded || !isPlainText(property.value);
    appendHeader(encoded);
    appendOnOneLine(text, property.value);
    return finish();
  }
  std::string bytes;
  switch (header.encoding) {
  case Encoding::plain:
    bytes = trimLeft(property.value);
    break;
  case Encoding::quotedPrintable:
    bytes = decodeQuotedPrintable(property.value);
    std::erase(bytes, '\0');
    break;
  case Encoding::base64:
    bytes = decodeBase64(property.value);
    if (bytes.find('\0') != bytes.npos)
      return Written::unfit;
    break;
  }
  if (bytes.empty())
    return Written::empty;

  if (header.encoding == Encoding::plain &&
      (header.fielded || (bytes.find(';') == bytes.npos && bytes.find('\xFF') == bytes.npos))) {
    if (header.fielded && (fieldCount(bytes) > fieldLimit || bytes.find('\xFF') != bytes.npos))
      return Written::unfit;
    appendHeader(false);
    text += bytes;
    return finish();
  }
  appendHeader(true);
  appendQuotedPrintable(text, bytes);
  return finish();
}

}  // namespace ulo
