#pragma once

#include <string>

namespace ulo::odb {

// The SQL function of this database's connections with which SQLite filters rows by a text.
inline constexpr char containsFunction[] = "ulo_contains";

// Returns "name" quoted for SQL: any word may be a name, even `end`.
std::string quoteName(const std::string& name);

}  // namespace ulo::odb
