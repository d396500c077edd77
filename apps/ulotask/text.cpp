#include "text.h"

#include <algorithm>
#include <cwchar>

namespace ulotask {
namespace {

constexpr char32_t ellipsis = 0x2026;
constexpr char32_t lineSeparator = 0x2028;
constexpr char32_t paragraphSeparator = 0x2029;

bool isControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

// Marks, embeddings, overrides and isolates of the bidirectional algorithm.
bool changesDirection(char32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

bool isLineBreak(char32_t c) {
  return c == '\n' || c == '\r' || c == lineSeparator || c == paragraphSeparator;
}

// Half a surrogate pair, which has no UTF-8, becomes U+FFFD.
std::u32string characters(const QString& text) {
  return text.toStdU32String();
}

std::u32string characters(std::string_view text) {
  return characters(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

std::string utf8(std::u32string_view text) {
  return QString::fromUcs4(text.data(), static_cast<qsizetype>(text.size())).toStdString();
}

char32_t shown(char32_t c) {
  return isControl(c) || changesDirection(c) ? replacementCharacter : c;
}

int columnsOf(char32_t c) {
  const int columns = wcwidth(static_cast<wchar_t>(c));
  return columns < 0 ? 1 : columns;
}

// Printable ASCII: each character is shown as it is, in one column.
bool isPlain(char32_t c) {
  return c >= 0x20 && c < 0x7F;
}

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return isPlain(static_cast<unsigned char>(c)); });
}

std::string onOneLine(std::u32string text) {
  for (char32_t& c : text)
    c = isLineBreak(c) || c == '\t' ? U' ' : shown(c);
  return utf8(text);
}

}  // namespace

std::string oneLine(const QString& text) {
  if (std::all_of(text.begin(), text.end(), [](QChar c) { return isPlain(c.unicode()); }))
    return text.toStdString();
  return onOneLine(characters(text));
}

std::string oneLine(std::string_view text) {
  return onOneLine(characters(text));
}

std::string severalLines(const QString& text, int indent) {
  const std::u32string all = characters(text);
  std::u32string result;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i] == '\r' && i + 1 < all.size() && all[i + 1] == '\n')
      continue;
    if (isLineBreak(all[i]))
      result.append(U"\n").append(static_cast<std::size_t>(indent), U' ');
    else
      result += all[i] == '\t' ? U' ' : shown(all[i]);
  }
  return utf8(result);
}

int columnsOf(std::string_view text) {
  if (isPlain(text))
    return static_cast<int>(text.size());
  int columns = 0;
  for (const char32_t c : characters(text))
    columns += columnsOf(c);
  return columns;
}

std::string elided(const std::string& text, int columns) {
  if (columnsOf(text) <= columns)
    return text;
  std::u32string kept;
  int used = 0;
  for (const char32_t c : characters(text)) {
    used += columnsOf(c);
    if (used > columns - 1)
      break;
    kept += c;
  }
  return utf8(kept + ellipsis);
}

std::string counted(std::size_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

}  // namespace ulotask
