#include "window_program.h"

#include "man_page.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

namespace ulo {
namespace {

struct Option {
  const char* names;
  const char* meaning;
};
// The words of ulotask's help.
constexpr Option ownOptions[] = {
    {"-h,--help", "Print this help message and exit"},
    {"--version", "Display program version information and exit"},
};
constexpr char toolkitNote[] =
    "Options of the Qt toolkit are accepted, too: -platform, -style, -display and others.";

// The options of Qt Widgets and its xcb platform, which begin with one dash or two.
constexpr std::string_view toolkitOptionsWithValue[] = {"display",
                                                        "geometry",
                                                        "icon",
                                                        "name",
                                                        "platform",
                                                        "platformtheme",
                                                        "platformpluginpath",
                                                        "plugin",
                                                        "qwindowgeometry",
                                                        "qwindowicon",
                                                        "qwindowtitle",
                                                        "session",
                                                        "style",
                                                        "stylesheet",
                                                        "title"};
constexpr std::string_view toolkitFlags[] = {"dograb", "nograb", "reverse", "widgetcount"};
constexpr std::string_view toolkitPrefixes[] = {"style=", "stylesheet="};

template <std::size_t size>
bool isOneOf(const std::string_view (&names)[size], std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isToolkitFlag(std::string_view name) {
  return isOneOf(toolkitFlags, name) ||
         std::any_of(std::begin(toolkitPrefixes), std::end(toolkitPrefixes),
                     [&](std::string_view prefix) { return name.starts_with(prefix); });
}

// A line of the help: the second column begins where that of ulotask does.
std::string helpLine(const std::string& name, const std::string& meaning) {
  constexpr std::size_t column = 30;
  std::string line = "  " + name;
  line.resize(std::max(column, line.size() + 1), ' ');
  return line + meaning + '\n';
}

}  // namespace

WindowProgram::WindowProgram(ProgramHelp help, int count, char** arguments)
    : help_(std::move(help)) {
  if (count > 0)
    toolkitArguments_.push_back(arguments[0]);
  read(count, arguments);
  toolkitCount_ = static_cast<int>(toolkitArguments_.size());
  toolkitArguments_.push_back(nullptr);
}

void WindowProgram::read(int count, char** arguments) {
  bool mayBeOption = true;
  for (int i = 1; i < count && !end_; ++i) {
    const std::string_view word = arguments[i];
    // A single dash is an operand by convention.
    if (!mayBeOption || word.size() < 2 || word.front() != '-') {
      operands_.emplace_back(word);
      continue;
    }
    const std::string_view name = word.substr(word.starts_with("--") ? 2 : 1);
    if (word == "--") {
      mayBeOption = false;
    } else if (word == "--help" || word == "-h") {
      finish(helpText());
    } else if (word == "--version") {
      finish(help_.name + std::string(" " ULO_VERSION "\n"));
    } else if (word == manPageOption) {
      finish(manPage());
    } else if (isToolkitFlag(name)) {
      toolkitArguments_.push_back(arguments[i]);
    } else if (!isOneOf(toolkitOptionsWithValue, name)) {
      end_ = refuse("The following argument was not expected: " + std::string(word));
    } else if (i + 1 == count) {
      end_ = refuse(std::string(word) + " requires a value");
    } else {
      toolkitArguments_.push_back(arguments[i]);
      toolkitArguments_.push_back(arguments[++i]);
    }
  }
}

void WindowProgram::finish(const std::string& text) {
  const bool isWritten =
      std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  end_ = isWritten ? 0 : 1;
}

int WindowProgram::refuse(const std::string& reason) const {
  static_cast<void>(std::fprintf(stderr, "%s: %s; see %s --help\n%s", help_.name, reason.c_str(),
                                 help_.name, usage().c_str()));
  return exitWrongCommandLine;
}

std::string WindowProgram::usage() const {
  return std::string("Usage: ") + help_.name + " [OPTIONS] " + help_.operands + '\n';
}

std::string WindowProgram::helpText() const {
  std::string text = sentence(help_.purpose) + '\n' + usage() + "\nPositionals:\n";
  text.front() = static_cast<char>(text.front() - 'a' + 'A');
  for (const ProgramHelp::Entry& entry : help_.operandEntries)
    text += helpLine(entry.name, entry.meaning);
  text += "\nOptions:\n";
  for (const Option& option : ownOptions)
    text += helpLine(option.names, option.meaning);
  text += std::string("\n") + toolkitNote + "\n\nExit codes:\n";
  for (const ProgramHelp::Exit& exit : help_.exits)
    text += "   " + std::to_string(exit.code) + "  " + exit.meaning + '\n';
  return text;
}

std::string WindowProgram::manPage() const {
  ManPage page(help_.name, help_.purpose);
  page.section("SYNOPSIS");
  page.paragraph(bold(help_.name) + ' ' + plain("[OPTIONS] ") + plain(help_.operands));
  page.section("DESCRIPTION");
  page.helpText(help_.description);
  for (const ProgramHelp::Entry& entry : help_.operandEntries)
    page.entry(bold(entry.name), plain(sentence(entry.meaning)));
  page.section("OPTIONS");
  for (const Option& option : ownOptions)
    page.entry(optionNames(option.names), plain(sentence(option.meaning)));
  page.entry(bold("--"), plain("End the options, so that the following words are operands even "
                               "if they begin with a dash."));
  page.paragraph(plain(toolkitNote));
  page.section("EXIT STATUS");
  for (const ProgramHelp::Exit& exit : help_.exits)
    page.entry(bold(std::to_string(exit.code)), plain(sentence(exit.meaning)));
  page.seeAlso(help_.related);
  return page.text();
}

}  // namespace ulo
