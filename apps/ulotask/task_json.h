// Tasks as JSON texts, for programs.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <optional>
#include <string>

namespace ulotask {

// Members that some verbs add to a task; those that are not set are left out.
struct JsonExtras {
  std::optional<bool> repeats = std::nullopt;
  const char* import = nullptr;  // what the import did with the task
};

// Returns all fields as an indented object and a line end: dates in UTC, null for fields that are
// not set, keys in alphabetical order, control characters escaped.
std::string jsonOf(const ZTASK_ENG_Task& task, const JsonExtras& extras = {});

// An array of tasks whose text is made piece by piece.
class TaskArray {
public:
  // Returns the next piece of the text, which contains the task.
  std::string add(const ZTASK_ENG_Task& task, const JsonExtras& extras = {});
  // Returns the last piece.
  [[nodiscard]] std::string end() const { return isEmpty_ ? "[\n]\n" : "\n]\n"; }

private:
  bool isEmpty_ = true;
};

}  // namespace ulotask
