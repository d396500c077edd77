#pragma once

#include "lexer.h"

#include <vector>

namespace ulo::odb {

// Reads the tokens of a text. Shared by both parsers.
class TokenReader {
public:
  explicit TokenReader(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  [[nodiscard]] const Token& peek() const { return tokens_[next_]; }
  const Token& take() {
    const Token& token = tokens_[next_];
    if (token.kind != TokenKind::end)
      ++next_;
    return token;
  }
  [[nodiscard]] bool at(TokenKind kind) const { return peek().kind == kind; }
  [[nodiscard]] bool atSymbol(std::string_view text) const {
    return at(TokenKind::symbol) && peek().text == text;
  }
  bool takeSymbol(std::string_view text) {
    if (!atSymbol(text))
      return false;
    take();
    return true;
  }
  void expectSymbol(std::string_view text) {
    if (!takeSymbol(text))
      fail("'" + std::string(text) + "'");
  }
  const Token& expect(TokenKind kind, const std::string& what) {
    if (!at(kind))
      fail(what);
    return take();
  }
  [[noreturn]] void fail(const std::string& expected) const {
    throw Failure(DB_SYNTAX, peek().at, "expected " + expected + ", found " + describe(peek()));
  }

private:
  std::vector<Token> tokens_;
  std::size_t next_ = 0;
};

// Tracks the parser's nesting depth. Throws Failure beyond DB_MAX_NESTING.
class Nesting {
public:
  Nesting(int& depth, Position at) : depth_(depth) {
    if (depth_ == DB_MAX_NESTING)
      throw Failure(DB_LIMIT, at,
                    "blocks and parentheses are nested deeper than " +
                        std::to_string(DB_MAX_NESTING));
    ++depth_;
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { --depth_; }

private:
  int& depth_;
};

}  // namespace ulo::odb
