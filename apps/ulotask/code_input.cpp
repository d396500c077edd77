#include "code_input.h"

#include "exit_codes.h"

#include <QStringDecoder>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace ulotask {
namespace {

volatile std::sig_atomic_t caught = 0;

void note(int signal) {
  caught = signal;
}

// While the object exists, the terminal does not echo, and signals that would end or stop the
// program only end waitForInput(). They are delivered after the terminal has been restored.
class Unseen {
public:
  Unseen() {
    caught = 0;
    struct sigaction action {};
    action.sa_handler = note;
    sigset_t mask;
    sigemptyset(&mask);
    for (std::size_t i = 0; i < ending.size(); ++i) {
      sigaction(ending[i], &action, &before_[i]);
      sigaddset(&mask, ending[i]);
    }
    sigprocmask(SIG_BLOCK, &mask, &mask_);
    tcgetattr(STDIN_FILENO, &shown_);
    termios unseen = shown_;
    unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSADRAIN, &unseen);
  }
  Unseen(const Unseen&) = delete;
  Unseen& operator=(const Unseen&) = delete;
  ~Unseen() {
    tcsetattr(STDIN_FILENO, TCSADRAIN, &shown_);
    for (std::size_t i = 0; i < ending.size(); ++i)
      sigaction(ending[i], &before_[i], nullptr);
    std::fputs("\n", stderr);
    if (caught != 0)
      raise(caught);
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
  }

  // Returns false if a signal arrives before the input.
  [[nodiscard]] bool waitForInput() const {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return ppoll(&input, 1, nullptr, &mask_) == 1;
  }

private:
  static constexpr std::array ending = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
  std::array<struct sigaction, ending.size()> before_{};
  sigset_t mask_{};
  termios shown_{};
};

// A line of bytes, overwritten when it is destroyed.
struct Line {
  static constexpr std::size_t mostBytes = ulo::LockCode::most * 3UL;
  std::array<char, mostBytes> bytes{};
  std::size_t size = 0;
  bool isThere = false;
  bool isTooLong = false;

  Line() = default;
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() { explicit_bzero(bytes.data(), bytes.size()); }

  // Reads byte by byte, so that the following line stays unread. Ends early if `ready` returns
  // false.
  template <typename Ready> void read(const Ready& ready) {
    char byte = 0;
    while (ready() && ::read(STDIN_FILENO, &byte, 1) == 1) {
      isThere = true;
      if (byte == '\n')
        break;
      if (size < bytes.size())
        bytes[size++] = byte;
      else
        isTooLong = true;
    }
    explicit_bzero(&byte, 1);
    if (size > 0 && bytes[size - 1] == '\r')
      --size;
  }
};

void readLine(const char* prompt, Line& line) {
  if (!isTyped()) {
    line.read([] { return true; });
    return;
  }
  const Unseen unseen;
  static_cast<void>(std::fprintf(stderr, "%s: ", prompt));
  line.read([&unseen] { return unseen.waitForInput(); });
}

}  // namespace

bool isTyped() {
  return isatty(STDIN_FILENO) == 1;
}

std::unique_ptr<ulo::LockCode> readCode(const char* prompt) {
  Line line;
  readLine(prompt, line);
  if (!line.isThere || caught != 0)
    throw Failure(Exit::usage, "no code was given");
  QStringDecoder decoder(QStringDecoder::Utf8);
  QString text = decoder(QByteArrayView(line.bytes.data(), static_cast<qsizetype>(line.size)));
  const bool isUtf8 = !decoder.hasError();
  const bool isEmpty = text.isEmpty();
  auto code = std::make_unique<ulo::LockCode>(text);
  if (!isUtf8)
    throw Failure(Exit::usage, "the code is not UTF-8");
  if (line.isTooLong || (code->isEmpty() && !isEmpty))
    throw Failure(Exit::usage,
                  "the code has more than " + std::to_string(ulo::LockCode::most) + " characters");
  return code;
}

}  // namespace ulotask
