// What attacks are made of, and how they are run and counted.
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

// What a case has to say: nothing when all promises were kept.
class Verdict {
public:
  // `promise` names in a few words what was promised; failures are counted by it, each promise
  // once for a case.
  bool require(bool kept, const std::string& promise, const std::string& detail);
  // What holds for every program under attack, whatever is done to it: it neither crashes nor
  // hangs, and it ends with a documented exit code and, unless that is 0, with a message.
  void requireSoundEnd(const Launch& launch, const Outcome& outcome);

  struct Complaint {
    std::string promise;
    std::string detail;
  };
  [[nodiscard]] const std::vector<Complaint>& complaints() const { return complaints_; }
  // Runs that the case counts for.
  int runs = 1;

private:
  std::vector<Complaint> complaints_;
};

// One attack on a site that the case resets itself.
struct Case {
  std::string name;
  std::function<void(Site&, Random&, Verdict&)> run;
};

// How much is to be done, and with what.
struct Plan {
  const Scenarios& scenarios;
  bool isWhole;    // or a sample
  Random& random;  // the attack's own
  Site& site;      // to prepare with

  [[nodiscard]] int amount(int whole, int sample) const { return isWhole ? whole : sample; }
  // Up to `count` numbers from 1 to `last`, in order, spread at random.
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
// A source file each.
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
  int onlyCase = -1;              // a case's number; -1 for all
  int mostCases = 1'000'000'000;  // of each attack, chosen at random
  std::filesystem::path directory;
};

struct Tally {
  int runs = 0;
  int failures = 0;  // cases with a complaint
};

// Runs the cases of an attack side by side and prints what failed.
Tally conduct(const Attack& attack, const Scenarios& scenarios, const Settings& settings);

}  // namespace company
