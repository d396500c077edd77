// Attacks, their cases, and the functions that run and count them.
#pragma once

#include "site.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace company {

class Scenarios;

using Random = std::mt19937_64;

// The failures of a case; empty if all promises were kept.
class Verdict {
public:
  // Records a failure unless `kept` is true. `promise` is a short name of the promise; failures are
  // counted by it, at most once per case.
  bool require(bool kept, const std::string& promise, const std::string& detail);
  // Checks what every program under attack must do: not crash, not hang, and exit with a documented
  // code, with a message unless the code is 0.
  void requireSoundEnd(const Launch& launch, const Outcome& outcome);

  struct Complaint {
    std::string promise;
    std::string detail;
  };
  [[nodiscard]] const std::vector<Complaint>& complaints() const { return complaints_; }
  // The number of runs that the case counts as.
  int runs = 1;

private:
  std::vector<Complaint> complaints_;
};

// A single attack. The case resets the site itself.
struct Case {
  std::string name;
  std::function<void(Site&, Random&, Verdict&)> run;
};

// The extent of an attack, and the means to plan it.
struct Plan {
  const Scenarios& scenarios;
  bool isWhole;    // false for a sample
  Random& random;  // used by this attack only
  Site& site;      // for preparation

  [[nodiscard]] int amount(int whole, int sample) const { return isWhole ? whole : sample; }
  // Returns up to `count` random numbers from 1 to `last`, in ascending order.
  [[nodiscard]] std::vector<std::int64_t> numbers(std::int64_t last, std::int64_t count) const;
};

class Attack {
public:
  Attack() = default;
  Attack(const Attack&) = delete;
  Attack& operator=(const Attack&) = delete;
  virtual ~Attack() = default;
  [[nodiscard]] virtual std::string name() const = 0;
  [[nodiscard]] virtual std::vector<Case> cases(const Plan& plan) const = 0;
};

using Attacks = std::vector<std::unique_ptr<Attack>>;
// Each is defined in its own source file.
void addKills(Attacks& attacks);
void addRaces(Attacks& attacks);
void addFailingCalls(Attacks& attacks);
void addFullDisks(Attacks& attacks);
void addMaintenance(Attacks& attacks);
void addDamage(Attacks& attacks);
void addZones(Attacks& attacks);

struct Settings {
  std::uint64_t seed = 1;
  int jobs = 2;
  bool isWhole = true;
  int onlyCase = -1;              // the number of a case; -1 for all
  int mostCases = 1'000'000'000;  // the maximum for each attack, chosen at random
  std::filesystem::path directory;
};

struct Tally {
  int runs = 0;
  int failures = 0;  // cases that broke a promise
};

// Runs the cases of an attack in parallel and prints the failures.
Tally conduct(const Attack& attack, const Scenarios& scenarios, const Settings& settings);

}  // namespace company
