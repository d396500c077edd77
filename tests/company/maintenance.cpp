// Backup, restore and rescue under kills, failing calls and full disks. A backup is complete or
// does not exist, and the store is unchanged. After an interrupted restore, the store is the old
// one or the backup. An interrupted rescue can be run again and finds the same as an undisturbed
// one.

#include "scenarios.h"

#include <cerrno>
#include <fstream>
#include <iterator>

namespace company {
namespace {

namespace fs = std::filesystem;

constexpr const char* savedFile = "saved.db";

const Snapshot& smallState(const Scenarios& scenarios) {
  return scenarios.named("list").states.front();
}

const Snapshot& largeState(const Scenarios& scenarios) {
  return scenarios.named("list large").states.front();
}

std::string told(const Launch& launch, const Outcome& outcome) {
  return shown(launch) + "\ncode " + std::to_string(outcome.code) + ", signal " +
         std::to_string(outcome.signal) + ": " + outcome.out + outcome.err;
}

// A verb of `ulotask db` with its initial store and the checks of the result.
class Verb {
public:
  Verb() = default;
  Verb(const Verb&) = delete;
  Verb& operator=(const Verb&) = delete;
  virtual ~Verb() = default;
  [[nodiscard]] virtual Arguments arguments() const = 0;
  virtual void prepare(const Scenarios& scenarios, Site& site) const = 0;
  virtual void judge(const Scenarios& scenarios, const Site& site, const Launch& launch,
                     const Outcome& outcome, Verdict& verdict) const = 0;
};

class Backup : public Verb {
  [[nodiscard]] Arguments arguments() const override { return {"db", "backup", "%disk/saved.db"}; }

  void prepare(const Scenarios& scenarios, Site& site) const override {
    site.reset(scenarios.store("small"));
  }

  void judge(const Scenarios& scenarios, const Site& site, const Launch& launch,
             const Outcome& outcome, Verdict& verdict) const override {
    const std::string what = told(launch, outcome);
    const std::string changed = site.look().differenceTo(smallState(scenarios));
    verdict.require(changed.empty(), "a backup leaves the store alone", what + changed);
    const bool exists = fs::exists(site.file(savedFile));
    verdict.require(outcome.code != 0 || exists, "after exit code 0 there is a backup", what);
    verdict.require(outcome.code <= 0 || !exists, "a backup that failed leaves no file", what);
    if (!exists)
      return;
    fs::remove_all(site.data());
    const Outcome restored = site.ulotask({"db", "restore", site.file(savedFile)});
    const std::string difference = site.look().storeDifferenceTo(smallState(scenarios));
    verdict.require(restored.code == 0 && difference.empty(), "a backup is whole",
                    what + restored.err + difference);
  }
};

class Restore : public Verb {
  [[nodiscard]] Arguments arguments() const override { return {"db", "restore", "%disk/saved.db"}; }

  void prepare(const Scenarios& scenarios, Site& site) const override {
    site.reset(scenarios.store("large"));
    fs::copy_file(scenarios.store("small") / "tasks.db", site.file(savedFile));
  }

  void judge(const Scenarios& scenarios, const Site& site, const Launch& launch,
             const Outcome& outcome, Verdict& verdict) const override {
    const std::string what = told(launch, outcome);
    const Snapshot found = site.look();
    const bool isNew = found.storeDifferenceTo(smallState(scenarios)).empty();
    const bool isOld = found.storeDifferenceTo(largeState(scenarios)).empty();
    verdict.require(isNew || isOld, "a restored store is the old one or the backup",
                    what + found.storeDifferenceTo(smallState(scenarios)));
    verdict.require(outcome.code != 0 || isNew, "after exit code 0 the store is restored", what);
    verdict.require(outcome.code <= 0 || isOld, "a failed restoration leaves the old store", what);
  }
};

class Rescue : public Verb {
  [[nodiscard]] Arguments arguments() const override { return {"db", "rescue"}; }

  // Destroys an index, whose content can be restored from its table.
  void prepare(const Scenarios& scenarios, Site& site) const override {
    constexpr std::size_t pageSize = 4096;
    constexpr char indexLeaf = 0x0A;  // the first byte of such a page
    site.reset(scenarios.store("large"));
    const fs::path path = site.data() / "tasks.db";
    std::ifstream in(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    for (std::size_t page = pageSize; page < bytes.size(); page += pageSize) {
      if (bytes[page] != indexLeaf)
        continue;
      bytes.replace(page, pageSize, pageSize, '\0');
      break;
    }
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  }

  void judge(const Scenarios& scenarios, const Site& site, const Launch& launch,
             const Outcome& outcome, Verdict& verdict) const override {
    const std::string what = told(launch, outcome);
    if (outcome.code == 0) {
      const Snapshot found = site.look();
      verdict.require(found.trouble.empty(), "a rescued store is sound", what + found.trouble);
    }
    const Outcome again = site.ulotask({"db", "rescue"});
    const Snapshot found = site.look();
    const Snapshot& whole = largeState(scenarios);
    verdict.require(again.code == 0 && found.tasks == whole.tasks,
                    "a rescue can be run again and finds everything",
                    what + again.err + found.storeDifferenceTo(whole));
  }
};

class Maintenance : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "maintenance"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<Case> result;
    for (const Verb* verb : std::initializer_list<const Verb*>{&backup_, &restore_, &rescue_}) {
      const std::string calls = callsOf(*verb, plan);
      const auto last = static_cast<std::int64_t>(calls.size());
      for (const std::int64_t call : plan.numbers(last, plan.amount(200, 2)))
        for (const Sabotage& sabotage : {Sabotage::kill(Sabotage::Moment::before, call),
                                         Sabotage::kill(Sabotage::Moment::after, call),
                                         Sabotage::fail(call, std::to_string(ENOSPC), false),
                                         Sabotage::fail(call, std::to_string(EIO), true)})
          result.push_back(attack(plan.scenarios, *verb, sabotage));
      constexpr std::int64_t block = 4096;
      for (std::int64_t blocks = 0; blocks <= 32; blocks += plan.amount(1, 16))
        result.push_back(attack(plan.scenarios, *verb, Sabotage::room(blocks * block, ENOSPC)));
    }
    return result;
  }

private:
  static std::string callsOf(const Verb& verb, const Plan& plan) {
    verb.prepare(plan.scenarios, plan.site);
    const std::string trace = plan.site.elsewhere("trace");
    const Launch launch = plan.site.launch(verb.arguments(), {}, Sabotage::trace(trace));
    const Outcome outcome = run(launch);
    if (outcome.code != 0)
      throw std::runtime_error(told(launch, outcome));
    std::string calls;
    std::ifstream traced(trace);
    std::getline(traced, calls);
    return calls;
  }

  static Case attack(const Scenarios& scenarios, const Verb& verb, const Sabotage& sabotage) {
    return {verb.arguments()[1],
            [&scenarios, &verb, sabotage](Site& site, Random&, Verdict& verdict) {
              verb.prepare(scenarios, site);
              const Launch launch = site.launch(verb.arguments(), {}, sabotage);
              const Outcome outcome = run(launch);
              verdict.requireSoundEnd(launch, outcome);
              verb.judge(scenarios, site, launch, outcome, verdict);
            }};
  }

  Backup backup_;
  Restore restore_;
  Rescue rescue_;
};

}  // namespace

void addMaintenance(Attacks& attacks) {
  attacks.push_back(std::make_unique<Maintenance>());
}

}  // namespace company
