#include "pairs.h"

#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

bool effortsAreShort = false;

Effort shortened(Effort effort) {
  if (effortsAreShort) {
    effort.repetitions = 3;
    effort.seconds /= 2;
  }
  return effort;
}

}  // namespace

Effort effortFor(int records) {
  if (records <= 20000)
    return shortened({9, 0.03, 0});
  if (records <= 200000)
    return shortened({5, 0.05, 0});
  return shortened({3, 0, 0});
}

Effort durableEffort() {
  return shortened({7, 0, 40});
}

void shortenEfforts() {
  effortsAreShort = true;
}

void stop(const std::string& operation, const std::string& what) {
  std::fprintf(stderr, "%s: %s\n", operation.c_str(), what.c_str());
  std::_Exit(EXIT_FAILURE);
}

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void registerPair(const std::string& operation, int repetitions,
                  std::function<Measured()> measure) {
  const auto run = [=](benchmark::State& state) {
    try {
      for (auto _ : state) {
        const Measured measured = measure();
        state.SetIterationTime(measured.times.at("ours"));
        for (const auto& [side, seconds] : measured.times)
          state.counters[side] = seconds;
        state.counters["records"] = measured.records;
      }
    } catch (const std::exception& error) {
      stop(operation, error.what());
    }
  };
  benchmark::RegisterBenchmark(operation.c_str(), run)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond)
      ->Iterations(1)
      ->Repetitions(repetitions);
}

void registerPaired(const PairedCalls& pair) {
  auto compared = std::make_shared<bool>(false);
  registerPair(pair.name, pair.effort.repetitions, [=] {
    if (!std::exchange(*compared, true))
      pair.compare();
    for (const Side side : {Side::ours, Side::hand})
      pair.prepare(side);
    std::map<Side, std::vector<double>> times;
    for (int i = 0; i < pair.effort.calls; ++i) {
      // The sides take turns in going first.
      const Side first = i % 2 == 0 ? Side::ours : Side::hand;
      for (const Side side : {first, first == Side::ours ? Side::hand : Side::ours})
        times[side].push_back(secondsOf<int>([&](int&) { pair.call(side, i); }));
    }
    for (const Side side : {Side::ours, Side::hand})
      pair.finish(side);
    return Measured{{{"ours", medianOf(times[Side::ours])}, {"hand", medianOf(times[Side::hand])}},
                    pair.records};
  });
}

}  // namespace bench
