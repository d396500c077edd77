#include "pairs.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

bool effortsAreShort = false;

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

}  // namespace bench
