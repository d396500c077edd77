// The journal of changes: what was added, updated and removed, in the order it happened, shared
// by all programs of the data directory.
#pragma once

#include "export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ulo {

enum class ChangeType : int { added = 1, updated = 2, removed = 3 };

struct Change {
  std::int64_t entry = 0;  // its number: from 1 on, never used twice, not even after pruning
  std::int64_t time = 0;   // UTC seconds
  std::string source;      // who made it
  std::uint32_t uid = 0;
  ChangeType type = ChangeType::added;
};

// The net effect on the UIDs of a source, each in at most one of the lists, in the order in which
// they first changed. Only the states before and after count: added and updated is added, removed
// and added again is updated, added and removed is in none.
struct NetChanges {
  std::vector<std::uint32_t> added;
  std::vector<std::uint32_t> updated;
  std::vector<std::uint32_t> removed;
  std::int64_t lastEntry = 0;  // continue from here
  std::string generation;      // with this generation
  // The lists don't tell everything, and the reader has to compare all its data: entries after the
  // one asked for have been pruned, or the one asked for belongs to another journal.
  bool incomplete = false;
};

// Reads the journal, which lies in the store's file. An entry is committed together with the change
// that it describes: whatever happens to a program or the power, a stored change has one entry, and
// a change that was not stored has none. One thread at a time uses an object; threads and processes
// may have one each.
class ULO_EXPORT ChangeJournal {
public:
  // The file's name; the names of SQLite's files beside it begin with it.
  static constexpr char fileName[] = "tasks.db";

  // The journal in `directory`, which has to exist; in the data directory if it is empty.
  // Nothing is opened yet.
  explicit ChangeJournal(std::string directory = {}) noexcept;
  ChangeJournal(const ChangeJournal&) = delete;
  ChangeJournal& operator=(const ChangeJournal&) = delete;
  ~ChangeJournal();

  // All operations return false, and log why, if the journal can't be read or written. A journal
  // that does not exist reads as an empty one; the store creates it with its tables.

  // Appends to `changes` everything with a higher number than `entry`.
  [[nodiscard]] bool entriesSince(std::int64_t entry, std::vector<Change>& changes);
  // Sets `net` to the changes of a source after `entry` (0: from the beginning). `generation` is
  // the one that `entry` belongs to; if it is empty, `entry` is taken to belong to this journal.
  [[nodiscard]] bool changesSince(const std::string& source, std::int64_t entry, NetChanges& net,
                                  const std::string& generation = {});
  // Sets `entry` to the number of the last change ever made, 0 if there was none.
  [[nodiscard]] bool lastEntry(std::int64_t& entry);
  // Sets `generation` to the journal's identity, which changes when the store was restored from a
  // backup, rescued or begun anew: entry numbers of different generations say nothing about each
  // other. Empty if there is no journal.
  [[nodiscard]] bool generation(std::string& generation);
  // Forgets the entries up to and including `entry`.
  [[nodiscard]] bool prune(std::int64_t entry);

private:
  class Database;
  template <typename Work> bool attempt(const char* what, Work work);
  template <typename Work> bool read(Work work);
  [[nodiscard]] std::string path() const;
  Database* existing();

  std::string directory_;
  std::unique_ptr<Database> database_;
};

}  // namespace ulo
