#include "content_line.h"

#include "well_formed.h"

#include <QByteArray>
#include <QStringDecoder>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <system_error>
#include <utility>

namespace ulo {
namespace {

// RFC 5545, section 3.1: bytes of a line without its end.
constexpr std::size_t foldedLength = 75;

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isInsideCharacter(char c) {
  constexpr unsigned mask = 0xC0;
  constexpr unsigned continuation = 0x80;
  return (static_cast<unsigned char>(c) & mask) == continuation;
}

// A parameter in a text, and where the next one begins.
struct Parameter {
  std::string_view name;
  std::string_view values;  // with quotation marks and commas
  std::size_t end = 0;
};

// Walks through quoted and unquoted text. Remembers that no quotation mark follows, so that reading
// stays linear.
class ParameterReader {
public:
  explicit ParameterReader(std::string_view text) : text_(text) {}

  // `at` is the position of a semicolon.
  Parameter read(std::size_t at) {
    std::size_t i = at + 1;
    const std::size_t nameBegin = i;
    while (i < text_.size() && text_[i] != '=' && text_[i] != ';' && text_[i] != ':')
      ++i;
    Parameter result;
    result.name = text_.substr(nameBegin, i - nameBegin);
    if (i < text_.size() && text_[i] == '=') {
      const std::size_t begin = ++i;
      while (i < text_.size() && text_[i] != ';' && text_[i] != ':')
        i = skip(i);
      result.values = text_.substr(begin, i - begin);
    }
    result.end = i;
    return result;
  }

private:
  // Returns the position after the character, or after the quoted text, at a position.
  std::size_t skip(std::size_t at) {
    if (text_[at] != '"' || noQuoteFollows_)
      return at + 1;
    const std::size_t end = text_.find('"', at + 1);
    if (end != std::string_view::npos)
      return end + 1;
    noQuoteFollows_ = true;
    return at + 1;
  }

  std::string_view text_;
  bool noQuoteFollows_ = false;
};

// RFC 6868.
std::string withoutCarets(std::string_view value) {
  std::string result;
  result.reserve(value.size());
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char next = value[i] == '^' && i + 1 < value.size() ? value[i + 1] : '\0';
    const bool isEscape = next == 'n' || next == '^' || next == '\'';
    result += !isEscape ? value[i] : next == 'n' ? '\n' : next == '^' ? '^' : '"';
    i += isEscape ? 1 : 0;
  }
  return result;
}

std::string_view firstOf(std::string_view values) {
  if (!values.empty() && values.front() == '"') {
    const std::size_t end = values.find('"', 1);
    if (end != std::string_view::npos)
      return values.substr(1, end - 1);
  }
  return values.substr(0, values.find(','));
}

}  // namespace

std::size_t LineSplitter::endOfLine() {
  if (!searched_ || lineFeed_ < position_)
    lineFeed_ = std::min(text_.find('\n', position_), text_.size());
  if (!searched_ || carriageReturn_ < position_)
    carriageReturn_ = std::min(text_.find('\r', position_), text_.size());
  searched_ = true;
  if (lineFeed_ < carriageReturn_)
    return lineFeed_ + 1;
  if (carriageReturn_ == text_.size())
    return text_.size();
  // A run of carriage returns belongs to the line feed that follows it.
  if (runEnd_ <= carriageReturn_)
    runEnd_ = std::min(text_.find_first_not_of('\r', carriageReturn_), text_.size());
  return runEnd_ == lineFeed_ && lineFeed_ < text_.size() ? lineFeed_ + 1 : carriageReturn_ + 1;
}

bool LineSplitter::next(RawLine& line) {
  if (position_ == text_.size())
    return false;
  const std::size_t begin = position_;
  line.number = number_;
  line.folded = false;
  for (;;) {
    position_ = endOfLine();
    ++number_;
    if (position_ == text_.size() || !isBlank(text_[position_]))
      break;
    line.folded = true;
  }
  line.bytes = text_.substr(begin, position_ - begin);
  return true;
}

std::string_view lineEndOf(std::string_view line) {
  const std::size_t last = line.find_last_not_of("\r\n");
  return line.substr(last == std::string_view::npos ? 0 : last + 1);
}

std::string_view unfolded(const RawLine& line, std::string& buffer) {
  if (!line.folded) {
    std::string_view bytes = line.bytes;
    while (!bytes.empty() && (bytes.back() == '\n' || bytes.back() == '\r'))
      bytes.remove_suffix(1);
    return bytes;
  }
  buffer.clear();
  buffer.reserve(line.bytes.size());
  std::string_view rest = line.bytes;
  for (bool first = true; !rest.empty(); first = false) {
    if (!first)
      rest.remove_prefix(1);  // the blank
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    buffer.append(rest.substr(0, end));
    rest.remove_prefix(std::min(rest.find_first_not_of("\r\n", end), rest.size()));
  }
  return buffer;
}

std::string_view nameOf(std::string_view line) {
  std::size_t i = 0;
  while (i < line.size() && line[i] != ':' && line[i] != ';')
    ++i;
  return line.substr(0, i);
}

std::optional<ContentLine> parseContentLine(std::string_view line) {
  ContentLine result;
  result.name = nameOf(line);
  std::size_t i = result.name.size();
  ParameterReader reader(line);
  while (i < line.size() && line[i] == ';')
    i = reader.read(i).end;
  if (result.name.empty() || i >= line.size())
    return std::nullopt;
  result.parameters = line.substr(result.name.size(), i - result.name.size());
  result.value = line.substr(i + 1);
  return result;
}

std::optional<std::string> parameter(std::string_view parameters, std::string_view name) {
  ParameterReader reader(parameters);
  for (std::size_t i = 0; i < parameters.size();) {
    const Parameter found = reader.read(i);
    if (sameName(found.name, name))
      return withoutCarets(firstOf(found.values));
    i = found.end;
  }
  return std::nullopt;
}

std::string withoutParameters(std::string_view parameters,
                              std::initializer_list<std::string_view> names) {
  std::string result;
  ParameterReader reader(parameters);
  for (std::size_t i = 0; i < parameters.size();) {
    const Parameter found = reader.read(i);
    if (std::none_of(names.begin(), names.end(),
                     [&](std::string_view name) { return sameName(found.name, name); }))
      result += parameters.substr(i, found.end - i);
    i = found.end;
  }
  return result;
}

std::string parameterText(std::string_view value) {
  std::string result;
  bool needsQuotes = false;
  for (const char c : value) {
    needsQuotes = needsQuotes || c == ':' || c == ';' || c == ',';
    if (c == '^')
      result += "^^";
    else if (c == '\n')
      result += "^n";
    else if (c == '"')
      result += "^'";
    else
      result += c;
  }
  return needsQuotes ? '"' + result + '"' : result;
}

bool sameName(std::string_view one, std::string_view other) {
  return one.size() == other.size() &&
         std::equal(one.begin(), one.end(), other.begin(),
                    [](char a, char b) { return upper(a) == upper(b); });
}

std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

std::string_view viewOf(const QByteArray& bytes) {
  return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

std::optional<int> parseInteger(std::string_view text) {
  if (!text.empty() && text.front() == '+')
    text.remove_prefix(1);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

std::string foldedLine(std::string_view line, std::string_view lineEnd) {
  std::string result;
  result.reserve(line.size() + (line.size() / foldedLength + 1) * (lineEnd.size() + 1));
  std::size_t room = foldedLength;
  while (line.size() > room) {
    std::size_t length = room;
    while (length > 1 && isInsideCharacter(line[length]))
      --length;
    // Bytes that are not UTF-8 are folded anywhere.
    constexpr std::size_t longestCharacter = 4;
    if (room - length >= longestCharacter)
      length = room;
    result.append(line.substr(0, length)).append(lineEnd).append(1, ' ');
    line.remove_prefix(length);
    room = foldedLength - 1;
  }
  return result.append(line).append(lineEnd);
}

QString decodedText(std::string_view bytes, bool& isLatin1) {
  const auto isAscii = [](char c) { return static_cast<signed char>(c) >= 0; };
  const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QString result;
  isLatin1 = false;
  if (std::all_of(bytes.begin(), bytes.end(), isAscii)) {
    result = QString::fromLatin1(view);
  } else {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    result = decoder(view);
    isLatin1 = decoder.hasError();
    if (isLatin1)
      result = QString::fromLatin1(view);
  }
  if (bytes.find('\0') != std::string_view::npos)
    result.remove(QChar(0));
  if (result.isNull())
    result = QLatin1String("");
  return result;
}

QString textOfValue(std::string_view value, bool& isLatin1) {
  if (value.find('\\') == std::string_view::npos)
    return decodedText(value, isLatin1);
  std::string text;
  text.reserve(value.size());
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char next = value[i] == '\\' && i + 1 < value.size() ? value[i + 1] : '\0';
    switch (next) {
    case 'n':
    case 'N':
      text += '\n';
      break;
    case '\\':
    case ',':
    case ';':
    case ':':  // written by some programs
    case '"':
      text += next;
      break;
    default:
      text += value[i];
      continue;
    }
    ++i;
  }
  return decodedText(text, isLatin1);
}

std::string valueOfText(const QString& text) {
  const QByteArray bytes = asWritten(text).toUtf8();
  std::string result;
  result.reserve(static_cast<std::size_t>(bytes.size()));
  for (const char c : bytes) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '\\' || c == ',' || c == ';')
      result += '\\';
    result += c;
  }
  return result;
}

QString asWritten(const QString& text) {
  QString result = text;
  if (result.contains(QChar(0)))
    result.remove(QChar(0));
  if (result.contains(u'\r'))
    result.replace("\r\n", "\n").replace(u'\r', u'\n');
  return wellFormed(std::move(result), QChar::ReplacementCharacter);
}

std::size_t firstValueLength(std::string_view list) {
  std::size_t i = 0;
  while (i < list.size() && list[i] != ',')
    i += list[i] == '\\' ? 2 : 1;
  return std::min(i, list.size());
}

}  // namespace ulo
