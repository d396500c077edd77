// Stores to attack, and what programs do with them: each scenario is a run of a program together
// with the states of the store that it may leave.
#pragma once

#include "attack.h"

#include <deque>
#include <mutex>

namespace company {

struct Scenario {
  std::string name;
  std::string store;  // "" begins without a data directory
  Arguments arguments;
  std::string input = {};
  bool isStoreUser = false;  // run by store_user, not by ulotask

  // Filled from runs that nothing disturbs.
  // The states in the order in which they come: the one before, one after each operation.
  std::vector<Snapshot> states = {};
  std::string out = {};
  std::string calls = {};  // the kinds of the calls that change files; see saboteur_shim.cpp
  std::int64_t allocations = 0;

  [[nodiscard]] bool writes() const { return states.size() > 1; }
  [[nodiscard]] Launch launch(const Site& site, const Sabotage& sabotage = {}) const;
};

// Any thread may ask for scenarios.
class Scenarios {
public:
  // Makes the stores in `directory` with undisturbed runs.
  explicit Scenarios(const std::filesystem::path& directory);

  // A data directory to copy; empty for "".
  [[nodiscard]] std::filesystem::path store(const std::string& name) const;
  [[nodiscard]] std::vector<const Scenario*> all() const;
  [[nodiscard]] const Scenario& named(const std::string& name) const;

private:
  // A scenario is filled when it is first asked for.
  struct Entry {
    Scenario scenario;
    std::vector<Arguments> steps;  // what leads to the states after the first
    bool isFilled = false;
  };

  void makeStores();
  void add(Scenario scenario, const std::vector<Arguments>& steps = {});
  const Scenario& filled(Entry& entry) const;
  void fill(Scenario& scenario, const std::vector<Arguments>& steps) const;

  std::filesystem::path directory_;
  mutable std::mutex mutex_;
  mutable Site site_;
  mutable std::deque<Entry> entries_;
};

// A calendar of `count` to-dos whose summaries begin with `prefix`.
std::string calendarOf(int count, const std::string& prefix, std::size_t noteLength = 20);

// What an ended run of a scenario promises, given the state that is found afterwards. If
// `eitherState` a failure may also come after the change was stored, because the disk refused to
// tell.
void judge(const Scenario& scenario, const Launch& launch, const Outcome& outcome,
           const Snapshot& found, bool eitherState, Verdict& verdict);

}  // namespace company
