// Tasks as JSON texts, for programs.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <string>

namespace ulotask {

// Returns all fields as an indented object and a line end: dates in UTC, null for fields that are
// not set, keys in alphabetical order, control characters escaped.
std::string jsonOf(const ZTASK_ENG_Task& task);

// An array of tasks whose text is made piece by piece.
class TaskArray {
public:
  // Returns the next piece of the text, which contains the task.
  std::string add(const ZTASK_ENG_Task& task);
  // Returns the last piece.
  [[nodiscard]] std::string end() const { return isEmpty_ ? "[\n]\n" : "\n]\n"; }

private:
  bool isEmpty_ = true;
};

}  // namespace ulotask
