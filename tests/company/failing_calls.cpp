// Failing calls and allocations. The program neither crashes nor hangs. After exit code 0
// everything is stored; after any other code, exactly what was printed. The store is then sound and
// its journal consistent.

#include "scenarios.h"

#include <cerrno>
#include <map>

namespace company {
namespace {

// The errors to inject, by kind of call.
const std::map<char, std::vector<std::string>>& errorsOf() {
  const auto text = [](int error) { return std::to_string(error); };
  static const std::map<char, std::vector<std::string>> errors = {
      {'o', {text(ENOSPC), text(EIO), text(EMFILE)}},
      {'w', {text(ENOSPC), text(EDQUOT), text(EIO), "short"}},
      {'t', {text(ENOSPC), text(EIO)}},
      {'a', {text(ENOSPC), text(EDQUOT)}},
      {'s', {text(EIO), text(ENOSPC)}},
      {'n', {text(ENOSPC), text(EIO)}},
      {'u', {text(EIO), text(EACCES)}},
      {'d', {text(ENOSPC), text(EACCES)}},
  };
  return errors;
}

class FailingCalls : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "failing-calls"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    // For each scenario.
    constexpr std::int64_t mostCalls = 60;
    constexpr std::int64_t sampledCalls = 2;
    std::vector<Case> result;
    for (const Scenario* each : plan.scenarios.all()) {
      const Scenario& scenario = *each;
      const auto last = static_cast<std::int64_t>(scenario.calls.size());
      for (const std::int64_t call : plan.numbers(last, plan.isWhole ? mostCalls : sampledCalls)) {
        const char kind = scenario.calls[static_cast<std::size_t>(call - 1)];
        std::vector<Case> ways;
        for (const std::string& error : errorsOf().at(kind))
          for (const bool persists : {false, true})
            ways.push_back(attack(plan, scenario, Sabotage::fail(call, error, persists),
                                  kind == 's' || persists));
        if (plan.isWhole)
          result.insert(result.end(), ways.begin(), ways.end());
        else
          result.push_back(ways[plan.random() % ways.size()]);
      }
    }
    return result;
  }

private:
  // After a failed flush, the disk may still contain the data: the transaction is rolled back, but
  // not in the file if the file cannot be written either.
  static Case attack(const Plan& plan, const Scenario& scenario, const Sabotage& sabotage,
                     bool eitherState) {
    return {scenario.name, [&scenarios = plan.scenarios, &scenario, sabotage,
                            eitherState](Site& site, Random&, Verdict& verdict) {
              site.reset(scenarios.store(scenario.store));
              const Launch launch = scenario.launch(site, sabotage);
              const Outcome outcome = run(launch);
              judge(scenario, launch, outcome, site.look(), eitherState, verdict);
            }};
  }
};

#ifndef __SANITIZE_ADDRESS__

class FailingAllocations : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "failing-allocations"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<Case> result;
    for (const Scenario* each : plan.scenarios.all()) {
      const Scenario& scenario = *each;
      for (const std::int64_t allocation : plan.numbers(scenario.allocations, plan.amount(60, 1)))
        result.push_back({scenario.name, [&scenarios = plan.scenarios, &scenario,
                                          allocation](Site& site, Random&, Verdict& verdict) {
                            site.reset(scenarios.store(scenario.store));
                            const Launch launch =
                                scenario.launch(site, Sabotage::failAllocation(allocation));
                            const Outcome outcome = run(launch);
                            // The message about a stored change also needs memory.
                            judge(scenario, launch, outcome, site.look(), true, verdict);
                          }});
    }
    return result;
  }
};

#endif

}  // namespace

void addFailingCalls(Attacks& attacks) {
  attacks.push_back(std::make_unique<FailingCalls>());
#ifndef __SANITIZE_ADDRESS__
  attacks.push_back(std::make_unique<FailingAllocations>());
#endif
}

}  // namespace company
