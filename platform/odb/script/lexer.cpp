#include "lexer.h"

#include <array>

namespace ulo::odb {
namespace {

// At most two characters. Longer symbols first, so that "<=" is not read as "<".
constexpr std::array<std::string_view, 20> symbols = {"->", "==", "!=", "<=", ">=", "&&", "||",
                                                      "(",  ")",  "{",  "}",  ";",  ",",  ".",
                                                      "=",  "<",  ">",  "+",  "-",  "!"};

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Lexer {
public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::vector<Token> run() {
    std::vector<Token> tokens;
    do {
      while (!atEnd() && isBlank(peek()))
        advance();
      tokens.push_back(next());
    } while (tokens.back().kind != TokenKind::end);
    return tokens;
  }

private:
  [[nodiscard]] bool atEnd() const { return offset_ == text_.size(); }
  [[nodiscard]] char peek(std::size_t ahead = 0) const {
    return offset_ + ahead < text_.size() ? text_[offset_ + ahead] : '\0';
  }
  char advance() {
    const char c = text_[offset_++];
    if (c == '\n')
      at_ = {at_.line + 1, 1};
    else
      ++at_.column;
    return c;
  }
  // The same for characters without line ends.
  std::string_view advance(std::size_t count) {
    const std::string_view passed = text_.substr(offset_, count);
    offset_ += count;
    at_.column += static_cast<int>(count);
    return passed;
  }

  Token next() {
    Token token;
    token.at = at_;
    if (atEnd())
      return token;
    const char c = peek();
    if (isLetter(c)) {
      token.kind = TokenKind::name;
      token.text = word();
    } else if (isDigit(c)) {
      token.kind = TokenKind::number;
      token.number = number();
    } else if (c == '\'') {
      token.kind = TokenKind::text;
      token.text = quotedText();
    } else if (c == '$' && isLetter(peek(1))) {
      advance();
      token.kind = TokenKind::variable;
      token.text = word();
    } else if (c == ':' && isDigit(peek(1))) {
      advance();
      token.kind = TokenKind::parameter;
      token.number = number();
    } else if (c == '%' && peek(1) == 'd') {
      advance();
      advance();
      token.kind = TokenKind::argument;
      token.number = arguments_++;
    } else {
      token.kind = TokenKind::symbol;
      token.text = symbol();
    }
    return token;
  }

  std::string word() {
    std::size_t size = 0;
    while (isLetter(peek(size)) || isDigit(peek(size)))
      ++size;
    if (size > DB_MAX_NAME)
      throw Failure(DB_LIMIT, at_,
                    "a name is longer than " + std::to_string(DB_MAX_NAME) + " bytes");
    return std::string(advance(size));
  }

  std::int64_t number() {
    const Position start = at_;
    std::int64_t value = 0;
    while (isDigit(peek())) {
      value = value * 10 + (advance() - '0');
      if (value > INT32_MAX)
        throw Failure(DB_SYNTAX, start, "the number is larger than " + std::to_string(INT32_MAX));
    }
    return value;
  }

  // A quote within the text is doubled.
  std::string quotedText() {
    const Position start = at_;
    std::string result;
    advance();
    while (!atEnd()) {
      const char c = advance();
      if (c != '\'')
        result += c;
      else if (peek() == '\'')
        result += advance();
      else
        return result;
    }
    throw Failure(DB_SYNTAX, start, "the text that begins here has no closing quote");
  }

  std::string symbol() {
    for (const std::string_view candidate : symbols)
      if (candidate[0] == peek() && (candidate.size() == 1 || candidate[1] == peek(1)))
        return std::string(advance(candidate.size()));
    const auto byte = static_cast<unsigned char>(peek());
    constexpr char hex[] = "0123456789abcdef";
    const std::string shown = byte > ' ' && byte < 0x7f
                                  ? std::string{'\'', peek(), '\''}
                                  : std::string{'0', 'x', hex[byte >> 4U], hex[byte & 15U]};
    throw Failure(DB_SYNTAX, at_, "no word begins with " + shown);
  }

  std::string_view text_;
  std::size_t offset_ = 0;
  Position at_;
  std::int64_t arguments_ = 0;
};

}  // namespace

std::vector<Token> tokenize(std::string_view text) {
  return Lexer(text).run();
}

const char* kindName(TokenKind kind) {
  switch (kind) {
  case TokenKind::name:
    return "name";
  case TokenKind::variable:
    return "variable";
  case TokenKind::number:
    return "number";
  case TokenKind::text:
    return "text";
  case TokenKind::parameter:
    return "parameter";
  case TokenKind::argument:
    return "argument";
  case TokenKind::symbol:
    return "symbol";
  case TokenKind::end:
    break;
  }
  return "end";
}

std::string describe(const Token& token) {
  switch (token.kind) {
  case TokenKind::name:
  case TokenKind::symbol:
    return "'" + token.text + "'";
  case TokenKind::variable:
    return "$" + token.text;
  case TokenKind::number:
    return "number " + std::to_string(token.number);
  case TokenKind::text:
    return "text '" + token.text + "'";
  case TokenKind::parameter:
    return "parameter :" + std::to_string(token.number);
  case TokenKind::argument:
    return "a number of the template";
  case TokenKind::end:
    break;
  }
  return "the end of the text";
}

}  // namespace ulo::odb
