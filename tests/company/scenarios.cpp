#include "scenarios.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace company {
namespace {

namespace fs = std::filesystem;

constexpr int importedTasks = 20;

Outcome succeed(const Site& site, const Arguments& arguments, const std::string& input = {}) {
  Outcome outcome = site.ulotask(arguments, input);
  if (outcome.code != 0)
    throw std::runtime_error(shown(site.launch(arguments)) + " failed undisturbed: " + outcome.err);
  return outcome;
}

// To-dos of iCalendar 2.0 with the numbers from `first` to `last`, in their state `version`. Each
// repeats every week and has a text that fills several pages.
std::string icalendarOf(int first, int last, int version) {
  std::string text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//elsewhere//EN\r\n";
  for (int i = first; i <= last; ++i) {
    const std::string state = std::to_string(i) + " " + std::to_string(version);
    text += "BEGIN:VTODO\r\nUID:todo-" + std::to_string(i) + "\r\nSUMMARY:todo " + state +
            "\r\nDUE:20270301T120000Z\r\nRRULE:FREQ=WEEKLY\r\nLAST-MODIFIED:2026010" +
            std::to_string(version) + "T120000Z\r\nX-TEXT:" + state +
            std::string(6000, static_cast<char>('a' + i % 26)) + "\r\nEND:VTODO\r\n";
  }
  return text + "END:VCALENDAR\r\n";
}

std::int64_t linesIn(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

}  // namespace

std::string calendarOf(int count, const std::string& prefix, std::size_t noteLength) {
  std::string text = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n";
  for (int i = 1; i <= count; ++i) {
    const std::string number = std::to_string(i);
    text += "BEGIN:VTODO\r\nSUMMARY:" + prefix + number +
            "\r\nDESCRIPTION:" + std::string(noteLength, static_cast<char>('a' + i % 26)) +
            "\r\nPRIORITY:" + std::to_string(i % 9 + 1) +
            "\r\nCATEGORIES:" + (i % 3 == 0 ? "party" : "imported") + "\r\nDUE:20270" +
            std::to_string(i % 9 + 1) + "10T120000Z\r\nEND:VTODO\r\n";
  }
  return text + "END:VCALENDAR\r\n";
}

Launch Scenario::launch(const Site& site, const Sabotage& sabotage) const {
  return isStoreUser ? site.storeUser(arguments, sabotage)
                     : site.launch(arguments, input, sabotage);
}

Scenarios::Scenarios(const fs::path& directory)
    : directory_(directory / "stores"), site_(directory / "preparation") {
  makeStores();
  const std::string item = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMMARY:item\r\n"
                           "CATEGORIES:party\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

  add({"list", "small", {"list"}});
  add({"list large", "large", {"list"}});
  add({"show", "small", {"show", "1"}});
  add({"search", "small", {"search", "t"}});
  add({"export", "small", {"export"}});
  add({"changes", "small", {"changes", "--net"}});
  add({"category list", "small", {"category", "list"}});
  add({"db check", "small", {"db", "check"}});
  add({"first start", "", {"list"}});

  add({"first add", "", {"add", "first"}}, {{"list"}, {"add", "first"}});
  add({"add", "small", {"add", "new", "--note", "a note", "--due", "2027-05-01 10:00"}});
  add({"add in new category", "small", {"add", "new", "--category", "fresh"}});
  add({"edit", "small", {"edit", "1", "--summary", "other", "--priority", "low"}});
  add({"edit into new category", "small", {"edit", "1", "--category", "fresh"}});
  add({"done", "small", {"done", "1", "2", "3"}},
      {{"done", "1"}, {"done", "1", "2"}, {"done", "1", "2", "3"}});
  add({"undone", "small", {"undone", "5"}});
  add({"rm one", "small", {"rm", "2"}});
  add({"rm", "small", {"rm", "1", "2", "3"}},
      {{"rm", "1"}, {"rm", "1", "2"}, {"rm", "1", "2", "3"}});
  add({"import", "small", {"import", "-"}, calendarOf(importedTasks, "imported ")});
  add({"first text", "small", {"import", "-"}, icalendarOf(1, 1, 1)});
  add({"import texts", "texts", {"import", "-"}, icalendarOf(3, 9, 2)});
  add({"done repeating", "texts", {"done", "7"}});
  add({"rm with text", "texts", {"rm", "8"}});
  add({"category add", "small", {"category", "add", "x", "y"}},
      {{"category", "add", "x"}, {"category", "add", "x", "y"}});
  add({"category rename", "small", {"category", "rename", "garden", "yard"}});
  add({"category rm", "small", {"category", "rm", "garden"}});
  add({"category rm with tasks", "small", {"category", "rm", "garden", "--with-tasks"}});
  add({"sync put", "small", {"sync-item", "put"}, item});
  add({"sync replace", "small", {"sync-item", "replace", "2"}, item});
  add({"sync rm", "small", {"sync-item", "rm", "2"}});
  const auto addForStoreUser = [this](const char* name, const Arguments& arguments) {
    Scenario scenario{name, "small", arguments};
    scenario.isStoreUser = true;
    add(std::move(scenario));
  };
  addForStoreUser("remove all", {"remove-all"});
  addForStoreUser("operations that read", {"read"});
  addForStoreUser("addTask", {"add", "fresh"});
  addForStoreUser("updateTask", {"update", "2"});
  addForStoreUser("synchronization", {"synchronize", "2"});
}

void Scenarios::makeStores() {
  const auto keep = [&](const char* name) {
    fs::create_directories(directory_);
    fs::copy(site_.data(), store(name), fs::copy_options::recursive);
    site_.reset({});
  };
  succeed(site_, {"add", "one", "--due", "2027-01-01 10:00", "--priority", "high"});
  succeed(site_, {"add", "two", "--note", std::string(1500, 'n')});
  succeed(site_, {"add", "three", "--category", "garden"});
  succeed(site_, {"add", "four", "--category", "garden", "--alarm", "2027-02-01 08:00"});
  succeed(site_, {"add", "five", "--category", "party"});
  succeed(site_, {"add", "six", "--due", "2027-03-01"});
  succeed(site_, {"done", "5"});
  keep("small");

  site_.reset(store("small"));
  succeed(site_, {"import", "-"}, icalendarOf(1, 5, 1));
  keep("texts");

  succeed(site_, {"import", "-"}, calendarOf(60, "task ", 900));
  succeed(site_, {"add", "apart", "--category", "apart"});
  succeed(site_, {"done", "7", "8", "9"});
  succeed(site_, {"rm", "11", "12", "13", "14", "15"});
  keep("large");
}

fs::path Scenarios::store(const std::string& name) const {
  return name.empty() ? fs::path() : directory_ / name;
}

std::vector<const Scenario*> Scenarios::all() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<const Scenario*> result;
  for (Entry& entry : entries_)
    result.push_back(&filled(entry));
  return result;
}

const Scenario& Scenarios::named(const std::string& name) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.scenario.name == name; });
  if (found == entries_.end())
    throw std::logic_error("no scenario " + name);
  return filled(*found);
}

void Scenarios::add(Scenario scenario, const std::vector<Arguments>& steps) {
  entries_.push_back({std::move(scenario), steps});
}

const Scenario& Scenarios::filled(Entry& entry) const {
  if (!entry.isFilled)
    fill(entry.scenario, entry.steps);
  entry.isFilled = true;
  return entry.scenario;
}

void Scenarios::fill(Scenario& scenario, const std::vector<Arguments>& steps) const {
  site_.reset(store(scenario.store));
  const std::string trace = site_.elsewhere("trace");
  // The state before the run. A first start has none.
  if (!scenario.store.empty()) {
    scenario.states.push_back(site_.look());
    site_.reset(store(scenario.store));
  }
  const Launch launch = scenario.launch(site_, Sabotage::trace(trace));
  const Outcome outcome = run(launch);
  if (outcome.code != 0)
    throw std::runtime_error(shown(launch) + " failed undisturbed: " + outcome.err);
  scenario.out = outcome.out;
  std::ifstream traced(trace);
  std::getline(traced, scenario.calls);
  traced >> scenario.allocations;

  const Snapshot after = site_.look();
  if (steps.empty()) {
    if (scenario.states.empty() || !after.differenceTo(scenario.states.back()).empty())
      scenario.states.push_back(after);
  }
  for (const Arguments& step : steps) {
    site_.reset(store(scenario.store));
    succeed(site_, step, scenario.input);
    scenario.states.push_back(site_.look());
  }
  for (const Snapshot& state : scenario.states)
    if (!state.trouble.empty())
      throw std::runtime_error(scenario.name + " undisturbed: " + state.trouble);
}

void judge(const Scenario& scenario, const Launch& launch, const Outcome& outcome,
           const Snapshot& found, bool eitherState, Verdict& verdict) {
  const std::string what = shown(launch) + "\ncode " + std::to_string(outcome.code) + ", signal " +
                           std::to_string(outcome.signal) + ", printed: " + outcome.out +
                           outcome.err;
  verdict.requireSoundEnd(launch, outcome);
  if (!verdict.require(found.trouble.empty(), "the store opens and is sound afterwards",
                       what + found.trouble))
    return;

  const std::vector<Snapshot>& states = scenario.states;
  const auto state = std::find_if(states.begin(), states.end(), [&](const Snapshot& each) {
    return found.storeDifferenceTo(each).empty();
  });
  if (!verdict.require(state != states.end(), "an operation is stored whole or not at all",
                       what + "\nbefore: " + found.storeDifferenceTo(states.front()) +
                           "\nafter: " + found.storeDifferenceTo(states.back())))
    return;
  const std::string journal = found.differenceTo(*state);
  verdict.require(journal.empty(), "the journal holds each stored change once and no other",
                  what + journal);

  // Either each operation prints a line, or all operations print one.
  const std::int64_t last = std::distance(states.begin(), states.end()) - 1;
  const std::int64_t reached = std::distance(states.begin(), state);
  const std::int64_t printed = linesIn(outcome.out);
  const std::int64_t reported =
      printed == 0 || !scenario.writes()
          ? 0
          : std::max<std::int64_t>(0, last - (linesIn(scenario.out) - printed));
  verdict.require(reached >= reported, "what was printed as done is stored",
                  what + found.differenceTo(states.back()));
  if (outcome.code == 0) {
    verdict.require(reached == last, "after exit code 0 all is stored",
                    what + found.differenceTo(states.back()));
    verdict.require(scenario.writes() || outcome.out == scenario.out,
                    "after exit code 0 all was printed", what);
  } else if (outcome.signal == 0 && !eitherState) {
    verdict.require(reached == reported, "after a failure nothing more is stored than was printed",
                    what + found.differenceTo(states[static_cast<std::size_t>(reported)]));
  }
}

}  // namespace company
