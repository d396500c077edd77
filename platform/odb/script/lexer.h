#pragma once

#include "failure.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

enum class TokenKind {
  name,       // create, $-less words of both languages
  variable,   // $c
  number,     // 42
  text,       // 'it''s'
  parameter,  // :0
  argument,   // %d, a number of the template
  symbol,     // punctuation and operators
  end,
};

struct Token {
  TokenKind kind = TokenKind::end;
  Position at;
  std::string text;         // a text without its quotes, a variable without "$"
  std::int64_t number = 0;  // of numbers, parameters and arguments
};

// Splits a text into its words; the last one is of kind `end`. Throws Failure.
std::vector<Token> tokenize(std::string_view text);

// How people call it: "number 42", "')'", "the end of the text".
std::string describe(const Token& token);
// The kind in a word, for listings.
const char* kindName(TokenKind kind);

}  // namespace ulo::odb
