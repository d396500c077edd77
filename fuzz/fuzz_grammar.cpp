// Fuzzes the grammar of the database's languages: tokenizes, parses and prints the input, without a
// database.
#include "script/parser.h"
#include "script/printer.h"
#include "script/template.h"

#include "fuzz_support.h"
#include "sql_text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

using namespace ulo::odb;

namespace {

// Returns a text for the token.
std::string spelled(const Token& token) {
  switch (token.kind) {
  case TokenKind::variable:
    return "$" + token.text;
  case TokenKind::number:
    return std::to_string(token.number);
  case TokenKind::parameter:
    return ":" + std::to_string(token.number);
  case TokenKind::argument:
    return "%d";
  case TokenKind::text: {
    std::string quoted = "'";
    for (const char c : token.text)
      quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
  }
  case TokenKind::name:
  case TokenKind::symbol:
    return token.text;
  case TokenKind::end:
    break;
  }
  return "";
}

// Returns the syntax tree of a text without positions, or the error.
std::vector<std::string> meaning(std::string_view text) {
  try {
    std::vector<std::string> lines =
        isScript(text) ? listTree(parseScript(text)) : listTree(parseStatement(text));
    for (std::string& line : lines)
      line.resize(std::min(line.rfind("  @"), line.size()));
    return lines;
  } catch (const Failure& failure) {
    const std::string why = failure.what();
    FUZZ_REQUIRE(why.rfind("line ", 0) == 0);
    return {std::to_string(failure.code()), why.substr(std::min(why.find(": "), why.size()))};
  }
}

// Requires that each token is at its position, after the preceding one.
void checkPlaces(std::string_view text, const std::vector<Token>& tokens) {
  std::vector<std::size_t> lines = {0};
  for (std::size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1))
    lines.push_back(at + 1);
  std::size_t next = 0;
  for (const Token& token : tokens) {
    FUZZ_REQUIRE(token.at.line >= 1 && token.at.line <= static_cast<int>(lines.size()));
    const std::size_t at = lines[static_cast<std::size_t>(token.at.line) - 1] +
                           static_cast<std::size_t>(token.at.column) - 1;
    FUZZ_REQUIRE(at >= next && at <= text.size());
    if (token.kind == TokenKind::number)
      FUZZ_REQUIRE(text[at] >= '0' && text[at] <= '9');
    else
      FUZZ_REQUIRE(text.substr(at, 1) == spelled(token).substr(0, 1));
    next = at + 1;
  }
  FUZZ_REQUIRE(tokens.back().kind == TokenKind::end);
}

// Formats a template that wants `wanted` arguments.
void checkCall(std::size_t wanted, const Template* pattern, ...) {
  va_list arguments;
  va_start(arguments, pattern);
  std::string inserted;
  std::vector<std::int64_t> numbers;
  pattern->read(arguments, inserted, numbers);
  va_end(arguments);
  const auto pieces = static_cast<std::size_t>(std::count(inserted.begin(), inserted.end(), '\0'));
  FUZZ_REQUIRE(pieces + numbers.size() == wanted);
  FUZZ_REQUIRE(std::all_of(numbers.begin(), numbers.end(), [](auto n) { return n == -7; }));
  const std::string formatted = pattern->format(inserted);
  FUZZ_REQUIRE(formatted.size() <= DB_MAX_TEXT);
  meaning(formatted);
}

// With an argument for each conversion.
constexpr std::size_t mostArguments = 4;
template <typename... Arguments>
void checkTemplate(const Template& pattern, const std::vector<fuzz::Wanted>& wanted,
                   Arguments... arguments) {
  constexpr std::size_t given = sizeof...(arguments);
  if (given == wanted.size()) {
    checkCall(given, &pattern, arguments...);
    return;
  }
  if constexpr (given < mostArguments) {
    switch (wanted[given]) {
    case fuzz::Wanted::text:
      return checkTemplate(pattern, wanted, arguments..., "it's");
    case fuzz::Wanted::number:
      return checkTemplate(pattern, wanted, arguments..., -7);
    case fuzz::Wanted::longNumber:
      return checkTemplate(pattern, wanted, arguments..., -7L);
    }
  }
}

void checkTemplate(const std::string& text) {
  try {
    checkTemplate(Template(text), fuzz::wantedBy(text));
  } catch (const Failure&) {
    // An invalid conversion, or a text that is too long.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::textOf(data, size);
  checkTemplate(text);
  const std::vector<std::string> tree = meaning(text);
  std::vector<Token> tokens;
  try {
    tokens = tokenizeText(text);
    FUZZ_REQUIRE(listTokens(text).size() == tokens.size());
  } catch (const Failure&) {
    FUZZ_REQUIRE(tree.size() == 2);
    return 0;
  }
  checkPlaces(text, tokens);
  // White space between tokens does not matter.
  for (const char* between : {" ", "\r\n\t"}) {
    std::string again = isScript(text) ? "sml:" : "";
    for (const Token& token : tokens)
      again += between + spelled(token);
    FUZZ_REQUIRE(meaning(again) == tree);
  }
  return 0;
}
