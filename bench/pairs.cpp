#include "pairs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench {

namespace {

bool effortsAreShort = false;

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Effort shortened(Effort effort) {
  if (effortsAreShort) {
    effort.repetitions = 3;
    effort.minSeconds /= 3;
  }
  return effort;
}

}  // namespace

Effort effortFor(int records) {
  if (records <= 1000)
    return shortened({9, 0.03, 0, true});
  if (records <= 20000)
    return shortened({7, 0.05, 0, true});
  if (records <= 200000)
    return shortened({5, 0, 1, true});
  return shortened({3, 0, 1, false});
}

Effort durableEffort() {
  return shortened({7, 0, 40, false});
}

void shortenEfforts() {
  effortsAreShort = true;
}

void stop(const std::string& operation, const std::string& what) {
  std::fprintf(stderr, "%s: %s\n", operation.c_str(), what.c_str());
  std::_Exit(EXIT_FAILURE);
}

benchmark::internal::Benchmark* registerSide(const std::string& operation, const std::string& side,
                                             const Effort& effort,
                                             std::function<void(benchmark::State&)> run) {
  auto* registered = benchmark::RegisterBenchmark(
      (operation + "/" + side).c_str(), [operation, run = std::move(run)](benchmark::State& state) {
        try {
          run(state);
        } catch (const std::exception& error) {
          stop(operation, error.what());
        }
      });
  registered->UseManualTime()->Unit(benchmark::kMicrosecond)->Repetitions(effort.repetitions);
  if (effort.minSeconds > 0)
    registered->MinTime(effort.minSeconds);
  else
    registered->Iterations(effort.iterations);
  return registered;
}

void registerPaired(const PairedCalls& pair) {
  auto compared = std::make_shared<bool>(false);
  registerSide(pair.name, "both", pair.effort, [pair, compared](benchmark::State& state) {
    if (!std::exchange(*compared, true))
      pair.compare();
    for (const Side side : {Side::ours, Side::hand})
      pair.prepare(side);
    std::vector<double> times[2];
    int number = 0;
    for (auto _ : state) {
      // Neither side always comes first.
      const bool oursFirst = number % 2 == 0;
      for (const Side side :
           {oursFirst ? Side::ours : Side::hand, oursFirst ? Side::hand : Side::ours}) {
        const auto begin = std::chrono::steady_clock::now();
        pair.call(side, number);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        times[side == Side::ours ? 0 : 1].push_back(time.count());
      }
      state.SetIterationTime(times[0].back());
      ++number;
    }
    for (const Side side : {Side::ours, Side::hand})
      pair.finish(side);
    state.counters["ours"] = medianOf(times[0]);
    state.counters["hand"] = medianOf(times[1]);
    state.counters["records"] = pair.records;
  });
}

}  // namespace bench
