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
  std::int64_t entry = 0;  // its number: from 1 on, never given twice, pruned ones included
  std::int64_t time = 0;   // UTC seconds
  std::string source;      // who made it
  std::uint32_t uid = 0;
  ChangeType type = ChangeType::added;
};

// What became of the UIDs of a source, each in at most one of the lists, in the order in which
// they first changed. Only what was there before and what is there now counts: added and updated
// is added, removed and added again is updated, added and removed is in none.
struct NetChanges {
  std::vector<std::uint32_t> added;
  std::vector<std::uint32_t> updated;
  std::vector<std::uint32_t> removed;
  std::int64_t lastEntry = 0;  // ask on from here
  // Entries behind the one asked for have been pruned, or the one asked for is of another journal:
  // the lists don't tell everything, and whoever asked has to compare all its data.
  bool incomplete = false;
};

// A file in the data directory. What was appended survives the death of the process; a power cut
// can lose the last changes, but none that lastEntry or changesSince has told of. One thread at a
// time uses an object; threads and processes may have one each.
class ULO_EXPORT ChangeJournal {
public:
  // The file's name; SQLite's own files beside it begin with it.
  static constexpr char fileName[] = "changes.db";

  // The journal in `directory`, which has to exist; in the data directory when it is empty.
  // Nothing is opened yet.
  explicit ChangeJournal(std::string directory = {}) noexcept;
  ChangeJournal(const ChangeJournal&) = delete;
  ChangeJournal& operator=(const ChangeJournal&) = delete;
  ~ChangeJournal();

  // All operations give false, and log why, when the journal can't be read or written. A journal
  // that does not exist reads as an empty one; only append creates it, with mode 0600.

  // Adds changes, all or none, in the order given. Their `entry` and `time` are set here. Of
  // several failures in a row the first one is logged.
  [[nodiscard]] bool append(const std::vector<Change>& changes);
  // Appends to `changes` everything with a higher number than `entry`, of all sources.
  [[nodiscard]] bool entriesSince(std::int64_t entry, std::vector<Change>& changes);
  // Sets `net` to what changed for a source behind `entry` (0: from the beginning).
  [[nodiscard]] bool changesSince(const std::string& source, std::int64_t entry, NetChanges& net);
  // Sets `entry` to the number of the last change ever made, 0 when there was none.
  [[nodiscard]] bool lastEntry(std::int64_t& entry);
  // Forgets the entries up to and including `entry`.
  [[nodiscard]] bool prune(std::int64_t entry);

private:
  class Database;
  template <typename Work> bool attempt(const char* what, bool log, Work work);
  template <typename Work> bool read(Work work);
  [[nodiscard]] std::string path() const;
  Database* existing();
  Database& created();

  std::string directory_;
  std::unique_ptr<Database> database_;
  bool appendFails_ = false;
};

}  // namespace ulo
