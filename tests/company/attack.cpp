#include "attack.h"

#include "exit_codes.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <iterator>
#include <map>
#include <mutex>
#include <numeric>
#include <thread>

namespace company {
namespace {

// The number of cases printed in full for each broken promise.
constexpr int casesTold = 3;
constexpr std::size_t longestDetail = 700;

Random seeded(std::uint64_t seed, const std::string& name, std::uint64_t number) {
  std::vector<std::uint32_t> words = {static_cast<std::uint32_t>(seed),
                                      static_cast<std::uint32_t>(seed >> 32U),
                                      static_cast<std::uint32_t>(number)};
  words.insert(words.end(), name.begin(), name.end());
  std::seed_seq sequence(words.begin(), words.end());
  return Random(sequence);
}

bool isDocumented(int code) {
  return std::any_of(std::begin(ulotask::exitMeanings), std::end(ulotask::exitMeanings),
                     [&](const auto& each) { return static_cast<int>(each.code) == code; });
}

std::string shortened(std::string text) {
  if (text.size() > longestDetail)
    text = text.substr(0, longestDetail) + " ...";
  return text;
}

}  // namespace

bool Verdict::require(bool kept, const std::string& promise, const std::string& detail) {
  const bool isKnown =
      std::any_of(complaints_.begin(), complaints_.end(),
                  [&](const Complaint& complaint) { return complaint.promise == promise; });
  if (!kept && !isKnown)
    complaints_.push_back({promise, detail});
  return kept;
}

void Verdict::requireSoundEnd(const Launch& launch, const Outcome& outcome) {
  const std::string what = shown(launch) + "\n" + outcome.out + outcome.err;
  require(!outcome.hung, "no program hangs", what);
  require(!outcome.isCrash(), "no program crashes",
          what + "signal " + std::to_string(outcome.signal));
  if (outcome.signal != 0 || outcome.isCrash())
    return;
  require(isDocumented(outcome.code), "exit codes are documented",
          what + "code " + std::to_string(outcome.code));
  require(outcome.code == 0 || !outcome.err.empty(), "failures have a message",
          what + "code " + std::to_string(outcome.code));
}

std::vector<std::int64_t> Plan::numbers(std::int64_t last, std::int64_t count) const {
  std::vector<std::int64_t> all(static_cast<std::size_t>(last));
  std::iota(all.begin(), all.end(), 1);
  std::vector<std::int64_t> chosen;
  std::sample(all.begin(), all.end(), std::back_inserter(chosen), count, random);
  return chosen;
}

Tally conduct(const Attack& attack, const Scenarios& scenarios, const Settings& settings) {
  const std::string name = attack.name();
  Random random = seeded(settings.seed, name, 0);
  std::vector<Case> cases;
  try {
    Site site(settings.directory / (name + "-plan"));
    cases = attack.cases({scenarios, settings.isWhole, random, site});
  } catch (const std::exception& error) {
    std::printf("%s: can't begin: %s\n", name.c_str(), shortened(error.what()).c_str());
    return {1, 1};
  }

  std::vector<std::size_t> all(cases.size());
  std::iota(all.begin(), all.end(), 0);
  std::vector<std::size_t> chosen;
  if (settings.onlyCase < 0)
    std::sample(all.begin(), all.end(), std::back_inserter(chosen), settings.mostCases, random);
  else
    chosen.push_back(static_cast<std::size_t>(settings.onlyCase));

  std::mutex mutex;
  Tally tally;
  std::map<std::string, int> broken;  // by promise
  std::atomic<std::size_t> next = 0;
  const auto work = [&](int worker) {
    Site site(settings.directory / (name + "-" + std::to_string(worker)));
    for (std::size_t n = next++; n < chosen.size(); n = next++) {
      const std::size_t i = chosen[n];
      Random own = seeded(settings.seed, name, i + 1);
      Verdict verdict;
      try {
        cases.at(i).run(site, own, verdict);
      } catch (const std::exception& error) {
        verdict.require(false, "the case can be judged", error.what());
      }
      const std::lock_guard<std::mutex> lock(mutex);
      tally.runs += verdict.runs;
      tally.failures += verdict.complaints().empty() ? 0 : 1;
      for (const Verdict::Complaint& complaint : verdict.complaints())
        if (++broken[complaint.promise] <= casesTold)
          std::printf("%s, case %zu (%s): broken: %s\n  %s\n", name.c_str(), i,
                      cases.at(i).name.c_str(), complaint.promise.c_str(),
                      shortened(complaint.detail).c_str());
    }
  };
  std::vector<std::thread> workers;
  for (int worker = 1; worker < settings.jobs; ++worker)
    workers.emplace_back(work, worker);
  work(0);
  for (std::thread& worker : workers)
    worker.join();

  for (const auto& [promise, count] : broken)
    std::printf("%s: \"%s\" broken %d times\n", name.c_str(), promise.c_str(), count);
  return tally;
}

}  // namespace company
