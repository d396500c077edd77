// The place of one attack: directories of its own, and what a new program finds in the store.
#pragma once

#include "process.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace company {

// What is done to a process while it runs; see saboteur_shim.cpp.
class Sabotage {
public:
  enum class Moment { before, after };

  static Sabotage kill(Moment moment, std::int64_t call);
  // `error` is an error number or "short"; if it `persists`, all later calls of that kind fail too.
  static Sabotage fail(std::int64_t call, const std::string& error, bool persists);
  static Sabotage room(std::int64_t bytes, int error);
  static Sabotage failAllocation(std::int64_t allocation);
  static Sabotage jitter(std::uint64_t seed);
  // Holds the process at its first use of the store until the gate is opened.
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

// A state of the store as other programs see it. Times and uuids are left out, so that states of
// different runs compare equal.
struct Snapshot {
  std::vector<std::string> tasks;       // by UID
  std::vector<std::string> categories;  // by name, with the number of tasks
  std::vector<std::string> journal;     // kind and UID, in order
  std::string trouble;                  // what kept it from being read; what db check complains of

  // A sentence about the first difference; empty for none.
  [[nodiscard]] std::string differenceTo(const Snapshot& expected) const;
  // The same without the journal.
  [[nodiscard]] std::string storeDifferenceTo(const Snapshot& expected) const;
};

class Site {
public:
  // `directory` is made, and removed with the object.
  explicit Site(std::filesystem::path directory);
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;
  ~Site();

  // Begins anew with a copy of a data directory; without one when `store` is empty.
  void reset(const std::filesystem::path& store);

  // The disk that calls are watched on: the data directory and files beside it.
  [[nodiscard]] std::filesystem::path disk() const { return directory_ / "disk"; }
  [[nodiscard]] std::filesystem::path data() const { return disk() / "data"; }
  [[nodiscard]] std::filesystem::path file(const std::string& name) const { return disk() / name; }
  // A place that no attack reaches.
  [[nodiscard]] std::filesystem::path elsewhere(const std::string& name) const {
    return directory_ / name;
  }

  // In arguments "%disk" stands for the disk.
  [[nodiscard]] Launch launch(const Arguments& arguments, const std::string& input = {},
                              const Sabotage& sabotage = {}) const;
  [[nodiscard]] Outcome ulotask(const Arguments& arguments, const std::string& input = {},
                                const Sabotage& sabotage = {}) const;
  // Runs `store_user arguments...`.
  [[nodiscard]] Launch storeUser(const Arguments& arguments, const Sabotage& sabotage = {}) const;

  // The state that new processes see.
  [[nodiscard]] Snapshot look() const;

  // Variables for programs that are started from here on.
  Environment variables;

private:
  [[nodiscard]] Environment environment(const Sabotage& sabotage) const;

  std::filesystem::path directory_;
};

// Tasks, categories and changes in the JSON that the program prints, in the form of a snapshot.
// They throw std::runtime_error for a text that isn't such JSON.
std::vector<std::string> tasksIn(const std::string& json);
std::vector<std::string> categoriesIn(const std::string& json);
std::vector<std::string> changesIn(const std::string& jsonLines);

// For messages: the command as a shell takes it.
std::string shown(const Launch& launch);

}  // namespace company
