#include "window/end_signals.h"

#include <QSocketNotifier>
#include <QWidget>

#include <cerrno>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tasks {

namespace {

constexpr std::array<int, 3> kinds = {SIGHUP, SIGINT, SIGTERM};

// Readable once a signal has come; negative if there is no descriptor.
volatile sig_atomic_t arrived = -1;

// May run between any two instructions of the program.
void note(int) {
  const int error = errno;
  static_cast<void>(eventfd_write(arrived, 1));
  errno = error;
}

}  // namespace

EndSignals::EndSignals(QWidget& window) {
  arrived = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (arrived < 0)
    return;
  auto* notifier = new QSocketNotifier(arrived, QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, &window, [&window] {
    eventfd_t count = 0;
    static_cast<void>(eventfd_read(arrived, &count));
    window.close();
  });
  struct sigaction action = {};
  action.sa_handler = note;
  action.sa_flags = SA_RESTART | SA_RESETHAND;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    sigaction(kinds[i], nullptr, &former_[i]);
    if (former_[i].sa_handler != SIG_IGN)
      sigaction(kinds[i], &action, nullptr);
  }
}

EndSignals::~EndSignals() {
  if (arrived < 0)
    return;
  for (std::size_t i = 0; i < kinds.size(); ++i)
    sigaction(kinds[i], &former_[i], nullptr);
  close(arrived);
  arrived = -1;
}

}  // namespace tasks
