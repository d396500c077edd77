// The verbs of the command line and their arguments. Only verb.cpp, main.cpp, completion.cpp and
// manual.cpp include CLI11: each source that does adds seconds to the build and work to each start.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace ulotask {

// An option or a positional argument of a verb.
class Argument {
public:
  explicit Argument(CLI::Option* option) : option_(option) {}

  Argument& required();
  // The word for the value in the help text.
  Argument& valueName(const std::string& name);
  // Accepts only these words.
  Argument& oneOf(const std::vector<std::string>& words);
  // Accepts only numbers from `least` to `most`.
  template <typename Number> Argument& range(Number least, Number most);
  // The help text shows the value that the variable holds now.
  Argument& showDefault();
  // Must not be given together with `other`.
  Argument& excludes(const Argument& other);

private:
  CLI::Option* option_;
};

// A verb, or a group of verbs.
class Verb {
public:
  explicit Verb(CLI::App& app) : app_(&app) {}

  Verb addVerb(const std::string& name, const std::string& description);
  // One of its verbs must follow on the command line.
  Verb addGroup(const std::string& name, const std::string& description);

  // `names` is "--long", "-s,--long", or NAME for a positional argument. The variable must live
  // until the command line is parsed and the verb has run.
  template <typename Value>
  Argument option(const std::string& names, Value& variable, const std::string& description);
  Argument flag(const std::string& name, bool& variable, const std::string& description);

  // The end of the help text.
  void footer(const std::string& text);
  // What to run when the command line names the verb.
  void run(std::function<void()> work);

private:
  CLI::App* app_;
};

// The verbs and groups of `group`.
std::vector<const CLI::App*> verbsOf(const CLI::App& group);

}  // namespace ulotask
