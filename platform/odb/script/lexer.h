#pragma once

#include "base/failure.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

enum class TokenKind {
  name,       // create; words without "$" of both languages
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
  std::string text;         // texts without quotes, variables without "$"
  std::int64_t number = 0;  // of numbers, parameters and arguments
};

// Splits a text into tokens; the last one is of kind `end`. Throws Failure.
std::vector<Token> tokenize(std::string_view text);

// Describes the token for messages: "number 42", "')'", "the end of the text".
std::string describe(const Token& token);
// Names the kind for listings.
const char* kindName(TokenKind kind);

}  // namespace ulo::odb
