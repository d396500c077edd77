// Completion of the word that is being typed in a shell.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ulotask {

class Session;

// The verb that the completion files of the shells use. It is not in the help.
inline constexpr char completeVerb[] = "__complete";

// Prints the completions of the last of `words`, which are the words after the program's name. Each
// line has a value, a tab and a description. A line with an empty value and the description "files"
// means that file names are valid too. Verbs and options are those of `app`. If the store cannot be
// read, it contributes nothing.
void complete(const CLI::App& app, Session& session, std::vector<std::string> words);

}  // namespace ulotask
