// Programs under attack. They start with a separate environment and are killed if they hang.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace company {

using Arguments = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

struct Launch {
  std::string program;
  Arguments arguments;
  Environment environment;  // complete
  std::string input;
  // The descriptor that becomes number 9 in the program; -1 for none.
  int gate = -1;
};

constexpr int gateNumber = 9;

struct Outcome {
  int code = -1;   // the exit code; -1 after a signal
  int signal = 0;  // the signal that ended the process
  bool hung = false;
  std::string out;
  std::string err;

  [[nodiscard]] bool isKilled() const;
  // Returns whether the program ended with a signal other than the attack's SIGKILL, or with a
  // sanitizer report.
  [[nodiscard]] bool isCrash() const;
};

// A descriptor that is closed with the object.
class Handle {
public:
  explicit Handle(int number = -1) : number_(number) {}
  Handle(Handle&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  Handle& operator=(Handle&& other) noexcept;
  ~Handle() { close(); }
  [[nodiscard]] int number() const { return number_; }
  void close();

private:
  int number_;
};

// A running program that is killed with the object.
class Process {
public:
  explicit Process(const Launch& launch);
  Process(Process&&) = default;
  Process& operator=(Process&&) = delete;
  ~Process();

  // Kills the program unless it exits before that time.
  void killAfter(std::chrono::microseconds time);
  // Waits until the program exits. After a minute, kills it and reports it as hung.
  Outcome wait();

private:
  bool hasEndedWithin(std::chrono::microseconds time);

  Handle output_;
  Handle error_;
  Handle end_;  // reports a hang-up when the program exits
  pid_t pid_ = -1;
  std::optional<Outcome> outcome_;
};

inline Outcome run(const Launch& launch) {
  return Process(launch).wait();
}

}  // namespace company
