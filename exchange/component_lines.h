// The lines of one component of a calendar text: finds properties and replaces them. All lines that
// are not replaced keep their bytes.
#pragma once

#include "content_line.h"

#include <QByteArray>

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

class ComponentLines {
public:
  // `component` is a complete component from its BEGIN to its END; `firstNumber` is the number of
  // its first line in the text. The bytes must outlive the object.
  explicit ComponentLines(std::string_view component, std::size_t firstNumber = 1);
  ComponentLines(const ComponentLines&) = delete;
  ComponentLines& operator=(const ComponentLines&) = delete;

  // Lines are numbered from 0. The first is BEGIN and the last is END.
  static constexpr std::size_t none = static_cast<std::size_t>(-1);
  [[nodiscard]] std::size_t size() const { return lines_.size(); }
  // The number of the line in the text.
  [[nodiscard]] std::size_t numberOf(std::size_t line) const { return lines_[line].number; }

  // Returns the first property of the component itself with this name in any letter case, from a
  // line on. A line without a colon after its parameters is not a property.
  [[nodiscard]] std::size_t find(std::string_view name, std::size_t from = 1) const;
  // The same in a nested component.
  struct Range {
    std::size_t begin = 0;  // the line BEGIN
    std::size_t end = 0;    // after its last line
  };
  [[nodiscard]] std::size_t find(std::string_view name, const Range& nested) const;
  // The components directly in this one that have the name.
  [[nodiscard]] std::vector<Range> nested(std::string_view name) const;

  // The views are valid until the line is replaced.
  [[nodiscard]] std::optional<ContentLine> property(std::size_t line) const;
  // The value of a property without surrounding blanks; empty if the line is not a property.
  [[nodiscard]] std::string_view value(std::size_t line) const;

  // Replaces a line by an unfolded one. It is folded and gets the line end of the line that it
  // replaces.
  void replace(std::size_t line, std::string_view content);
  void remove(const Range& range);
  // Removes all properties of the component itself with this name.
  void removeAll(std::string_view name);
  // Inserts an unfolded line in front of a line, as a part of the component itself or of one that
  // is nested in it. It gets the line end of the first line.
  void insert(std::size_t line, std::string_view content, bool isNested = false);
  // Where new properties of the component belong: after the last one, in front of nested
  // components.
  [[nodiscard]] std::size_t endOfProperties() const;

  // Where new nested components belong: in front of END, or of a component that lacks its END.
  [[nodiscard]] std::size_t endOfComponents() const;

  [[nodiscard]] bool isChanged() const { return changed_; }
  [[nodiscard]] QByteArray text() const;

private:
  struct Line {
    std::string_view bytes;
    std::string_view name;  // empty if the line is not a property
    std::size_t number = 0;
    unsigned depth = 0;  // 0 for BEGIN and END of the component and its own properties
    bool folded = false;
    bool ends = false;  // END of a component that is open
  };
  std::string_view keep(std::string text);

  std::vector<Line> lines_;
  mutable std::deque<std::string> texts_;  // new lines, and lines without folding
  bool changed_ = false;
};

}  // namespace ulo
