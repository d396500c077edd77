#include "change_watch.h"

#include "exit_codes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace ulotask {
namespace {

// A database writes a change before its readers can see it, and the system reports only the
// writing.
constexpr std::chrono::milliseconds changeTakes{50};

}  // namespace

ChangeWatch::ChangeWatch(const std::string& directory, std::string prefix)
    : files_(directory, std::move(prefix)) {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, &before_);
  signals_ = signalfd(-1, &ending, SFD_CLOEXEC);
  if (signals_ < 0)
    throw Failure(Exit::failed, std::string("signals can't be watched: ") + std::strerror(errno));
}

ChangeWatch::~ChangeWatch() {
  if (signals_ >= 0)
    close(signals_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool ChangeWatch::wait(int other) {
  using Clock = std::chrono::steady_clock;
  const auto end =
      Clock::now() + (changed_ ? changeTakes : std::chrono::milliseconds(longestWait * 1000));
  while (true) {
    pollfd awaited[] = {{signals_, POLLIN, 0},
                        {files_.descriptor(), POLLIN, 0},
                        {STDOUT_FILENO, 0, 0},
                        {other, POLLIN, 0}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int ready =
        poll(awaited, std::size(awaited), static_cast<int>(std::max<std::int64_t>(left, 0)));
    if (ready < 0 && errno != EINTR)
      throw Failure(Exit::failed, std::string("waiting failed: ") + std::strerror(errno));
    if (ready > 0 && awaited[0].revents != 0) {
      // Consumed, because it would end the process when this object unblocks it.
      signalfd_siginfo taken{};
      if (read(signals_, &taken, sizeof taken) < 0)
        throw Failure(Exit::failed, std::string("a signal can't be read: ") + std::strerror(errno));
      return false;
    }
    if (ready > 0 && awaited[2].revents != 0)
      return false;
    if (ready > 0 && awaited[3].revents != 0)
      return true;
    changed_ = ready > 0 && awaited[1].revents != 0 && files_.sawChange();
    if (ready == 0 || changed_)
      return true;
  }
}

}  // namespace ulotask
