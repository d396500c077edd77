#pragma once

#include "ulodb2_codes.h"

#include <stdexcept>
#include <string>

namespace ulo::odb {

// A position in a text. Both numbers count from 1, columns in bytes.
struct Position {
  int line = 1;
  int column = 1;
};

// Reports why a text could not be parsed or run. Inside the library every failure is one of these;
// the C interface converts it to its code and a log line.
class Failure : public std::runtime_error {
public:
  Failure(DB_Result code, const std::string& message) : Failure(code, message, message) {}
  // `reason` is the message for the user, without texts of the database's languages.
  Failure(DB_Result code, const std::string& message, const std::string& reason)
      : std::runtime_error(message), code_(code), reason_(reason) {}
  Failure(DB_Result code, Position at, const std::string& message)
      : Failure(code, "line " + std::to_string(at.line) + ", column " + std::to_string(at.column) +
                          ": " + message) {
    hasPlace_ = true;
  }

  [[nodiscard]] DB_Result code() const { return code_; }
  [[nodiscard]] const char* reason() const { return reason_.what(); }
  // Returns the failure with its position in the text, unless it already has one.
  [[nodiscard]] Failure at(Position place) const {
    if (hasPlace_)
      return *this;
    Failure placed(code_, place, what());
    placed.reason_ = reason_;
    return placed;
  }

private:
  DB_Result code_;
  std::runtime_error reason_;  // which copies without allocating
  bool hasPlace_ = false;
};

}  // namespace ulo::odb
