// The manual pages: what programs print, and what ulotaskengine.5 says.

#include "ulotask_runner.h"

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char pages[] = ULO_SOURCE_DIR "/packaging/man/";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

// As the pages write a name.
std::string asMarkup(const std::string& name) {
  return replaced(name, "-", "\\-");
}

class Manual : public UlotaskTest {
protected:
  // The values that the program offers to a shell after these words.
  std::vector<std::string> offered(Arguments words) {
    words.insert(words.begin(), "__complete");
    std::istringstream lines(succeed(words).out);
    std::vector<std::string> values;
    for (std::string line; std::getline(lines, line);)
      values.push_back(line.substr(0, line.find('\t')));
    return values;
  }

  // The part of `page` that describes a verb, such as "db check".
  static std::string partOf(const std::string& page, const std::string& verb) {
    std::smatch heading;
    if (!std::regex_search(page, heading,
                           std::regex("\n\\.SS \"" + replaced(verb, "-", "\\\\-") + "[ \"]")))
      return "";
    const std::string rest = heading.suffix();
    return rest.substr(0, rest.find("\n.S"));
  }

  static bool isGroup(const std::string& name) {
    return name == "category" || name == "db" || name == "ical" || name == "lock" ||
           name == "sync-item";
  }

  // Expects all verbs of the group, with their options.
  void expectVerbs(const std::string& page, const Arguments& group) {
    Arguments words = group;
    words.emplace_back("");
    for (const std::string& verb : offered(words)) {
      words.back() = verb;
      std::string name;
      for (const std::string& word : words)
        name += (name.empty() ? "" : " ") + word;
      const std::string part = partOf(page, name);
      EXPECT_THAT(part, Not(IsEmpty())) << name;
      Arguments options = words;
      options.emplace_back("--");
      for (const std::string& option : offered(options)) {
        if (option != "--help") {
          EXPECT_THAT(part, HasSubstr("\\fB" + asMarkup(option) + "\\fP")) << name;
        }
      }
      // Other words than verbs may follow those that are not a group.
      if (isGroup(name))
        expectVerbs(page, words);
    }
  }
};

TEST_F(Manual, DescribesEachVerbAndOption) {
  const std::string page = succeed({"--man-page"}).out;
  expectVerbs(page, {});
  EXPECT_THAT(partOf(page, "db restore"), HasSubstr("\n\\fIFILE\\fP\n"));
  EXPECT_THAT(page, HasSubstr(".SS \"category rm [OPTIONS] CATEGORY...\""));
  EXPECT_THAT(partOf(page, "export"), HasSubstr("\\fB\\-o\\fP, \\fB\\-\\-output\\fP \\fIFILE\\fP"));
}

TEST_F(Manual, NamesValuesAndExamples) {
  const std::string page = succeed({"--man-page"}).out;
  const std::string list = partOf(page, "list");
  EXPECT_THAT(list, HasSubstr("One of all, due, incomplete, completed. The default is all."));
  EXPECT_THAT(list, HasSubstr("\n.EX\nulotask list\nulotask list \\-\\-view incomplete"));
  EXPECT_THAT(replaced(partOf(page, "changes"), "\n", " "),
              HasSubstr("Not together with \\-\\-net."));
  EXPECT_THAT(page, HasSubstr("\n.TP\n\\fB19\\fP\na file is not a sound store"));
}

// Roff takes a backslash for an escape, and a dot at the start of a line for a request.
TEST_F(Manual, EscapesTexts) {
  const std::string page = succeed({"--man-page"}).out;
  EXPECT_THAT(page, HasSubstr("\nulotask db explain \\(dqsml:cursor \\e$c = "
                              "open_cursor(\\(aqtask_index_due\\(aq);\\(dq\n"));
}

TEST_F(Manual, FilesPageNamesEachFile) {
  const std::string page = readWhole(pages + std::string("ulotaskengine.5"));
  environment_.erase("ULO_LOG");
  succeed({"lock", "set"}, "4711\n");
  add({"Buy milk"});
  for (const char* directory : {"data", "state"}) {
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path(directory))) {
      if (!entry.is_regular_file())
        continue;
      ++files;
      const std::string name = entry.path().filename();
      EXPECT_THAT(page, HasSubstr(name == "ulotask.log" ? "PROGRAM.log" : asMarkup(name)));
    }
    EXPECT_GT(files, 0) << directory;
  }
}

TEST_F(Manual, FilesPageNamesEachVariable) {
  const std::string page = readWhole(pages + std::string("ulotaskengine.5"));
  const std::regex use(
      "(?:getenv|qEnvironmentVariable|setting|userDirectory)\\(\"((?:ULO|XDG|DBUS)_[A-Z_]+)\"");
  std::set<std::string> names;
  for (const char* room : {"apps", "operations", "platform", "uistyle", "utility"}) {
    const std::filesystem::path sources = std::filesystem::path(ULO_SOURCE_DIR) / room;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sources)) {
      if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h")
        continue;
      const std::string text = readWhole(entry.path());
      for (std::sregex_iterator found(text.begin(), text.end(), use), end; found != end; ++found)
        names.insert((*found)[1]);
    }
  }
  EXPECT_GT(names.size(), 8U);
  for (const std::string& name : names)
    EXPECT_THAT(page, HasSubstr("\\fB" + name + "\\fP"));
}

}  // namespace
