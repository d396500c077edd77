// Registers benchmarks of pairs: one of our operations, and the same work written by hand. Both
// return the same type of result. Before a pair is timed, the two results are compared; if they
// differ, the program ends. The two sides are timed next to each other, so that other activity of
// the machine slows both.
#pragma once

#include "same_result.h"
#include "workbench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// The number and duration of the repetitions of an operation.
struct Effort {
  int repetitions;
  double seconds;  // of calls of each side in a repetition; a single call may take longer
  int calls;       // of each side in a repetition, if fixed
};
// For an operation that touches this many records.
Effort effortFor(int records);
// For an operation that waits for the disk.
Effort durableEffort();
// Reduces later efforts to a few repetitions, enough to see a large difference.
void shortenEfforts();

// Ends the program with a message that names the operation and the error.
void stop(const std::string& operation, const std::string& what);

// The median times in seconds of a call for each way to do the work, and the number of records by
// which a time may be divided.
struct Measured {
  std::map<std::string, double> times;
  double records;
};
// Registers a benchmark whose repetitions are single runs of `measure`. Its time is that of "ours";
// all measured values become counters.
void registerPair(const std::string& operation, int repetitions, std::function<Measured()> measure);

double medianOf(std::vector<double> values);

// Times only the calls, not the destruction of their results.
template <typename Result, typename Call> double secondsOf(const Call& call) {
  Result result{};
  const auto begin = std::chrono::steady_clock::now();
  call(result);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A reading operation. Both sides get a reference to the result; ours returns the store's code.
template <typename Result> struct Reading {
  std::string name;
  Effort effort;
  double records;  // 0: the number in the result
  std::function<void(Result&)> ours;
  std::function<void(Result&)> hand;
  std::function<void(Result&)> otherHand;  // optional: another hand-written way
};

// Returns the number of records in the result. Ends the program if the sides' results differ.
template <typename Result> std::size_t compareSides(const Reading<Result>& reading) {
  Result expected{};
  reading.hand(expected);
  const auto check = [&](const std::function<void(Result&)>& call, const char* side) {
    Result given{};
    call(given);
    if (const std::string difference = differenceOf(given, expected); !difference.empty())
      stop(reading.name, std::string(side) + " gives something else: " + difference);
  };
  check(reading.ours, "ours");
  if (reading.otherHand)
    check(reading.otherHand, "the other hand-written way");
  return sizeOf(expected);
}

template <typename Result> void registerReading(const Reading<Result>& reading) {
  // Calls of each side in a repetition; determined when the sides are compared.
  auto calls = std::make_shared<int>(0);
  auto records = std::make_shared<double>(reading.records);
  auto turn = std::make_shared<int>(0);
  registerPair(reading.name, reading.effort.repetitions, [=] {
    if (*calls == 0) {
      const std::size_t found = compareSides(reading);
      if (*records == 0)
        *records = static_cast<double>(found);
      *calls = 1;
      if (reading.effort.seconds > 0)
        *calls += static_cast<int>(reading.effort.seconds / secondsOf<Result>(reading.hand));
    }
    std::vector<std::pair<std::string, std::function<void(Result&)>>> sides = {
        {"ours", reading.ours}, {"hand", reading.hand}};
    if (reading.otherHand)
      sides.emplace_back("hand-join", reading.otherHand);
    // The sides take turns in going first.
    if (++*turn % 2 == 0)
      std::reverse(sides.begin(), sides.end());
    Measured measured = {{}, *records};
    for (const auto& [side, call] : sides) {
      std::vector<double> seconds;
      for (int i = 0; i < *calls; ++i)
        seconds.push_back(secondsOf<Result>(call));
      measured.times[side] = medianOf(std::move(seconds));
    }
    return measured;
  });
}

// An operation that waits for the disk. The disk's speed changes from second to second, so the two
// sides take turns after each call.
struct PairedCalls {
  std::string name;
  Effort effort;
  double records;
  std::function<void()> compare;        // before the first call; stops the program
  std::function<void(Side)> prepare;    // before the calls of a repetition
  std::function<void(Side, int)> call;  // the number of the call in the repetition
  std::function<void(Side)> finish;     // after them
};
void registerPaired(const PairedCalls& pair);

// The parts of the programs.
void registerStoreReading(Workbench& workbench);
void registerStoreWriting(Workbench& workbench);
void registerCodec(const std::string& directory);
void registerIcal();

}  // namespace bench
