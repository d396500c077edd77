#include "sql_name.h"

namespace ulo::odb {

std::string quoteName(const std::string& name) {
  std::string result = "\"";
  for (const char c : name) {
    if (c == '"')
      result += c;
    result += c;
  }
  return result + '"';
}

}  // namespace ulo::odb
