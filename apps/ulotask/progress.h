// The progress of a long operation.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace ulotask {

// Shows the progress on one line of standard error, which is removed at the end. Shows nothing if
// standard error is not a terminal, or if the operation ends within half a second.
class Progress {
public:
  // `what` names the operation, which has `total` steps.
  Progress(const char* what, std::size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { hide(); }

  // Counts one more step as done.
  void advance();
  // Removes the line so that something else can be printed. The next step shows it again.
  void hide();

private:
  using Clock = std::chrono::steady_clock;
  void show(Clock::time_point now);

  std::string what_;
  std::size_t total_;
  std::size_t done_ = 0;
  Clock::time_point begin_;
  Clock::time_point next_;  // when the line is updated next
  int shownColumns_ = 0;
};

}  // namespace ulotask
