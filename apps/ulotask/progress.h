// How far a long work has come.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace ulotask {

// One line on standard error, written over and over and gone in the end. It appears where standard
// error is a terminal, and only when the work takes longer than half a second.
class Progress {
public:
  // `what` is being done to `total` things.
  Progress(const char* what, std::size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { hide(); }

  // One more is done.
  void advance();
  // Takes the line away, to let something else be printed. It comes back.
  void hide();

private:
  using Clock = std::chrono::steady_clock;
  void show(Clock::time_point now);

  std::string what_;
  std::size_t total_;
  std::size_t done_ = 0;
  Clock::time_point begin_;
  Clock::time_point next_;  // when to show it the next time
  int shownColumns_ = 0;
};

}  // namespace ulotask
