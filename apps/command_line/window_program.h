// The command line of a program with windows. It is read before the application object exists, so
// that the help, the version and complaints need no display.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ulo {

// What the help and the manual page of a program say.
struct ProgramHelp {
  struct Entry {
    const char* name;
    const char* meaning;
  };
  struct Exit {
    int code;
    const char* meaning;
  };

  const char* name;      // "ulo-tasks"
  const char* purpose;   // a few words, for lists of programs
  const char* operands;  // "[FILE...]"
  std::vector<Entry> operandEntries;
  std::vector<Exit> exits;
  std::string description;           // for the manual page, as ManPage::helpText reads it
  std::vector<std::string> related;  // "ulotask(1)"
};

// The exit code for a wrong command line; that of ulotask, too.
inline constexpr int exitWrongCommandLine = 2;

// A command line, split into operands and options of the toolkit. "--" ends the options.
class WindowProgram {
public:
  WindowProgram(ProgramHelp help, int count, char** arguments);

  // The exit code, if the program must end now because the help, the version, the manual page, or a
  // complaint about the command line has been printed.
  [[nodiscard]] std::optional<int> end() const { return end_; }
  // Prints the reason and the usage on standard error. Returns the exit code.
  [[nodiscard]] int refuse(const std::string& reason) const;

  [[nodiscard]] const std::vector<std::string>& operands() const { return operands_; }
  // For the application object: the program and the options of the toolkit, without operands, which
  // the toolkit could take for options. They must outlive that object.
  [[nodiscard]] int& toolkitCount() { return toolkitCount_; }
  [[nodiscard]] char** toolkitArguments() { return toolkitArguments_.data(); }

private:
  void read(int count, char** arguments);
  [[nodiscard]] std::string usage() const;
  [[nodiscard]] std::string helpText() const;
  [[nodiscard]] std::string manPage() const;
  void finish(const std::string& text);

  ProgramHelp help_;
  std::optional<int> end_;
  std::vector<std::string> operands_;
  std::vector<char*> toolkitArguments_;
  int toolkitCount_ = 0;
};

}  // namespace ulo
