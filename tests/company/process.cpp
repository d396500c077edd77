#include "process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace company {
namespace {

constexpr std::chrono::seconds longestRun{60};
// The program keeps this descriptor, the write end of a pipe, until it exits.
constexpr int lifeLineNumber = 8;
// The beginnings of sanitizer reports.
constexpr const char* sanitizerReports[] = {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer",
                                            "runtime error: "};

[[noreturn]] void fail(const char* what, int error) {
  throw std::runtime_error(std::string(what) + ": " + std::strerror(error));
}

Handle memoryFile(const std::string& content = {}) {
  Handle file(memfd_create("company", MFD_CLOEXEC));
  if (file.number() < 0)
    fail("memfd_create", errno);
  if (pwrite(file.number(), content.data(), content.size(), 0) !=
      static_cast<ssize_t>(content.size()))
    fail("pwrite", errno);
  return file;
}

std::string contentOf(const Handle& file) {
  std::string content;
  std::array<char, 65536> chunk{};
  ssize_t count = 0;
  while ((count = pread(file.number(), chunk.data(), chunk.size(),
                        static_cast<off_t>(content.size()))) > 0)
    content.append(chunk.data(), static_cast<std::size_t>(count));
  return content;
}

// Returns pointers to the texts, followed by a null pointer.
std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts)
    result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

class FileActions {
public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  void put(int descriptor, int number) {
    posix_spawn_file_actions_adddup2(&actions_, descriptor, number);
  }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
  posix_spawn_file_actions_t actions_{};
};

}  // namespace

bool Outcome::isKilled() const {
  return signal == SIGKILL && !hung;
}

bool Outcome::isCrash() const {
  if (signal != 0 && signal != SIGKILL)
    return true;
  for (const char* report : sanitizerReports)
    if (err.find(report) != std::string::npos)
      return true;
  return false;
}

Handle& Handle::operator=(Handle&& other) noexcept {
  if (this != &other) {
    close();
    number_ = other.number_;
    other.number_ = -1;
  }
  return *this;
}

void Handle::close() {
  if (number_ >= 0)
    ::close(number_);
  number_ = -1;
}

Process::Process(const Launch& launch) : output_(memoryFile()), error_(memoryFile()) {
  const Handle input = memoryFile(launch.input);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0)
    fail("pipe2", errno);
  end_ = Handle(ends[0]);
  const Handle lifeLine(ends[1]);
  FileActions actions;
  actions.put(input.number(), STDIN_FILENO);
  actions.put(output_.number(), STDOUT_FILENO);
  actions.put(error_.number(), STDERR_FILENO);
  actions.put(lifeLine.number(), lifeLineNumber);
  if (launch.gate >= 0)
    actions.put(launch.gate, gateNumber);

  std::vector<std::string> arguments = {launch.program};
  arguments.insert(arguments.end(), launch.arguments.begin(), launch.arguments.end());
  std::vector<std::string> environment;
  for (const auto& [name, value] : launch.environment)
    environment.push_back(name + "=" + value);
  const int result = posix_spawn(&pid_, launch.program.c_str(), actions.get(), nullptr,
                                 pointers(arguments).data(), pointers(environment).data());
  if (result != 0)
    fail(launch.program.c_str(), result);
}

Process::~Process() {
  if (end_.number() < 0 || outcome_)
    return;
  ::kill(pid_, SIGKILL);
  wait();
}

bool Process::hasEndedWithin(std::chrono::microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  pollfd ends{end_.number(), POLLIN, 0};
  for (;;) {
    const auto left = std::max(std::chrono::nanoseconds(0),
                               std::chrono::nanoseconds(end - std::chrono::steady_clock::now()));
    timespec wait{};
    wait.tv_sec = static_cast<time_t>(left / std::chrono::seconds(1));
    // Has at most nine digits; its type differs between systems.
    wait.tv_nsec = static_cast<decltype(wait.tv_nsec)>((left % std::chrono::seconds(1)).count());
    const int result = ppoll(&ends, 1, &wait, nullptr);
    if (result >= 0)
      return result > 0;
    if (errno != EINTR)
      fail("ppoll", errno);
  }
}

void Process::killAfter(std::chrono::microseconds time) {
  if (!hasEndedWithin(time))
    ::kill(pid_, SIGKILL);
}

Outcome Process::wait() {
  if (outcome_)
    return *outcome_;
  Outcome outcome;
  if (!hasEndedWithin(longestRun)) {
    outcome.hung = true;
    ::kill(pid_, SIGKILL);
  }
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR)
    continue;
  if (WIFEXITED(status))
    outcome.code = WEXITSTATUS(status);
  else
    outcome.signal = WTERMSIG(status);
  outcome.out = contentOf(output_);
  outcome.err = contentOf(error_);
  outcome_ = outcome;
  return outcome;
}

}  // namespace company
