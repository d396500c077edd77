// Programs under attack: started with an environment of their own, ended by force when they hang.
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
  Environment environment;  // the whole of it
  std::string input;
  // The descriptor that the program finds as number 9; -1 for none.
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
  // A crash: a signal other than the SIGKILL of the attack, or the report of a sanitizer.
  [[nodiscard]] bool isCrash() const;
};

// A descriptor, closed with the object.
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

// A running program. It is killed with the object.
class Process {
public:
  explicit Process(const Launch& launch);
  Process(Process&&) = default;
  Process& operator=(Process&&) = delete;
  ~Process();

  // Kills the program unless it ends by itself before that.
  void killAfter(std::chrono::microseconds time);
  // Waits for the end; a program that doesn't end within a minute is killed and counts as hung.
  Outcome wait();

private:
  bool hasEndedWithin(std::chrono::microseconds time);

  Handle output_;
  Handle error_;
  Handle end_;  // reports a hang-up when the program ends
  pid_t pid_ = -1;
  std::optional<Outcome> outcome_;
};

inline Outcome run(const Launch& launch) {
  return Process(launch).wait();
}

}  // namespace company
