// Manual pages in the language of man(7).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// The hidden option with which each program prints its manual page; tools/man-pages uses it.
inline constexpr char manPageOption[] = "--man-page";

// Text in the language of man(7): every character stands for itself.
std::string plain(std::string_view text);
std::string bold(std::string_view text);
std::string italic(std::string_view text);

// Returns the text with a full stop at its end.
std::string sentence(std::string text);

// The names of an option, such as "-h,--help", in bold.
std::string optionNames(const std::string& names);

// Collects a page. Arguments named `markup` are results of plain(), bold() and italic(), joined.
class ManPage {
public:
  // `purpose` is the line that lists of pages show.
  ManPage(const std::string& program, const std::string& purpose);

  void section(const std::string& title);
  void subsection(const std::string& title);
  void paragraph(const std::string& markup);
  // A paragraph with a heading: an option and its meaning.
  void entry(const std::string& tagMarkup, const std::string& markup);
  // Lines of plain text that are shown as they are.
  void example(const std::vector<std::string>& lines);
  // Plain text as the help prints it: lines that begin with two blanks are examples, and a
  // paragraph ends at an empty line, an example and a line like "Examples:".
  void helpText(const std::string& text);
  // The section "SEE ALSO", with pages named like "ulotask(1)".
  void seeAlso(const std::vector<std::string>& pages);

  [[nodiscard]] const std::string& text() const { return text_; }

private:
  void line(const std::string& text);
  void filled(const std::string& markup);
  void beginParagraph();

  std::string text_;
  bool isAfterTitle_ = false;
};

}  // namespace ulo
