// Stores to attack, and scenarios: runs of a program with the states of the store that they may
// leave.
#pragma once

#include "attack.h"

#include <deque>
#include <mutex>

namespace company {

struct Scenario {
  std::string name;
  std::string store;  // "" starts without a data directory
  Arguments arguments;
  std::string input = {};
  bool isStoreUser = false;  // run by store_user, not by ulotask

  // Filled from undisturbed runs.
  // The states in order: before the run, then after each operation.
  std::vector<Snapshot> states = {};
  std::string out = {};
  std::string calls = {};  // the kinds of the calls that change files; see saboteur_shim.cpp
  std::int64_t allocations = 0;

  [[nodiscard]] bool writes() const { return states.size() > 1; }
  [[nodiscard]] Launch launch(const Site& site, const Sabotage& sabotage = {}) const;
};

// Thread-safe.
class Scenarios {
public:
  // Creates the stores in `directory` with undisturbed runs.
  explicit Scenarios(const std::filesystem::path& directory);

  // Returns the data directory to copy; empty for "".
  [[nodiscard]] std::filesystem::path store(const std::string& name) const;
  [[nodiscard]] std::vector<const Scenario*> all() const;
  [[nodiscard]] const Scenario& named(const std::string& name) const;

private:
  // A scenario is filled when it is first requested.
  struct Entry {
    Scenario scenario;
    std::vector<Arguments> steps;  // commands that lead to the states after the first
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

// Returns a calendar with `count` to-dos whose summaries begin with `prefix`.
std::string calendarOf(int count, const std::string& prefix, std::size_t noteLength = 20);

// Checks the promises of a scenario after its run, given the state found afterwards. If
// `eitherState` is set, the change may be stored even after a failure, because the disk did not
// confirm it.
void judge(const Scenario& scenario, const Launch& launch, const Outcome& outcome,
           const Snapshot& found, bool eitherState, Verdict& verdict);

}  // namespace company
