#pragma once

#include "ast.h"

#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// Listings of a text for display, one entry per line.
std::vector<std::string> listTokens(std::string_view text);
std::vector<std::string> listTree(const Script& script);
std::vector<std::string> listTree(const Statement& statement);

}  // namespace ulo::odb
