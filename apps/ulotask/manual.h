// The manual page of the program.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace ulotask {

// Returns the page in the language of man(7). Its verbs and options, with their descriptions, are
// those of `app`.
std::string manual(const CLI::App& app);

}  // namespace ulotask
