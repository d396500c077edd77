// Damaged files: flipped bytes, and zeroed, swapped and truncated pages. No program crashes or
// hangs. If `db check` reports a store as sound, every way of reading it returns all tasks. A
// changed byte within a text cannot be detected.

#include "scenarios.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

namespace company {
namespace {

constexpr std::size_t pageSize = 4096;

using Bytes = std::string;

std::size_t position(Random& random, std::size_t size) {
  return std::uniform_int_distribution<std::size_t>(0, size - 1)(random);
}

void flip(Bytes& bytes, std::size_t at, Random& random) {
  bytes[at] = static_cast<char>(bytes[at] ^ std::uniform_int_distribution(1, 255)(random));
}

struct Damage {
  const char* name;
  void (*apply)(Bytes& bytes, Random& random);
};

constexpr Damage damages[] = {
    {"a byte flipped",
     [](Bytes& bytes, Random& random) { flip(bytes, position(random, bytes.size()), random); }},
    {"bytes flipped",
     [](Bytes& bytes, Random& random) {
       for (int i = std::uniform_int_distribution(2, 40)(random); i > 0; --i)
         flip(bytes, position(random, bytes.size()), random);
     }},
    // The part of a page that describes its content.
    {"a page's head flipped",
     [](Bytes& bytes, Random& random) {
       constexpr std::size_t headSize = 64;
       const std::size_t page = position(random, bytes.size() / pageSize) * pageSize;
       for (int i = std::uniform_int_distribution(1, 4)(random); i > 0; --i)
         flip(bytes, page + position(random, headSize), random);
     }},
    {"the file's head flipped",
     [](Bytes& bytes, Random& random) { flip(bytes, position(random, 100), random); }},
    {"cut off", [](Bytes& bytes, Random& random) { bytes.resize(position(random, bytes.size())); }},
    {"cut off at a page",
     [](Bytes& bytes, Random& random) {
       bytes.resize(position(random, bytes.size() / pageSize) * pageSize);
     }},
    {"a page zeroed",
     [](Bytes& bytes, Random& random) {
       bytes.replace(position(random, bytes.size() / pageSize) * pageSize, pageSize, pageSize,
                     '\0');
     }},
    {"a page of something else",
     [](Bytes& bytes, Random& random) {
       const std::size_t page = position(random, bytes.size() / pageSize) * pageSize;
       std::generate_n(bytes.begin() + static_cast<std::ptrdiff_t>(page), pageSize,
                       [&] { return static_cast<char>(random()); });
     }},
    {"two pages exchanged",
     [](Bytes& bytes, Random& random) {
       const auto at = [&] {
         return bytes.begin() +
                static_cast<std::ptrdiff_t>(position(random, bytes.size() / pageSize) * pageSize);
       };
       const auto first = at();
       std::swap_ranges(first, first + pageSize, at());
     }},
};

std::multiset<std::string> uidsIn(const std::vector<std::string>& tasks) {
  std::multiset<std::string> uids;
  for (const std::string& task : tasks) {
    constexpr std::string_view key = "\"uid\":";
    for (std::size_t at = task.find(key); at != std::string::npos; at = task.find(key, at + 1))
      uids.insert(task.substr(at, task.find(',', at) - at));
  }
  return uids;
}

class DamagedFiles : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "damaged-files"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    plan.site.reset(plan.scenarios.store("large"));
    const Snapshot whole = plan.site.look();
    std::vector<Case> result;
    for (const Damage& damage : damages)
      for (int i = 0; i < plan.amount(120, 2); ++i)
        result.push_back({damage.name, [&scenarios = plan.scenarios, &damage,
                                        whole](Site& site, Random& random, Verdict& verdict) {
                            site.reset(scenarios.store("large"));
                            apply(damage, site.data() / "tasks.db", random);
                            look(site, whole, verdict);
                          }});
    return result;
  }

private:
  static void apply(const Damage& damage, const std::filesystem::path& path, Random& random) {
    std::ifstream in(path, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(in), {}};
    damage.apply(bytes, random);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  }

  static void look(const Site& site, const Snapshot& whole, Verdict& verdict) {
    const auto attempt = [&](const Arguments& arguments) {
      const Launch launch = site.launch(arguments);
      Outcome outcome = run(launch);
      verdict.requireSoundEnd(launch, outcome);
      return outcome;
    };
    const Outcome check = attempt({"db", "check"});
    const Outcome list = attempt({"list", "--json"});
    const Outcome byPriority = attempt({"list", "--json", "--sort", "priority"});
    attempt({"show", "3"});
    attempt({"search", "task"});
    attempt({"export"});
    attempt({"changes"});
    if (check.code != 0)
      return;
    const auto expected = uidsIn(whole.tasks);
    for (const Outcome& outcome : {list, byPriority})
      verdict.require(outcome.code == 0 && uidsIn(tasksIn(outcome.out)) == expected,
                      "a store that is called sound has all tasks",
                      check.out + "list ends with " + std::to_string(outcome.code) + ' ' +
                          outcome.err +
                          std::to_string(outcome.code == 0 ? tasksIn(outcome.out).size() : 0) +
                          " tasks of " + std::to_string(expected.size()));
  }
};

}  // namespace

void addDamage(Attacks& attacks) {
  attacks.push_back(std::make_unique<DamagedFiles>());
}

}  // namespace company
