// Shared by the two fuzzers of the database's languages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// The kinds of printf arguments that a template expects, in order. Unknown conversions are skipped.
enum class Wanted { text, number, longNumber };
inline std::vector<Wanted> wantedBy(std::string_view text) {
  std::vector<Wanted> wanted;
  for (std::size_t at = text.find('%'); at < text.size(); at = text.find('%', at)) {
    const std::string_view rest = text.substr(at + 1);
    at += rest.substr(0, 1) == "%" ? 2 : 1;
    if (rest.substr(0, 1) == "s")
      wanted.push_back(Wanted::text);
    else if (rest.substr(0, 1) == "d" || rest.substr(0, 1) == "i" || rest.substr(0, 1) == "u")
      wanted.push_back(Wanted::number);
    else if (rest.substr(0, 2) == "ld" || rest.substr(0, 2) == "li" || rest.substr(0, 2) == "lu")
      wanted.push_back(Wanted::longNumber);
  }
  return wanted;
}

}  // namespace fuzz
