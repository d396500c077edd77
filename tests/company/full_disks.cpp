// Full disks: little or no free space, an exceeded quota, or a file size limit. Reading works
// without any free space. A change is stored completely, or fails with the code for a full store
// and changes nothing. A removal works if there is space for its log. `export -o` either replaces a
// file with a complete one or leaves it unchanged.

#include "gate.h"
#include "scenarios.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <optional>

namespace company {
namespace {

constexpr int storeFull = 9;
constexpr int storeClosed = 10;
constexpr int notWritten = 12;
constexpr std::int64_t block = 4096;
constexpr std::int64_t mostRoom = 64 * 1024;
constexpr int errors[] = {ENOSPC, EDQUOT};
// Space in which a removal must succeed: the index of the log, and a page of the log for each
// changed page.
constexpr std::int64_t removalRoom = mostRoom;

// Keeps the store open during the attack, as an application does.
class Holder {
public:
  explicit Holder(const Site& site) {
    Launch launch = site.storeUser({"hold"});
    launch.gate = gate_.number();
    process_.emplace(launch);
    gate_.waitFor(1);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { gate_.open(); }

private:
  Gate gate_;
  std::optional<Process> process_;
};

class FullDisks : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "full-disks"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<Case> result;
    for (const Scenario* each : plan.scenarios.all()) {
      const Scenario& scenario = *each;
      std::vector<Case> own;
      for (std::int64_t room = 0; room <= mostRoom; room += block)
        for (const int error : errors)
          for (const bool held : {false, true})
            if (!held || !scenario.store.empty())
              own.push_back(attack(plan, scenario, room, error, held));
      if (plan.isWhole)
        result.insert(result.end(), own.begin(), own.end());
      else
        std::sample(own.begin(), own.end(), std::back_inserter(result), 2, plan.random);
    }
    return result;
  }

private:
  static Case attack(const Plan& plan, const Scenario& scenario, std::int64_t room, int error,
                     bool held) {
    return {scenario.name + (held ? " while held" : ""),
            [&scenarios = plan.scenarios, &scenario, room, error, held](Site& site, Random&,
                                                                        Verdict& verdict) {
              site.reset(scenarios.store(scenario.store));
              std::optional<Holder> holder;
              if (held)
                holder.emplace(site);
              const Launch launch = scenario.launch(site, Sabotage::room(room, error));
              const Outcome outcome = run(launch);
              holder.reset();
              judge(scenario, launch, outcome, site.look(), false, verdict);
              requireCode(scenario, launch, outcome, room, verdict);
            }};
  }

  static void requireCode(const Scenario& scenario, const Launch& launch, const Outcome& outcome,
                          std::int64_t room, Verdict& verdict) {
    const std::string what =
        shown(launch) + "\ncode " + std::to_string(outcome.code) + ": " + outcome.err;
    if (!scenario.writes() && !scenario.store.empty()) {
      verdict.require(outcome.code == 0, "reading needs no room", what);
      return;
    }
    // A new store cannot be opened if there is no space to create it.
    const bool hasNoStore = scenario.store.empty() && outcome.code == storeClosed;
    verdict.require(outcome.code == 0 || outcome.code == storeFull || hasNoStore,
                    "a full disk ends with the code for a full store", what);
    if (removes(scenario) && room >= removalRoom)
      verdict.require(outcome.code == 0, "a removal needs little room", what);
  }

  // Scenarios that remove a single task. Removing many tasks needs space for all changed pages.
  static bool removes(const Scenario& scenario) {
    return scenario.name == "rm one" || scenario.name == "sync rm";
  }
};

// `export -o` to an existing file.
class FullExports : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "full-disk-exports"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<Case> result;
    for (std::int64_t room = 0; room <= enough; room += plan.isWhole ? block : enough / 4)
      for (const int error : errors)
        result.push_back({"export", [&scenarios = plan.scenarios, room, error](Site& site, Random&,
                                                                               Verdict& verdict) {
                            site.reset(scenarios.store("large"));
                            attack(site, room, error, verdict);
                          }});
    return result;
  }

private:
  // Space for the exported file and the index of the log.
  static constexpr std::int64_t enough = 3 * mostRoom;

  static void attack(const Site& site, std::int64_t room, int error, Verdict& verdict) {
    const std::string old = "the old file";
    const std::string whole = site.ulotask({"export"}).out;
    std::ofstream(site.file("tasks.vcs")) << old;
    const Launch launch =
        site.launch({"export", "-o", "%disk/tasks.vcs"}, {}, Sabotage::room(room, error));
    const Outcome outcome = run(launch);
    verdict.requireSoundEnd(launch, outcome);
    std::ifstream file(site.file("tasks.vcs"));
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const std::string what = shown(launch) + "\ncode " + std::to_string(outcome.code) + ", " +
                             std::to_string(content.size()) + " bytes\n" + outcome.err;
    verdict.require(outcome.code == 0 || outcome.code == notWritten,
                    "an export that finds no room says that it can't be written", what);
    verdict.require(content == (outcome.code == 0 ? whole : old),
                    "an exported file is whole or the old one", what);
    verdict.require(outcome.code == 0 || room < enough, "an export with room succeeds", what);
  }
};

// A file size limit, as set by the shell's `ulimit -f`, is treated as a full disk and does not kill
// the program.
class FileSizeLimits : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "file-size-limits"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    constexpr int limitUnit = 512;  // bytes, the unit of `ulimit -f`
    constexpr int largest = 128 * 1024 / limitUnit;
    std::vector<Case> result;
    for (const char* name : {"add", "done", "rm", "import", "category add", "list", "first add"})
      for (int limit = 8; limit <= largest; limit += plan.isWhole ? 8 : 120)
        result.push_back(
            {name,
             [&scenarios = plan.scenarios, name, limit](Site& site, Random&, Verdict& verdict) {
               const Scenario& scenario = scenarios.named(name);
               site.reset(scenarios.store(scenario.store));
               Launch launch = scenario.launch(site);
               launch.arguments.insert(
                   launch.arguments.begin(),
                   {"-c", "ulimit -f " + std::to_string(limit) + "; exec \"$0\" \"$@\"",
                    launch.program});
               launch.program = "/bin/sh";
               const Outcome outcome = run(launch);
               judge(scenario, launch, outcome, site.look(), false, verdict);
             }});
    return result;
  }
};

}  // namespace

void addFullDisks(Attacks& attacks) {
  attacks.push_back(std::make_unique<FullDisks>());
  attacks.push_back(std::make_unique<FullExports>());
  attacks.push_back(std::make_unique<FileSizeLimits>());
}

}  // namespace company
