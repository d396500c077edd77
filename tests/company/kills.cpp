// Kills. Whenever a program is killed, the store opens and `db check` finds it sound, each
// operation is stored completely or not at all (an import with all of its tasks), everything
// reported as done is stored, the journal has exactly one entry for each stored change, and the
// default categories are complete.

#include "scenarios.h"

namespace company {
namespace {

// Before and after each call that changes a file.
class KillsAtCalls : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "kills-at-calls"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    // For each scenario.
    constexpr std::int64_t mostCalls = 120;
    constexpr std::int64_t sampledCalls = 2;
    std::vector<Case> result;
    for (const Scenario* each : plan.scenarios.all()) {
      const Scenario& scenario = *each;
      const auto last = static_cast<std::int64_t>(scenario.calls.size());
      for (const std::int64_t call : plan.numbers(last, plan.isWhole ? mostCalls : sampledCalls))
        for (const auto moment : {Sabotage::Moment::before, Sabotage::Moment::after})
          result.push_back({scenario.name, [&scenarios = plan.scenarios, &scenario,
                                            sabotage = Sabotage::kill(moment, call)](
                                               Site& site, Random&, Verdict& verdict) {
                              site.reset(scenarios.store(scenario.store));
                              const Launch launch = scenario.launch(site, sabotage);
                              const Outcome outcome = run(launch);
                              judge(scenario, launch, outcome, site.look(), false, verdict);
                            }});
    }
    return result;
  }
};

// At random times from the start of the program to approximately its end.
class KillsAtTimes : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "kills-at-times"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<Case> result;
    for (const Scenario* each : plan.scenarios.all()) {
      const Scenario& scenario = *each;
      if (!scenario.writes() && !scenario.store.empty())
        continue;
      for (int i = 0; i < plan.amount(100, 1); ++i)
        result.push_back({scenario.name, [&scenarios = plan.scenarios,
                                          &scenario](Site& site, Random& random, Verdict& verdict) {
                            constexpr int latest = 30'000;  // microseconds
                            site.reset(scenarios.store(scenario.store));
                            const Launch launch = scenario.launch(site);
                            Process process(launch);
                            process.killAfter(std::chrono::microseconds(
                                std::uniform_int_distribution(1000, latest)(random)));
                            judge(scenario, launch, process.wait(), site.look(), false, verdict);
                          }});
    }
    return result;
  }
};

// Repeatedly in the same store: each program finds what the preceding kill left.
class KillsInARow : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "kills-in-a-row"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    return {static_cast<std::size_t>(plan.amount(25, 1)), {"adds", addAgainAndAgain}};
  }

private:
  static void addAgainAndAgain(Site& site, Random& random, Verdict& verdict) {
    constexpr int starts = 20;
    constexpr int calls = 25;
    site.reset({});
    verdict.runs = starts;
    std::size_t printed = 0;
    for (int i = 0; i < starts; ++i) {
      const auto moment = i % 2 == 0 ? Sabotage::Moment::before : Sabotage::Moment::after;
      const Launch launch =
          site.launch({"add", "task " + std::to_string(i)}, {},
                      Sabotage::kill(moment, std::uniform_int_distribution(1, calls)(random)));
      const Outcome outcome = run(launch);
      verdict.requireSoundEnd(launch, outcome);
      printed += outcome.out.empty() ? 0 : 1;
    }
    const Snapshot found = site.look();
    verdict.require(found.trouble.empty(), "the store opens and is sound afterwards",
                    found.trouble);
    verdict.require(found.tasks.size() >= printed, "what was printed as done is stored",
                    std::to_string(printed) + " printed, " + std::to_string(found.tasks.size()) +
                        " stored");
    verdict.require(found.journal.size() == found.tasks.size(),
                    "the journal holds each stored change once and no other",
                    std::to_string(found.journal.size()) + " entries for " +
                        std::to_string(found.tasks.size()) + " tasks");
  }
};

}  // namespace

void addKills(Attacks& attacks) {
  attacks.push_back(std::make_unique<KillsAtCalls>());
  attacks.push_back(std::make_unique<KillsAtTimes>());
  attacks.push_back(std::make_unique<KillsInARow>());
}

}  // namespace company
