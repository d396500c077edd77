// Follows the BEGIN and END lines of a calendar text.
#pragma once

#include "content_line.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

struct NestingStep {
  enum Kind { property, begins, ends, strayEnd };
  Kind kind = property;
  std::string_view name;   // of the property; valid until the next step
  std::string_view value;  // the name of the component; valid until the next step
  std::size_t closes = 0;  // components that END ends; more than one if others lack their END
};

class ComponentNesting {
public:
  // Says what a line does; changes nothing.
  NestingStep take(const RawLine& line);
  void open(std::string_view name, std::size_t line) { open_.push_back({std::string(name), line}); }
  void close(std::size_t count) { open_.resize(open_.size() - count); }

  [[nodiscard]] std::size_t depth() const { return open_.size(); }
  // The line where the open component at a depth from 0 begins.
  [[nodiscard]] std::size_t lineOf(std::size_t depth) const { return open_[depth].line; }

private:
  struct Open {
    std::string name;
    std::size_t line = 0;
  };
  std::vector<Open> open_;
  std::string buffer_;
};

}  // namespace ulo
