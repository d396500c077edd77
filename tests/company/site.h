// The directories of one attack, and snapshots of the store as a new program sees it.
#pragma once

#include "process.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace company {

// Interference with a running process; see saboteur_shim.cpp.
class Sabotage {
public:
  enum class Moment { before, after };

  static Sabotage kill(Moment moment, std::int64_t call);
  // `error` is an error number or "short". If `persists` is set, all later calls of that kind fail
  // too.
  static Sabotage fail(std::int64_t call, const std::string& error, bool persists);
  static Sabotage room(std::int64_t bytes, int error);
  static Sabotage failAllocation(std::int64_t allocation);
  static Sabotage jitter(std::uint64_t seed);
  // Blocks the process at its first use of the store until the gate is opened.
  static Sabotage gate();
  static Sabotage trace(const std::string& file);

  Sabotage& operator+=(const Sabotage& other);
  [[nodiscard]] const Environment& settings() const { return settings_; }

private:
  Environment settings_;
};

inline Sabotage operator+(Sabotage a, const Sabotage& b) {
  return a += b;
}

// A state of the store as other programs see it. Times and uuids are omitted so that states of
// different runs compare equal.
struct Snapshot {
  std::vector<std::string> tasks;       // by UID
  std::vector<std::string> categories;  // by name, with the number of tasks
  std::vector<std::string> journal;     // kind and UID, in order
  std::vector<std::string> texts;       // what each task's calendar text keeps in X-TEXT, by UID
  std::string trouble;                  // why it cannot be read, or the errors of db check

  // Describes the first difference; empty if there is none.
  [[nodiscard]] std::string differenceTo(const Snapshot& expected) const;
  // The same, ignoring the journal.
  [[nodiscard]] std::string storeDifferenceTo(const Snapshot& expected) const;
};

class Site {
public:
  // Creates `directory`, which is removed with the object.
  explicit Site(std::filesystem::path directory);
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;
  ~Site();

  // Starts again with a copy of a data directory, or without one if `store` is empty.
  void reset(const std::filesystem::path& store);

  // The directory in which calls are watched: contains the data directory and other files.
  [[nodiscard]] std::filesystem::path disk() const { return directory_ / "disk"; }
  [[nodiscard]] std::filesystem::path data() const { return disk() / "data"; }
  [[nodiscard]] std::filesystem::path file(const std::string& name) const { return disk() / name; }
  // A path that attacks do not affect.
  [[nodiscard]] std::filesystem::path elsewhere(const std::string& name) const {
    return directory_ / name;
  }

  // "%disk" in arguments is replaced with the path of the disk.
  [[nodiscard]] Launch launch(const Arguments& arguments, const std::string& input = {},
                              const Sabotage& sabotage = {}) const;
  [[nodiscard]] Outcome ulotask(const Arguments& arguments, const std::string& input = {},
                                const Sabotage& sabotage = {}) const;
  // Runs `store_user arguments...`.
  [[nodiscard]] Launch storeUser(const Arguments& arguments, const Sabotage& sabotage = {}) const;

  // Returns the state that new processes see.
  [[nodiscard]] Snapshot look() const;

  // Environment variables for programs started from now on.
  Environment variables;

private:
  [[nodiscard]] Environment environment(const Sabotage& sabotage) const;

  std::filesystem::path directory_;
};

// Convert the program's JSON output of tasks, categories and changes to the form of a snapshot.
// Throw std::runtime_error if the text is not such JSON.
std::vector<std::string> tasksIn(const std::string& json);
std::vector<std::string> categoriesIn(const std::string& json);
std::vector<std::string> changesIn(const std::string& jsonLines);
// Converts its iCalendar output: one entry for each to-do.
std::vector<std::string> textsIn(const std::string& calendar);

// Returns the command in shell syntax, for messages.
std::string shown(const Launch& launch);

}  // namespace company
