// What a shell can offer for the word that is being typed.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ulotask {

class Session;

// The verb, known to the shells' completion files alone, under which main asks for this.
inline constexpr char completeVerb[] = "__complete";

// Prints what can stand for the last of `words`, the words behind the program's name: on each line
// a value, a tab and what it means. A line without a value and with "files" says that names of
// files fit too. Verbs and options are those of `app`. A store that can't be read adds nothing.
void complete(const CLI::App& app, Session& session, std::vector<std::string> words);

}  // namespace ulotask
