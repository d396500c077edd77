#pragma once

#include "ast.h"
#include "lexer.h"

#include <string_view>

namespace ulo::odb {

// Returns true if the text is a script (begins with "sml:") and not a statement.
bool isScript(std::string_view text);

// Returns the tokens of a text in either language, without the prefix of a script.
std::vector<Token> tokenizeText(std::string_view text);

// Both throw Failure with the position and the expected token.
Script parseScript(std::string_view text);
Statement parseStatement(std::string_view text);

}  // namespace ulo::odb
