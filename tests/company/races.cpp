// Races of two to eight programs that start using the store at the same moment, with random delays
// of locks and writes. The result is the same as if the programs had run one after the other:
// nothing is stored twice, no change is lost, and readers see only states that a writer completed.

#include "gate.h"
#include "scenarios.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <atomic>
#include <thread>

namespace company {
namespace {

constexpr int mostPrograms = 8;

int programs(Random& random) {
  return std::uniform_int_distribution(2, mostPrograms)(random);
}

Launch racer(const Site& site, Random& random, const Arguments& arguments,
             const std::string& input = {}) {
  return site.launch(arguments, input, Sabotage::gate() + Sabotage::jitter(random()));
}

std::string told(const std::vector<Launch>& launches, const std::vector<Outcome>& outcomes) {
  std::string text;
  for (std::size_t i = 0; i < launches.size(); ++i)
    text += shown(launches[i]) + " -> " + std::to_string(outcomes[i].code) + ' ' +
            outcomes[i].out.substr(0, outcomes[i].out.find('\n')) + outcomes[i].err + '\n';
  return text;
}

std::size_t timesStored(const std::vector<std::string>& list, const std::string& part) {
  return static_cast<std::size_t>(
      std::count_if(list.begin(), list.end(),
                    [&](const std::string& each) { return each.find(part) != std::string::npos; }));
}

// The result of a race.
struct Result {
  std::vector<Launch> launches;
  std::vector<Outcome> outcomes;
  Snapshot found;
  std::string text;

  [[nodiscard]] std::ptrdiff_t endedWith(int code) const {
    return std::count_if(outcomes.begin(), outcomes.end(),
                         [&](const Outcome& each) { return each.code == code; });
  }
  [[nodiscard]] bool allSucceeded() const {
    return endedWith(0) == static_cast<std::ptrdiff_t>(outcomes.size());
  }
};

Result race(const Site& site, std::vector<Launch> launches, Verdict& verdict) {
  Result result{std::move(launches), {}, {}, {}};
  result.outcomes = runTogether(result.launches);
  for (std::size_t i = 0; i < result.launches.size(); ++i)
    verdict.requireSoundEnd(result.launches[i], result.outcomes[i]);
  result.found = site.look();
  result.text = told(result.launches, result.outcomes) + result.found.trouble;
  verdict.require(result.found.trouble.empty(), "the store opens and is sound afterwards",
                  result.text);
  return result;
}

// An attack that runs the same race many times.
class Race : public Attack {
public:
  Race(std::string name, int whole, int sample)
      : name_(std::move(name)), whole_(whole), sample_(sample) {}
  [[nodiscard]] std::string name() const override { return name_; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    const Case each{
        "race", [this, &scenarios = plan.scenarios](Site& site, Random& random, Verdict& verdict) {
          site.reset(scenarios.store(store()));
          run(scenarios, site, random, verdict);
        }};
    return {static_cast<std::size_t>(plan.amount(whole_, sample_)), each};
  }

protected:
  [[nodiscard]] virtual std::string store() const { return "small"; }
  virtual void run(const Scenarios& scenarios, const Site& site, Random& random,
                   Verdict& verdict) const = 0;

private:
  std::string name_;
  int whole_;
  int sample_;
};

// `category add X` by several programs: one adds it, the others report that it exists.
class CategoryRace : public Race {
public:
  CategoryRace() : Race("race-category-add", 200, 4) {}

private:
  void run(const Scenarios&, const Site& site, Random& random, Verdict& verdict) const override {
    constexpr int existsAlready = 15;
    std::vector<Launch> launches;
    for (int i = programs(random); i > 0; --i)
      launches.push_back(racer(site, random, {"category", "add", "contested"}));
    const std::size_t count = launches.size();
    const Result result = race(site, std::move(launches), verdict);
    verdict.require(timesStored(result.found.categories, "\"contested\"") == 1,
                    "a category is stored once", result.text);
    verdict.require(result.endedWith(0) == 1 &&
                        result.endedWith(existsAlready) == static_cast<std::ptrdiff_t>(count) - 1,
                    "one program adds a category, the others find it", result.text);
  }
};

// `add --category NEW` by several programs: one category, which contains all of their tasks.
class NewCategoryRace : public Race {
public:
  NewCategoryRace() : Race("race-add-in-category", 200, 4) {}

private:
  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    std::vector<Launch> launches;
    for (int i = programs(random); i > 0; --i)
      launches.push_back(
          racer(site, random, {"add", "task " + std::to_string(i), "--category", "contested"}));
    const std::size_t count = launches.size();
    const Result result = race(site, std::move(launches), verdict);
    const Snapshot& before = scenarios.named("add").states.front();
    verdict.require(result.allSucceeded(), "all programs succeed", result.text);
    verdict.require(timesStored(result.found.categories, "\"contested\"") == 1,
                    "a category is stored once", result.text);
    verdict.require(timesStored(result.found.tasks, "\"category\":\"contested\"") == count,
                    "each task is in its category", result.text);
    verdict.require(result.found.journal.size() == before.journal.size() + count,
                    "the journal holds each stored change once and no other", result.text);
  }
};

// `edit` of different fields of one task, and `done`: all changes are stored.
class EditRace : public Race {
public:
  EditRace() : Race("race-edits", 300, 4) {}

private:
  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    struct Change {
      Arguments arguments;
      std::string stored;
    };
    std::vector<Change> changes = {
        {{"edit", "1", "--summary", "changed"}, "\"summary\":\"changed\""},
        {{"edit", "1", "--note", "a note"}, "\"note\":\"a note\""},
        {{"edit", "1", "--priority", "7"}, "\"priority\":7"},
        {{"edit", "1", "--due", "2028-05-06 07:08"}, "\"due\":\"2028-05-06T07:08:00Z\""},
        {{"edit", "1", "--alarm", "2028-01-02 03:04"}, "\"alarm\":\"2028-01-02T03:04:00Z\""},
        {{"edit", "1", "--category", "party"}, "\"category\":\"party\""},
        {{"edit", "1", "--category", "party"}, "\"category\":\"party\""},
        {{"done", "1"}, "\"completed\":true"},
    };
    std::shuffle(changes.begin(), changes.end(), random);
    changes.resize(static_cast<std::size_t>(programs(random)));
    std::vector<Launch> launches;
    for (const Change& change : changes)
      launches.push_back(racer(site, random, change.arguments));
    const Result result = race(site, std::move(launches), verdict);
    if (!result.found.trouble.empty())
      return;
    verdict.require(result.allSucceeded(), "all programs succeed", result.text);
    const std::string& task = result.found.tasks.front();
    for (const Change& change : changes)
      verdict.require(task.find(change.stored) != std::string::npos, "no change is lost",
                      result.text + task);
    const Snapshot& before = scenarios.named("add").states.front();
    verdict.require(result.found.journal.size() == before.journal.size() + changes.size(),
                    "the journal holds each stored change once and no other", result.text);
  }
};

// `rm` against `edit` and `done`: the task is removed; programs that come too late report that.
class RemovalRace : public Race {
public:
  RemovalRace() : Race("race-rm-and-edit", 200, 4) {}

private:
  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    constexpr int notFound = 3;
    std::vector<Launch> launches = {racer(site, random, {"rm", "1"})};
    for (int i = programs(random); i > 1; --i)
      launches.push_back(i % 3 == 0
                             ? racer(site, random, {"done", "1"})
                             : racer(site, random, {"edit", "1", "--priority", std::to_string(i)}));
    const std::size_t count = launches.size();
    const Result result = race(site, std::move(launches), verdict);
    verdict.require(result.outcomes.front().code == 0, "the removal succeeds", result.text);
    verdict.require(timesStored(result.found.tasks, "\"uid\":1,") == 0, "a removed task stays away",
                    result.text);
    verdict.require(result.endedWith(0) + result.endedWith(notFound) ==
                        static_cast<std::ptrdiff_t>(count),
                    "who comes too late is told that the task is gone", result.text);
    std::vector<std::string> expected = scenarios.named("add").states.front().journal;
    for (std::ptrdiff_t edits = result.endedWith(0) - 1; edits > 0; --edits)
      expected.emplace_back("updated 1");
    expected.emplace_back("removed 1");
    verdict.require(result.found.journal == expected,
                    "the journal holds each stored change once and in order", result.text);
  }
};

// Concurrent imports: all tasks of each are stored once.
class ImportRace : public Race {
public:
  ImportRace() : Race("race-imports", 100, 2) {}

private:
  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    constexpr int tasksOfEach = 20;
    std::vector<Launch> launches;
    for (int i = programs(random); i > 0; --i)
      launches.push_back(racer(site, random, {"import", "-"},
                               calendarOf(tasksOfEach, "import " + std::to_string(i) + " ")));
    const std::size_t count = launches.size();
    const Result result = race(site, std::move(launches), verdict);
    const Snapshot& before = scenarios.named("add").states.front();
    verdict.require(result.allSucceeded(), "all programs succeed", result.text);
    verdict.require(result.found.tasks.size() == before.tasks.size() + count * tasksOfEach,
                    "all tasks of an import are stored", result.text);
    verdict.require(timesStored(result.found.categories, "\"imported\"") <= 1,
                    "a category is stored once", result.text);
    verdict.require(result.found.journal.size() == before.journal.size() + count * tasksOfEach,
                    "the journal holds each stored change once and no other", result.text);
  }
};

// Programs that find no store: they create one, with one set of default categories.
class FirstStartRace : public Race {
public:
  FirstStartRace() : Race("race-first-start", 200, 4) {}

private:
  [[nodiscard]] std::string store() const override { return {}; }

  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    std::vector<Launch> launches;
    std::size_t added = 0;
    for (int i = 0; i < mostPrograms; ++i) {
      const bool adds = random() % 2 == 0;
      added += adds ? 1 : 0;
      launches.push_back(adds ? racer(site, random, {"add", "task " + std::to_string(i)})
                              : racer(site, random, {"list"}));
    }
    const Result result = race(site, std::move(launches), verdict);
    const Snapshot& empty = scenarios.named("first start").states.front();
    verdict.require(result.allSucceeded(), "all programs succeed", result.text);
    verdict.require(result.found.categories == empty.categories || !result.found.trouble.empty(),
                    "the default categories are there, once each", result.text);
    verdict.require(result.found.tasks.size() == added, "each task is stored", result.text);
    verdict.require(result.found.journal.size() == added,
                    "the journal holds each stored change once and no other", result.text);
  }
};

// Concurrent runs of different verbs: the journal matches the content of the store.
class MixedRace : public Race {
public:
  MixedRace() : Race("race-mixed", 200, 2) {}

private:
  void run(const Scenarios&, const Site& site, Random& random, Verdict& verdict) const override {
    const std::vector<Arguments> verbs = {{"add", "x", "--category", "fresh"},
                                          {"rm", "1", "2", "3"},
                                          {"rm", "3", "4"},
                                          {"done", "2", "3", "4"},
                                          {"edit", "4", "--category", "fresh"},
                                          {"category", "rm", "garden", "--with-tasks"},
                                          {"category", "rename", "garden", "yard"},
                                          {"category", "add", "fresh"},
                                          {"undone", "5"}};
    std::vector<Launch> launches;
    for (int i = programs(random); i > 0; --i)
      launches.push_back(racer(site, random, verbs[random() % verbs.size()]));
    const Result result = race(site, std::move(launches), verdict);
    verdict.require(timesStored(result.found.categories, "\"fresh\"") <= 1,
                    "a category is stored once", result.text);
    verdict.require(result.endedWith(1) == 0, "no program fails for no reason", result.text);
    if (result.found.trouble.empty())
      requireSameTasks(result, verdict);
  }

  // Requires that exactly the tasks that were added and not removed are stored.
  static void requireSameTasks(const Result& result, Verdict& verdict) {
    std::vector<std::string> uids;
    bool sensible = true;
    for (const std::string& change : result.found.journal) {
      const std::string uid = change.substr(change.find(' ') + 1);
      const auto found = std::find(uids.begin(), uids.end(), uid);
      const bool isAdded = change.starts_with("added");
      sensible = sensible && isAdded == (found == uids.end());
      if (isAdded)
        uids.push_back(uid);
      else if (change.starts_with("removed") && found != uids.end())
        uids.erase(found);
    }
    for (const std::string& uid : uids)
      sensible = sensible && timesStored(result.found.tasks, "\"uid\":" + uid + ",") == 1;
    verdict.require(sensible && uids.size() == result.found.tasks.size(),
                    "the journal tells what the store holds", result.text);
  }
};

// Readers concurrent with a writer: each sees one of the states that the writer completes.
class ReaderRace : public Race {
public:
  ReaderRace() : Race("race-readers", 150, 2) {}

private:
  void run(const Scenarios& scenarios, const Site& site, Random& random,
           Verdict& verdict) const override {
    static constexpr const char* writers[] = {
        "rm", "done", "import", "category rm with tasks", "remove all", "add in new category"};
    const Scenario& scenario = scenarios.named(writers[random() % std::size(writers)]);
    Gate gate;
    Launch writing = scenario.launch(site, Sabotage::gate() + Sabotage::jitter(random()));
    writing.gate = gate.number();
    Process writer(writing);
    gate.waitFor(1);

    std::atomic<bool> isWritten = false;
    std::vector<Verdict> verdicts(2);
    std::vector<std::thread> readers;
    for (Verdict& own : verdicts)
      readers.emplace_back([&] {
        try {
          do
            read(scenario, site, own);
          while (!isWritten);
        } catch (const std::exception& error) {
          own.require(false, "readers succeed", error.what());
        }
      });
    gate.open();
    const Outcome outcome = writer.wait();
    isWritten = true;
    for (std::thread& reader : readers)
      reader.join();
    for (const Verdict& own : verdicts)
      for (const Verdict::Complaint& complaint : own.complaints())
        verdict.require(false, complaint.promise, shown(writing) + ": " + complaint.detail);
    verdict.require(outcome.code == 0, "all programs succeed", outcome.err);
    judge(scenario, writing, outcome, site.look(), false, verdict);
  }

  static void read(const Scenario& scenario, const Site& site, Verdict& verdict) {
    const auto isState = [&](const auto& isAsRead) {
      return std::any_of(scenario.states.begin(), scenario.states.end(), isAsRead);
    };
    const auto printed = [&](const Arguments& arguments) {
      const Launch launch = site.launch(arguments);
      const Outcome outcome = company::run(launch);
      verdict.requireSoundEnd(launch, outcome);
      verdict.require(outcome.code == 0, "readers succeed", shown(launch) + outcome.err);
      return outcome.out;
    };
    const std::string list = printed({"list", "--json"});
    verdict.require(
        isState([tasks = tasksIn(list)](const Snapshot& state) { return state.tasks == tasks; }),
        "list sees a completed state", list);
    const std::string categories = printed({"category", "list", "--json"});
    verdict.require(isState([names = categoriesIn(categories)](const Snapshot& state) {
                      return state.categories == names;
                    }),
                    "category list sees a completed state", categories);
    const std::string changes = printed({"changes", "--json"});
    verdict.require(isState([entries = changesIn(changes)](const Snapshot& state) {
                      return state.journal == entries;
                    }),
                    "changes sees a completed state", changes);
    const std::string stats = printed({"stats", "--json"});
    const QJsonObject counts = QJsonDocument::fromJson(QByteArray::fromStdString(stats)).object();
    verdict.require(
        isState([&](const Snapshot& state) {
          return counts["tasks"]["all"].toInteger() == static_cast<qint64>(state.tasks.size()) &&
                 counts["lastChange"].toInteger() == static_cast<qint64>(state.journal.size());
        }),
        "stats sees a completed state", stats);
  }
};

}  // namespace

void addRaces(Attacks& attacks) {
  attacks.push_back(std::make_unique<CategoryRace>());
  attacks.push_back(std::make_unique<NewCategoryRace>());
  attacks.push_back(std::make_unique<EditRace>());
  attacks.push_back(std::make_unique<RemovalRace>());
  attacks.push_back(std::make_unique<ImportRace>());
  attacks.push_back(std::make_unique<FirstStartRace>());
  attacks.push_back(std::make_unique<MixedRace>());
  attacks.push_back(std::make_unique<ReaderRace>());
}

}  // namespace company
