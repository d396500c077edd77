#include "man_page.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

namespace ulo {
namespace {

// The day on which the form of the pages last changed. Pages must not depend on the day on which
// they are printed.
constexpr char date[] = "2026-11-22";
constexpr char indent[] = "  ";

std::string quoted(const std::string& title) {
  return '"' + plain(title) + '"';
}

}  // namespace

std::string plain(std::string_view text) {
  struct Escape {
    char character;
    const char* markup;
  };
  // Without these, terminals show a hyphen, a typographic quote or an accent, which shells do not
  // accept when it is copied.
  constexpr Escape escapes[] = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"}, {'`', "\\(ga"},
                                {'^', "\\(ha"}, {'~', "\\(ti"}, {'"', "\\(dq"}};
  std::string markup;
  for (const char character : text) {
    const auto* const escape =
        std::find_if(std::begin(escapes), std::end(escapes),
                     [&](const Escape& each) { return each.character == character; });
    if (escape == std::end(escapes))
      markup += character;
    else
      markup += escape->markup;
  }
  return markup;
}

std::string bold(std::string_view text) {
  return "\\fB" + plain(text) + "\\fP";
}

std::string italic(std::string_view text) {
  return "\\fI" + plain(text) + "\\fP";
}

std::string sentence(std::string text) {
  if (!text.empty() && text.back() != '.')
    text += '.';
  return text;
}

std::string optionNames(const std::string& names) {
  std::string markup;
  std::istringstream stream(names);
  for (std::string name; std::getline(stream, name, ',');)
    markup += (markup.empty() ? "" : ", ") + bold(name);
  return markup;
}

ManPage::ManPage(const std::string& program, const std::string& purpose) {
  std::string title = program;
  std::transform(title.begin(), title.end(), title.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  text_ = ".\\\" Printed by \"" + program + ' ' + manPageOption +
          "\"; tools/man-pages renews it.\n"
          ".TH " +
          quoted(title) + " 1 " + date + " ulotaskengine\n";
  section("NAME");
  line(plain(program) + " \\- " + plain(purpose));
}

void ManPage::line(const std::string& text) {
  // A line that begins with one of these is a request of roff.
  if (!text.empty() && (text.front() == '.' || text.front() == '\''))
    text_ += "\\&";
  text_ += text + '\n';
}

void ManPage::filled(const std::string& markup) {
  constexpr std::size_t width = 78;
  std::istringstream words(markup);
  std::string current;
  for (std::string word; words >> word;) {
    if (!current.empty() && current.size() + 1 + word.size() > width) {
      line(current);
      current.clear();
    }
    current += (current.empty() ? "" : " ") + word;
  }
  if (!current.empty())
    line(current);
}

void ManPage::section(const std::string& title) {
  text_ += ".SH " + quoted(title) + '\n';
  isAfterTitle_ = true;
}

void ManPage::subsection(const std::string& title) {
  text_ += ".SS " + quoted(title) + '\n';
  isAfterTitle_ = true;
}

// A title begins a paragraph itself.
void ManPage::beginParagraph() {
  if (!isAfterTitle_)
    text_ += ".PP\n";
  isAfterTitle_ = false;
}

void ManPage::paragraph(const std::string& markup) {
  beginParagraph();
  filled(markup);
}

void ManPage::entry(const std::string& tagMarkup, const std::string& markup) {
  isAfterTitle_ = false;
  text_ += ".TP\n";
  line(tagMarkup);
  filled(markup);
}

void ManPage::example(const std::vector<std::string>& lines) {
  beginParagraph();
  text_ += ".RS 4\n.EX\n";
  for (const std::string& each : lines)
    line(plain(each));
  text_ += ".EE\n.RE\n";
}

void ManPage::helpText(const std::string& text) {
  std::string prose;
  std::vector<std::string> lines;
  const auto finish = [&] {
    if (!prose.empty())
      paragraph(plain(prose));
    if (!lines.empty())
      example(lines);
    prose.clear();
    lines.clear();
  };
  std::istringstream stream(text);
  for (std::string each; std::getline(stream, each);) {
    const bool isExample = each.rfind(indent, 0) == 0;
    if (each.empty() || each == "Example:" || each == "Examples:" ||
        (isExample ? !prose.empty() : !lines.empty()))
      finish();
    if (isExample)
      lines.push_back(each.substr(sizeof indent - 1));
    else if (!each.empty())
      prose += (prose.empty() ? "" : " ") + each;
  }
  finish();
}

void ManPage::seeAlso(const std::vector<std::string>& pages) {
  section("SEE ALSO");
  std::string list;
  for (const std::string& page : pages) {
    const std::size_t name = page.find('(');
    list += (list.empty() ? "" : ", ") + bold(page.substr(0, name)) + page.substr(name);
  }
  filled(list);
}

}  // namespace ulo
