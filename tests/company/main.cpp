// Attacks the store with concurrent programs, full disks, kills, damage and unusual time zones, and
// counts broken promises. Exits with 1 if there are any.

#include "scenarios.h"
#include "temporary_directory.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {

using company::Attack;
using company::Attacks;

Attacks allAttacks() {
  Attacks attacks;
  company::addKills(attacks);
  company::addRaces(attacks);
  company::addFailingCalls(attacks);
  company::addFullDisks(attacks);
  company::addMaintenance(attacks);
  company::addDamage(attacks);
  company::addZones(attacks);
  return attacks;
}

// Uses a memory file system if there is one, because thousands of stores are created and removed.
void preferMemory() {
  constexpr const char* memory = "/dev/shm";
  constexpr int keep = 0;
  if (access(memory, W_OK | X_OK) == 0)
    setenv("TMPDIR", memory, keep);
}

// Disables core dumps, which would take longer than the rest of the run.
void leaveNoImages() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

struct Row {
  std::string name;
  company::Tally tally;
};

void print(const std::vector<Row>& rows) {
  const auto line = [](const std::string& name, int runs, int failures) {
    std::printf("%-24s %8d %10d\n", name.c_str(), runs, failures);
  };
  company::Tally sum;
  std::printf("%-24s %8s %10s\n", "TEST", "RUNS", "FAILURES");
  for (const Row& row : rows) {
    line(row.name, row.tally.runs, row.tally.failures);
    sum.runs += row.tally.runs;
    sum.failures += row.tally.failures;
  }
  line("all", sum.runs, sum.failures);
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  const Attacks attacks = allAttacks();
  company::Settings settings;
  settings.seed = std::random_device{}();
  settings.jobs = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  std::vector<std::string> names;
  bool isSample = false;

  CLI::App app("Attacks the task store and counts broken promises.", "company");
  std::vector<std::string> known;
  for (const auto& attack : attacks)
    known.push_back(attack->name());
  app.add_option("ATTACK", names, "Attacks to run (default: all)")->check(CLI::IsMember(known));
  app.add_option("--seed", settings.seed, "Repeats the run that printed this seed");
  app.add_option("--jobs", settings.jobs, "Attacks at a time")->check(CLI::Range(1, 64));
  app.add_option("--case", settings.onlyCase, "Runs only the case with this number");
  app.add_option("--most", settings.mostCases, "Runs at most this many cases of each attack")
      ->check(CLI::PositiveNumber);
  app.add_flag("--sample", isSample, "Runs a small sample of the cases");
  CLI11_PARSE(app, argc, argv);
  settings.isWhole = !isSample;

  try {
    leaveNoImages();
    preferMemory();
    const TemporaryDirectory directory;
    settings.directory = directory.path();
    std::printf("seed %llu\n", static_cast<unsigned long long>(settings.seed));
    std::fflush(stdout);
    const company::Scenarios scenarios(directory.path());
    std::vector<Row> rows;
    for (const auto& attack : attacks) {
      if (!names.empty() && std::find(names.begin(), names.end(), attack->name()) == names.end())
        continue;
      const auto start = std::chrono::steady_clock::now();
      rows.push_back({attack->name(), company::conduct(*attack, scenarios, settings)});
      const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
      std::fprintf(stderr, "%s: %.1f s\n", attack->name().c_str(), took.count());
      std::fflush(stdout);
    }
    print(rows);
    const bool failed = std::any_of(rows.begin(), rows.end(),
                                    [](const Row& row) { return row.tally.failures > 0; });
    const bool ran =
        std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row.tally.runs > 0; });
    return failed || !ran ? 1 : 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "company: %s\n", error.what());
    return 1;
  }
}
