#include "manual.h"

#include "exit_codes.h"
#include "man_page.h"
#include "verb.h"

#include <CLI/CLI.hpp>

#include <vector>

namespace ulotask {
namespace {

using ulo::bold;
using ulo::italic;
using ulo::plain;

// "UID...", in brackets if it may be left out.
std::string operand(const CLI::Option& option) {
  const std::string name =
      option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : "");
  return option.get_required() ? name : '[' + name + ']';
}

bool isHelp(const CLI::App& verb, const CLI::Option* option) {
  return option == verb.get_help_ptr() || option == verb.get_version_ptr();
}

// The verb as it is typed after `path`, with what must or may follow it.
std::string synopsis(const CLI::App& verb, const std::string& path) {
  std::string options;
  std::string operands;
  for (const CLI::Option* option : verb.get_options()) {
    if (option->get_positional())
      operands += ' ' + operand(*option);
    else if (!isHelp(verb, option))
      options = " [OPTIONS]";
  }
  return path + verb.get_name() + options + operands;
}

// "one of a, b", from the name of a type such as "VIEW:{a,b}".
std::string choices(const std::string& type) {
  const std::size_t begin = type.find('{');
  const std::size_t end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos)
    return "";
  std::string words;
  for (const char character : type.substr(begin + 1, end - begin - 1))
    words += character == ',' ? ", " : std::string(1, character);
  return " One of " + words + '.';
}

std::string meaning(const CLI::Option& option) {
  std::string text = ulo::sentence(option.get_description()) + choices(option.get_type_name());
  if (const std::string preset = option.get_default_str(); !preset.empty())
    text += " The default is " + preset + '.';
  for (const CLI::Option* other : option.get_excludes())
    text += " Not together with " + other->get_name() + '.';
  return text;
}

// "-o, --output FILE" or "UID...".
std::string tag(const CLI::Option& option) {
  if (option.get_positional())
    return italic(option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : ""));
  std::string names;
  const auto add = [&](const std::string& name) {
    names += (names.empty() ? "" : ", ") + bold(name);
  };
  for (const std::string& name : option.get_snames())
    add('-' + name);
  for (const std::string& name : option.get_lnames())
    add("--" + name);
  const std::string type = option.get_type_name();
  const bool hasValue = option.get_items_expected_max() > 0;
  return hasValue ? names + ' ' + italic(type.substr(0, type.find(':'))) : names;
}

void addVerb(ulo::ManPage& page, const CLI::App& verb, const std::string& path) {
  page.subsection(synopsis(verb, path));
  page.paragraph(plain(ulo::sentence(verb.get_description())));
  for (const CLI::Option* option : verb.get_options()) {
    if (!isHelp(verb, option))
      page.entry(tag(*option), plain(meaning(*option)));
  }
  // A verb without a footer has that of its group.
  if (verb.get_footer() != verb.get_parent()->get_footer())
    page.helpText(verb.get_footer());
  for (const CLI::App* inner : verbsOf(verb))
    addVerb(page, *inner, path + verb.get_name() + ' ');
}

}  // namespace

std::string manual(const CLI::App& app) {
  ulo::ManPage page(app.get_name(), "keep a to-do list on the command line");
  page.section("SYNOPSIS");
  page.paragraph(bold(app.get_name()) + ' ' + italic("VERB") + ' ' + plain("[OPTIONS] ") +
                 plain("[ARGUMENTS]"));
  page.section("DESCRIPTION");
  page.paragraph(plain(app.get_description()));
  page.paragraph(plain("The files that it uses, and the environment variables that name other "
                       "places, are described in ") +
                 bold("ulotaskengine") + "(5).");
  page.section("OPTIONS");
  for (const CLI::Option* option : app.get_options())
    page.entry(tag(*option), plain(ulo::sentence(option->get_description())));
  page.paragraph(plain("Each verb has the option --help, too. The word -- ends the options, so "
                       "that the following words are arguments even if they begin with a dash."));
  page.section("VERBS");
  for (const CLI::App* verb : verbsOf(app))
    addVerb(page, *verb, "");
  page.section("EXIT STATUS");
  for (const ExitMeaning& entry : exitMeanings)
    page.entry(bold(std::to_string(static_cast<int>(entry.code))),
               plain(ulo::sentence(entry.meaning)));
  page.seeAlso({"ulo-tasks(1)", "ulo-action(1)", "ulotaskengine(5)", "ulodb2(7)"});
  return page.text();
}

}  // namespace ulotask
