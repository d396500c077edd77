#pragma once

#include "ast.h"
#include "lexer.h"

#include <string_view>

namespace ulo::odb {

// Whether the text is a script ("sml:" in front), not a statement.
bool isScript(std::string_view text);

// The words of a text of either language, the mark of a script left out.
std::vector<Token> tokenizeText(std::string_view text);

// Both throw Failure with the place and what was expected there.
Script parseScript(std::string_view text);
Statement parseStatement(std::string_view text);

}  // namespace ulo::odb
