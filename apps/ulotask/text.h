// Texts as a terminal shows them: UTF-8, measured in columns, nothing in them that it could obey.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace ulotask {

// `text` in one line: line breaks and tabs become blanks. Control characters, which a terminal
// would obey, and characters that reverse the text after them become U+FFFD.
std::string oneLine(const QString& text);
// The same for bytes that are meant to be UTF-8, such as a file name.
std::string oneLine(std::string_view text);

// The same with the line breaks kept; each line after the first begins with `indent` blanks.
std::string severalLines(const QString& text, int indent);

// The columns that a text of the functions above takes on a terminal.
int columnsOf(std::string_view text);

// `text` if it has no more than `columns` columns, else its beginning and an ellipsis.
// Requires: columns > 0.
std::string elided(const std::string& text, int columns);

// "1 task", "2 tasks".
std::string counted(std::size_t count, const char* noun);

}  // namespace ulotask
