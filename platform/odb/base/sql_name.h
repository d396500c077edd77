#pragma once

#include <string>

namespace ulo::odb {

// Returns "name" quoted for SQL: any word may be a name, even `end`.
std::string quoteName(const std::string& name);

}  // namespace ulo::odb
