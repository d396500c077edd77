// Tests for the change journal.

#include "changes_test.h"
#include "log_capture.h"

#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <set>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(Journal, ReadsAsEmptyWithoutAStore) {
  LogCapture log;
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 0);
  EXPECT_EQ(generationOf(journal_), "");
  const NetChanges net = netOf(journal_);
  EXPECT_TRUE(net.added.empty() && net.updated.empty() && net.removed.empty());
  EXPECT_EQ(net.lastEntry, 0);
  EXPECT_FALSE(net.incomplete);
  EXPECT_TRUE(netOf(journal_, 1).incomplete);
  EXPECT_TRUE(journal_.prune(5));
  EXPECT_TRUE(fs::is_empty(directory_.path()));
  ChangeJournal nowhere(directory_.path() / "missing");
  EXPECT_THAT(entriesOf(nowhere), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(Journal, LeavesAnEmptyFileEmpty) {
  std::ofstream(path()) << "";
  EXPECT_EQ(netOf(journal_).lastEntry, 0);
  EXPECT_TRUE(journal_.prune(1));
  EXPECT_EQ(fs::file_size(path()), 0U);
  // The journal finds the file once the store has created it.
  fs::remove(path());
  file().run("INSERT INTO tasks VALUES (1, 0)");
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
  EXPECT_EQ(lastOf(journal_), 1);
}

TEST_F(Journal, IsInDataDirectoryByDefault) {
  append({changeOf(1)});
  ChangeJournal inDataDirectory;
  EXPECT_EQ(lastOf(inDataDirectory), 1);
}

TEST_F(Journal, HasOneEntryForEachChangedRow) {
  // std::time would not do: it may still return the second before the one that the journal reads.
  const auto now = [] {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  };
  const std::int64_t before = now();
  file().run("INSERT INTO tasks VALUES (7, 0), (4294967294, 0)");
  file().run("UPDATE tasks SET x = 1");
  file().run("UPDATE tasks SET x = 1 WHERE UID = 8");  // no such row
  file().run("DELETE FROM tasks WHERE UID = 7");
  file().run("DELETE FROM tasks");
  const std::int64_t after = now();
  const std::vector<Change> entries = entriesOf(journal_);
  const Change expected[] = {
      changeOf(7, ChangeType::added),   changeOf(0xFFFFFFFE, ChangeType::added),
      changeOf(7, ChangeType::updated), changeOf(0xFFFFFFFE, ChangeType::updated),
      changeOf(7, ChangeType::removed), changeOf(0xFFFFFFFE, ChangeType::removed)};
  ASSERT_THAT(entries, SizeIs(std::size(expected)));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i].entry, static_cast<std::int64_t>(i) + 1);
    EXPECT_EQ(entries[i].source, "engine");
    EXPECT_EQ(entries[i].uid, expected[i].uid);
    EXPECT_EQ(entries[i].type, expected[i].type);
    EXPECT_GE(entries[i].time, before);
    EXPECT_LE(entries[i].time, after);
  }
}

TEST_F(Journal, OmitsRolledBackChanges) {
  file().run("INSERT INTO tasks VALUES (1, 0)");
  file().run("BEGIN");
  file().run("INSERT INTO tasks VALUES (2, 0)");
  file().run("SAVEPOINT inner");
  file().run("DELETE FROM tasks");
  file().run("ROLLBACK TO inner");
  EXPECT_EQ(lastOf(journal_), 1);  // not visible before the commit
  file().run("COMMIT");
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2));
  file().run("BEGIN");
  file().run("INSERT INTO tasks VALUES (3, 0)");
  file().run("ROLLBACK");
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2));
  // No reader has seen the entry that was rolled back, so its number can be reused.
  file().run("INSERT INTO tasks VALUES (4, 0)");
  EXPECT_EQ(lastOf(journal_), 3);
}

TEST_F(Journal, NeverReusesNumbers) {
  append({changeOf(1), changeOf(2), changeOf(3)});
  EXPECT_EQ(lastOf(journal_), 3);
  ASSERT_TRUE(journal_.prune(1000));
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 3);
  ChangeJournal reopened(directory_.path());
  EXPECT_EQ(lastOf(reopened), 3);
  file().run("INSERT INTO tasks VALUES (4, 0)");
  EXPECT_EQ(entriesOf(reopened).at(0).entry, 4);
  EXPECT_EQ(lastOf(journal_), 4);
  // A journal that was damaged manually still numbers its entries.
  file().run("DELETE FROM ulo_journal");
  file().run("INSERT INTO tasks VALUES (5, 0)");
  EXPECT_EQ(lastOf(journal_), 5);
}

TEST_F(Journal, OmitsEntriesOfOtherSources) {
  append({changeOf(1), changeOf(2)});
  const NetChanges none = netOf(journal_, 0, "another");
  EXPECT_TRUE(none.added.empty() && none.updated.empty() && none.removed.empty());
  EXPECT_EQ(none.lastEntry, 2);
  EXPECT_THAT(netOf(journal_).added, ElementsAre(1, 2));
}

TEST_F(Journal, ReportsAnotherJournalToReaders) {
  append({changeOf(1)});
  EXPECT_FALSE(netOf(journal_, 1).incomplete);
  EXPECT_TRUE(netOf(journal_, 2).incomplete);
  EXPECT_FALSE(netOf(journal_, -1).incomplete);

  const std::string generation = generationOf(journal_);
  EXPECT_THAT(generation, testing::MatchesRegex("[0-9a-f]{32}"));
  NetChanges net;
  ASSERT_TRUE(journal_.changesSince("engine", 1, net, generation));
  EXPECT_FALSE(net.incomplete);
  EXPECT_EQ(net.generation, generation);
  ASSERT_TRUE(journal_.changesSince("engine", 1, net, std::string(32, '0')));
  EXPECT_TRUE(net.incomplete);
  ASSERT_TRUE(journal_.changesSince("engine", 0, net, std::string(32, '0')));
  EXPECT_TRUE(net.incomplete);
}

TEST_F(Journal, RenewalStartsNewGeneration) {
  append({changeOf(1), changeOf(2)});
  const auto renew = [&](std::int64_t floor) {
    for (const std::string& sql : ulo::renewJournalSql(floor))
      file().run(sql);
  };
  std::string generation = generationOf(journal_);
  renew(10);
  EXPECT_NE(generationOf(journal_), generation);
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 10);
  // Every earlier number is recognized as outdated.
  for (const std::int64_t entry : {0, 1, 2, 9})
    EXPECT_TRUE(netOf(journal_, entry).incomplete) << entry;
  file().run("INSERT INTO tasks VALUES (3, 0)");
  EXPECT_EQ(lastOf(journal_), 11);
  // Numbers never decrease.
  generation = generationOf(journal_);
  renew(5);
  EXPECT_NE(generationOf(journal_), generation);
  EXPECT_EQ(lastOf(journal_), 11);
  EXPECT_TRUE(netOf(journal_, 10).incomplete);
}

TEST_F(Journal, ReportsDamagedPages) {
  append(std::vector<Change>(2000, changeOf(1)));
  file_.reset();
  std::fstream(path(), std::ios::in | std::ios::out | std::ios::binary).seekp(20480)
      << std::string(12288, '\xFF');
  LogCapture log;
  std::vector<Change> changes{changeOf(7)};
  EXPECT_FALSE(journal_.entriesSince(0, changes));
  EXPECT_THAT(changes, SizeIs(1));  // nothing that was read before the failure
  EXPECT_THAT(log.text(), HasSubstr("can't be read: database disk image is malformed"));
}

TEST_F(Journal, EntriesSince) {
  append({changeOf(10), changeOf(20), changeOf(30)});
  std::vector<Change> changes{changeOf(1)};
  EXPECT_TRUE(journal_.entriesSince(1, changes));  // appends to the list
  ASSERT_THAT(changes, SizeIs(3));
  EXPECT_EQ(changes[0].uid, 1U);
  EXPECT_EQ(changes[1].uid, 20U);
  EXPECT_EQ(changes[2].uid, 30U);
  EXPECT_THAT(entriesOf(journal_, 3), IsEmpty());
  EXPECT_THAT(entriesOf(journal_, 100), IsEmpty());
  EXPECT_THAT(entriesOf(journal_, -1), SizeIs(3));
}

TEST_F(Journal, Prune) {
  for (std::uint32_t uid = 1; uid <= 5; ++uid)
    append({changeOf(uid)});
  for (const std::int64_t nothing : {0, -5}) {
    ASSERT_TRUE(journal_.prune(nothing));
    EXPECT_FALSE(netOf(journal_, 0).incomplete);
  }
  ASSERT_TRUE(journal_.prune(2));
  ASSERT_TRUE(journal_.prune(1));  // does not lower the mark
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(3, 4, 5));
  ChangeJournal reopened(directory_.path());
  for (ChangeJournal* journal : {&journal_, &reopened}) {
    EXPECT_TRUE(netOf(*journal, 0).incomplete);
    EXPECT_TRUE(netOf(*journal, 1).incomplete);
    EXPECT_FALSE(netOf(*journal, 2).incomplete);
    EXPECT_FALSE(netOf(*journal, 5).incomplete);
    EXPECT_THAT(netOf(*journal, 0).added, ElementsAre(3, 4, 5));
    EXPECT_EQ(netOf(*journal, 0).lastEntry, 5);
  }
  // Pruning beyond the last entry does not affect later ones.
  ASSERT_TRUE(journal_.prune(1000));
  EXPECT_FALSE(netOf(journal_, 5).incomplete);
  EXPECT_TRUE(netOf(journal_, 4).incomplete);
  append({changeOf(6)});
  EXPECT_FALSE(netOf(journal_, 5).incomplete);
  EXPECT_THAT(netOf(journal_, 5).added, ElementsAre(6));
}

// Compares the net effect of all sequences of up to four changes of one UID with what an observer
// sees before and after.
TEST_F(Journal, NetEffect) {
  std::vector<std::vector<ChangeType>> sequences{{}};
  for (std::size_t i = 0; i < sequences.size(); ++i)
    if (sequences[i].size() < 4)
      for (const ChangeType type : allTypes) {
        std::vector<ChangeType> longer = sequences[i];
        longer.push_back(type);
        sequences.push_back(std::move(longer));
      }
  ASSERT_THAT(sequences, SizeIs(1 + 3 + 9 + 27 + 81));
  std::uint32_t uid = 0;
  for (const std::vector<ChangeType>& sequence : sequences) {
    const std::int64_t since = lastOf(journal_);
    ++uid;
    std::string shown;
    std::optional<bool> before;  // unknown until the first change
    std::optional<bool> now;
    for (const ChangeType type : sequence) {
      append({changeOf(uid, type)});
      shown += "?aur"[static_cast<int>(type)];
      if (!before)
        before = type != ChangeType::added;  // only an existing task can be updated or removed
      now = type != ChangeType::removed;
    }
    std::map<std::string, std::vector<std::uint32_t>> expected;
    if (before && *now)
      expected[*before ? "updated" : "added"] = {uid};
    else if (before && *before)
      expected["removed"] = {uid};
    const NetChanges net = netOf(journal_, since);
    EXPECT_EQ(net.added, expected["added"]) << shown;
    EXPECT_EQ(net.updated, expected["updated"]) << shown;
    EXPECT_EQ(net.removed, expected["removed"]) << shown;
    EXPECT_EQ(net.lastEntry, since + static_cast<std::int64_t>(sequence.size()));
    EXPECT_FALSE(net.incomplete);
  }
}

TEST_F(Journal, NetEffectExamples) {
  constexpr auto add = ChangeType::added;
  constexpr auto update = ChangeType::updated;
  constexpr auto remove = ChangeType::removed;
  append({
      changeOf(9, add),
      changeOf(3, update),
      changeOf(5, remove),
      changeOf(1, add),
      changeOf(9, update),
      changeOf(8, update),
      changeOf(2, remove),
      changeOf(1, remove),
      changeOf(8, remove),
      changeOf(4, add),
      changeOf(6, update),
      changeOf(7, remove),
      changeOf(7, add),
      changeOf(3, update),
  });
  const NetChanges net = netOf(journal_);
  EXPECT_THAT(net.added, ElementsAre(9, 4));
  EXPECT_THAT(net.updated, ElementsAre(3, 6, 7));
  EXPECT_THAT(net.removed, ElementsAre(5, 8, 2));
  // A later reader sees only later changes.
  const NetChanges later = netOf(journal_, 4);
  EXPECT_THAT(later.added, ElementsAre(4));
  EXPECT_THAT(later.updated, ElementsAre(9, 6, 7, 3));
  EXPECT_THAT(later.removed, ElementsAre(8, 2, 1));
}

}  // namespace
