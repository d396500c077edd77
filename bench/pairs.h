// Registers benchmarks of pairs: an operation of ours, and the same work written by hand. Both give
// the same type of result, and before a pair is timed the two results are compared: one that
// differs ends the program. The two sides of a pair are timed next to each other, so that whatever
// else the machine does slows both of them.
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

// How often and how long an operation is timed.
struct Effort {
  int repetitions;
  double seconds;  // of calls of each side in a repetition; one call may take longer
  int calls;       // of each side in a repetition, where that is fixed
};
// For one that touches so many records.
Effort effortFor(int records);
// For one that waits for the disk.
Effort durableEffort();
// From here on they are a few repetitions only, enough to see a large difference.
void shortenEfforts();

// Ends the program, saying what is wrong with which operation.
void stop(const std::string& operation, const std::string& what);

// Median times of a call of each way to do the work, in seconds, and how many records that is: what
// a time may be divided by.
struct Measured {
  std::map<std::string, double> times;
  double records;
};
// A benchmark whose repetitions are single runs of `measure`. Its own time is that of "ours"; all
// that was measured becomes its counters.
void registerPair(const std::string& operation, int repetitions, std::function<Measured()> measure);

double medianOf(std::vector<double> values);

// Times calls alone, not what becomes of their results.
template <typename Result, typename Call> double secondsOf(const Call& call) {
  Result result{};
  const auto begin = std::chrono::steady_clock::now();
  call(result);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A reading operation. The sides take the place for the result; ours gives the store's code.
template <typename Result> struct Reading {
  std::string name;
  Effort effort;
  double records;  // 0: those of the result
  std::function<void(Result&)> ours;
  std::function<void(Result&)> hand;
  std::function<void(Result&)> otherHand;  // optional: another way to write it by hand
};

// Gives the number of records of the result. Ends the program where the sides' results differ.
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
  // Calls of each side in a repetition; found out when the sides are compared.
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
    // Neither side always comes first.
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

// An operation that waits for the disk, whose pace changes from second to second: the two sides
// take turns call by call.
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

// What the programs are made of.
void registerStoreReading(Workbench& workbench);
void registerStoreWriting(Workbench& workbench);
void registerCodec(const std::string& directory);

}  // namespace bench
