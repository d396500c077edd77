// Registers benchmarks in pairs: an operation of ours, and the same work written by hand. Both
// give the same type of result, and before either is timed the two results are compared: a pair
// that differs ends the program.
#pragma once

#include "same_result.h"
#include "workbench.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

// How often and how long an operation is timed.
struct Effort {
  int repetitions;
  double minSeconds;  // of each repetition; 0: `iterations` of them
  int iterations;
  bool warmUp;  // one call that is not timed goes before each repetition
};
// For one that touches so many records.
Effort effortFor(int records);
// For one that waits for the disk.
Effort durableEffort();
// From here on they are a few repetitions only, enough to see a large difference.
void shortenEfforts();

// Ends the program, saying what is wrong with which operation.
[[noreturn]] void stop(const std::string& operation, const std::string& what);

// The name of a benchmark tells the operation and the side.
benchmark::internal::Benchmark* registerSide(const std::string& operation, const std::string& side,
                                             const Effort& effort,
                                             std::function<void(benchmark::State&)> run);

// The work that an operation's time is divided by: records of the result, unless `records` says.
template <typename Result>
void setRecords(benchmark::State& state, const Result& result, double records) {
  state.counters["records"] = records > 0 ? records : static_cast<double>(sizeOf(result));
}

// Times calls alone, not what becomes of their results.
template <typename Result, typename Call>
void timeCalls(benchmark::State& state, const Effort& effort, double records, Call call) {
  if (effort.warmUp) {
    Result result{};
    call(result);
  }
  for (auto _ : state) {
    Result result{};
    const auto begin = std::chrono::steady_clock::now();
    call(result);
    const auto end = std::chrono::steady_clock::now();
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
    setRecords(state, result, records);
  }
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

template <typename Result> void registerReading(const Reading<Result>& reading) {
  using Call = std::function<void(Result&)>;
  // Shared by the sides: whoever runs first compares.
  auto compared = std::make_shared<bool>(false);
  const auto compare = [reading, compared] {
    if (std::exchange(*compared, true))
      return;
    Result expected{};
    reading.hand(expected);
    const auto check = [&](const Call& call, const char* side) {
      Result given{};
      call(given);
      if (const std::string difference = differenceOf(given, expected); !difference.empty())
        stop(reading.name, std::string(side) + " gives something else: " + difference);
    };
    check(reading.ours, "ours");
    if (reading.otherHand)
      check(reading.otherHand, "the other hand-written way");
  };
  const auto add = [&](const char* side, const Call& call) {
    registerSide(reading.name, side, reading.effort, [=](benchmark::State& state) {
      compare();
      timeCalls<Result>(state, reading.effort, reading.records, call);
    });
  };
  add("ours", reading.ours);
  add("hand", reading.hand);
  if (reading.otherHand)
    add("hand-join", reading.otherHand);
}

// An operation that waits for the disk, whose pace changes from minute to minute: calls of the two
// sides follow each other, and stand in one benchmark. Its own time is that of ours.
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
