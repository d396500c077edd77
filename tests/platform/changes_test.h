// What the tests of the journal of changes and of its reporter share.
#pragma once

#include "SVC_CT_ChangeReporter.h"
#include "change_journal.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using ulo::Change;
using ulo::ChangeJournal;
using ulo::ChangeType;
using ulo::NetChanges;

inline constexpr ChangeType allTypes[] = {ChangeType::added, ChangeType::updated,
                                          ChangeType::removed};

inline Change changeOf(std::uint32_t uid, ChangeType type = ChangeType::added,
                       const std::string& source = "engine") {
  Change change;
  change.source = source;
  change.uid = uid;
  change.type = type;
  return change;
}

inline SVC_CT_ChangeRecord recordOf(unsigned uid, int type = SVC_CT_ADDED,
                                    const char* source = "engine") {
  SVC_CT_ChangeRecord record;
  record.source = source;
  record.uid = uid;
  record.changeType = type;
  return record;
}

inline std::vector<Change> entriesOf(ChangeJournal& journal, std::int64_t since = 0) {
  std::vector<Change> changes;
  EXPECT_TRUE(journal.entriesSince(since, changes));
  return changes;
}
// The UIDs of all entries, as somebody else sees them.
inline std::vector<std::uint32_t> uidsIn(const fs::path& directory) {
  ChangeJournal journal(directory);
  std::vector<std::uint32_t> uids;
  for (const Change& change : entriesOf(journal))
    uids.push_back(change.uid);
  return uids;
}
inline std::int64_t lastOf(ChangeJournal& journal) {
  std::int64_t entry = -1;
  EXPECT_TRUE(journal.lastEntry(entry));
  return entry;
}
inline NetChanges netOf(ChangeJournal& journal, std::int64_t since = 0,
                        const std::string& source = "engine") {
  NetChanges net;
  net.added = {1234};  // goes
  EXPECT_TRUE(journal.changesSince(source, since, net));
  return net;
}

class Journal : public testing::Test {
protected:
  [[nodiscard]] fs::path file() const { return directory_.path() / "changes.db"; }

  DataDirectory directory_;
  ChangeJournal journal_{directory_.path()};
};

class Reporter : public Journal {
protected:
  SVC_CT_ChangeReporter reporter_;
};
