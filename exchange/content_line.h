// Content lines of iCalendar 2.0 (RFC 5545, section 3.1; parameter values also RFC 6868).
//
// A content line may be folded over several lines of the text. Lines end in LF, CR LF, CR CR LF
// (found in texts that were converted twice) or CR, in any mixture.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ulo {

// A content line as it is in the text, with its folding and its line end.
struct RawLine {
  std::string_view bytes;
  std::size_t number = 0;  // of its first line in the text, from 1
  bool folded = false;
};

// Splits a text into content lines. Together they contain every byte of the text.
class LineSplitter {
public:
  explicit LineSplitter(std::string_view text, std::size_t firstNumber = 1)
      : text_(text), number_(firstNumber) {}

  // Returns false at the end of the text.
  bool next(RawLine& line);

private:
  std::size_t endOfLine();

  std::string_view text_;
  std::size_t number_;
  std::size_t position_ = 0;
  // The next line feed and the next carriage return, if they are not before position_.
  std::size_t lineFeed_ = 0;
  std::size_t carriageReturn_ = 0;
  std::size_t runEnd_ = 0;  // of the carriage returns at position_
  bool searched_ = false;
};

// Returns the line without folding and line end: a part of `line`, or `buffer`, which is replaced.
std::string_view unfolded(const RawLine& line, std::string& buffer);
// Returns the line end of a line, which is empty at the end of some texts.
std::string_view lineEndOf(std::string_view line);

// The parts of an unfolded line.
struct ContentLine {
  std::string_view name;
  std::string_view parameters;  // with the semicolon in front of each; often empty
  std::string_view value;
};
// Returns nothing for a line without a name or without a colon that ends the parameters. A
// quotation mark without its counterpart is an ordinary character.
std::optional<ContentLine> parseContentLine(std::string_view line);
// Returns the name at the beginning of a line: what precedes the first colon or semicolon.
std::string_view nameOf(std::string_view line);

// Returns the first value of the parameter without quotation marks and with the characters that
// ^n, ^^ and ^' stand for. Returns nothing if there is no such parameter.
std::optional<std::string> parameter(std::string_view parameters, std::string_view name);
// Returns the parameters without those with one of these names.
std::string withoutParameters(std::string_view parameters,
                              std::initializer_list<std::string_view> names);
// Returns a parameter value in the form of a text, in quotation marks if it needs them.
std::string parameterText(std::string_view value);

std::string_view viewOf(const QByteArray& bytes);

// Compares without distinguishing ASCII letter case.
bool sameName(std::string_view one, std::string_view other);
std::string_view withoutBlanks(std::string_view text);
// Reads an integer (RFC 5545, section 3.3.8) without blanks around it. Returns nothing if it is not
// one or does not fit.
std::optional<int> parseInteger(std::string_view text);

// Folds a line at 75 bytes, never inside a character of UTF-8, and appends the line end.
std::string foldedLine(std::string_view line, std::string_view lineEnd);

// Decodes bytes as UTF-8, or as Latin-1 if they are not valid; sets `isLatin1` to whether they are
// not. Leaves out U+0000, which a record cannot keep.
QString decodedText(std::string_view bytes, bool& isLatin1);
// The same for a value of type TEXT (RFC 5545, section 3.3.11) with its escapes.
QString textOfValue(std::string_view value, bool& isLatin1);
// The inverse. A CR LF and a CR become the line break of the format. Unpaired surrogates become
// U+FFFD.
std::string valueOfText(const QString& text);
// Returns the text that is read after writing `text`.
QString asWritten(const QString& text);
// Returns the length of the first value of a list: what precedes the first comma without backslash.
std::size_t firstValueLength(std::string_view list);

}  // namespace ulo
