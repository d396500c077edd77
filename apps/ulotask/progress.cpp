#include "progress.h"

#include "output.h"
#include "text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <unistd.h>

namespace ulotask {
namespace {

constexpr std::chrono::milliseconds patience{500};
constexpr std::chrono::milliseconds betweenLooks{100};
constexpr std::size_t barColumns = 20;

void print(const std::string& text) {
  // A failure cannot be reported anywhere.
  static_cast<void>(std::fputs(text.c_str(), stderr));
  static_cast<void>(std::fflush(stderr));
}

}  // namespace

Progress::Progress(const char* what, std::size_t total)
    : what_(what), total_(total), begin_(Clock::now()), next_(begin_ + patience) {}

void Progress::advance() {
  ++done_;
  const Clock::time_point now = Clock::now();
  if (now >= next_)
    show(now);
}

void Progress::hide() {
  if (shownColumns_ == 0)
    return;
  print('\r' + std::string(static_cast<std::size_t>(shownColumns_), ' ') + '\r');
  shownColumns_ = 0;
}

void Progress::show(Clock::time_point now) {
  const std::size_t filled =
      barColumns * std::min(done_, total_) / std::max<std::size_t>(total_, 1);
  const double seconds = std::chrono::duration<double>(now - begin_).count();
  const std::string line =
      what_ + "  [" + std::string(filled, '#') + std::string(barColumns - filled, '-') + "]  " +
      std::to_string(done_) + " of " + std::to_string(total_) + ", " +
      std::to_string(static_cast<std::int64_t>(static_cast<double>(done_) / seconds)) + "/s";
  // The last column stays free: a full line would make some terminals scroll.
  const int columns = Output::terminalColumns(STDERR_FILENO).value_or(0) - 1;
  hide();
  if (columns > 0) {
    const std::string shown = elided(line, columns);
    shownColumns_ = columnsOf(shown);
    print(shown);
  }
  next_ = now + betweenLooks;
}

}  // namespace ulotask
