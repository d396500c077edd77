// The journal of changes: the tasks that were added, updated and removed, in chronological order,
// shared by all programs that use the data directory.
#pragma once

#include "ulo/export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ulo {

enum class ChangeType : int { added = 1, updated = 2, removed = 3 };

struct Change {
  std::int64_t entry = 0;  // the entry's number, from 1; never reused, even after pruning
  std::int64_t time = 0;   // UTC seconds
  std::string source;      // whose data changed: ZTASK_ENG_Model::identifier, for all programs
  std::uint32_t uid = 0;
  ChangeType type = ChangeType::added;
};

// The net effect on the UIDs of a source. Each UID is in at most one of the lists, in order of its
// first change. Only the states before and after count: added then updated is added, removed then
// added again is updated, added then removed is in no list.
struct NetChanges {
  std::vector<std::uint32_t> added;
  std::vector<std::uint32_t> updated;
  std::vector<std::uint32_t> removed;
  std::int64_t lastEntry = 0;  // continue from here
  std::string generation;      // with this generation
  // The lists are incomplete and the reader must compare all of its data: entries after the
  // requested one have been pruned, or the requested entry belongs to another journal.
  bool incomplete = false;
};

// Reads the journal, which is part of the store's file. An entry is committed together with the
// change that it describes: even if a program is killed or the disk is full, every stored change
// has exactly one entry, and a change that was not stored has none. An object must not be used by
// several threads at once; threads and processes may each have their own.
//
// To follow changes, watch the data directory with DirectoryWatch(dataDirectory(), fileName), and
// call changesSince or entriesSince when it reports a change, and from time to time.
class ULO_EXPORT ChangeJournal {
public:
  // The file's name. The names of SQLite's auxiliary files begin with it.
  static constexpr char fileName[] = "tasks.db";

  // Uses the journal in `directory`, which must exist, or in the data directory if `directory` is
  // empty. Does not open anything yet.
  explicit ChangeJournal(std::string directory = {}) noexcept;
  ChangeJournal(const ChangeJournal&) = delete;
  ChangeJournal& operator=(const ChangeJournal&) = delete;
  ~ChangeJournal();

  // All operations return false and log the reason if the journal cannot be read or written. A
  // journal that does not exist reads as empty; the store creates it along with its tables.

  // Appends to `changes` all entries with numbers greater than `entry`.
  [[nodiscard]] bool entriesSince(std::int64_t entry, std::vector<Change>& changes);
  // Sets `net` to the changes of a source, which is ZTASK_ENG_Model::identifier for tasks, after
  // `entry` (0: from the beginning). `generation` is the generation that `entry` belongs to; if it
  // is empty, `entry` is assumed to belong to this journal.
  [[nodiscard]] bool changesSince(const std::string& source, std::int64_t entry, NetChanges& net,
                                  const std::string& generation = {});
  // Sets `entry` to the number of the last change ever recorded, or 0 if there was none.
  [[nodiscard]] bool lastEntry(std::int64_t& entry);
  // Sets `generation` to the journal's identity, or to an empty string if there is no journal. It
  // changes when the store is restored from a backup, rescued or recreated; entry numbers of
  // different generations are not comparable.
  [[nodiscard]] bool generation(std::string& generation);
  // Deletes the entries up to and including `entry`.
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
