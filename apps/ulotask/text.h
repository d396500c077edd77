// Texts for a terminal: UTF-8, measured in columns, without control characters.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace ulotask {

// Stands for a character that cannot be written.
constexpr char32_t replacementCharacter = 0xFFFD;

// Returns `text` on one line: line breaks and tabs become blanks. Control characters, and
// characters that change the direction of the following text, become U+FFFD.
std::string oneLine(const QString& text);
// The same for bytes that are meant to be UTF-8, such as a file name.
std::string oneLine(std::string_view text);

// The same, but keeps line breaks. Each line after the first begins with `indent` blanks.
std::string severalLines(const QString& text, int indent);

// The width on a terminal of a text that the functions above returned.
int columnsOf(std::string_view text);

// Returns `text` if it fits into `columns` columns, otherwise its beginning and an ellipsis.
// Requires: columns > 0.
std::string elided(const std::string& text, int columns);

// "1 task", "2 tasks".
std::string counted(std::size_t count, const char* noun);

}  // namespace ulotask
