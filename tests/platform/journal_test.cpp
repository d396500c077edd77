// The journal of changes.

#include "changes_test.h"
#include "log_capture.h"

#include <sqlite3.h>

#include <ctime>
#include <fstream>
#include <map>
#include <optional>
#include <set>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(Journal, OneThatDoesNotExistIsEmptyAndStaysAway) {
  LogCapture log;
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 0);
  const NetChanges net = netOf(journal_);
  EXPECT_TRUE(net.added.empty() && net.updated.empty() && net.removed.empty());
  EXPECT_EQ(net.lastEntry, 0);
  EXPECT_FALSE(net.incomplete);
  EXPECT_TRUE(journal_.prune(5));
  EXPECT_TRUE(journal_.append({}));
  EXPECT_TRUE(fs::is_empty(directory_.path()));
  ChangeJournal nowhere(directory_.path() / "missing");
  EXPECT_THAT(entriesOf(nowhere), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(Journal, KeepsWhatItWasGiven) {
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(journal_.append(
      {changeOf(7, ChangeType::added, "a"), changeOf(0xFFFFFFFE, ChangeType::removed, "")}));
  ASSERT_TRUE(journal_.append({changeOf(0, ChangeType::updated, "caf\xC3\xA9")}));
  const std::int64_t after = std::time(nullptr);
  ChangeJournal other(directory_.path());
  const std::vector<Change> entries = entriesOf(other);
  ASSERT_THAT(entries, SizeIs(3));
  const Change expected[] = {changeOf(7, ChangeType::added, "a"),
                             changeOf(0xFFFFFFFE, ChangeType::removed, ""),
                             changeOf(0, ChangeType::updated, "caf\xC3\xA9")};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(entries[i].entry, static_cast<std::int64_t>(i) + 1);
    EXPECT_EQ(entries[i].source, expected[i].source);
    EXPECT_EQ(entries[i].uid, expected[i].uid);
    EXPECT_EQ(entries[i].type, expected[i].type);
    EXPECT_GE(entries[i].time, before);
    EXPECT_LE(entries[i].time, after);
  }
}

TEST_F(Journal, IsTheOwnersAlone) {
  ASSERT_TRUE(journal_.append({changeOf(1)}));
  int files = 0;
  for (const auto& entry : fs::directory_iterator(directory_.path())) {
    ++files;
    EXPECT_EQ(entry.status().permissions(), fs::perms(0600)) << entry.path();
  }
  EXPECT_GE(files, 1);
}

TEST_F(Journal, EntriesSince) {
  ASSERT_TRUE(journal_.append({changeOf(10), changeOf(20), changeOf(30)}));
  std::vector<Change> changes{changeOf(1)};
  EXPECT_TRUE(journal_.entriesSince(1, changes));  // behind what is there
  ASSERT_THAT(changes, SizeIs(3));
  EXPECT_EQ(changes[0].uid, 1U);
  EXPECT_EQ(changes[1].uid, 20U);
  EXPECT_EQ(changes[2].uid, 30U);
  EXPECT_THAT(entriesOf(journal_, 3), IsEmpty());
  EXPECT_THAT(entriesOf(journal_, 100), IsEmpty());
  EXPECT_THAT(entriesOf(journal_, -1), SizeIs(3));
}

TEST_F(Journal, NumbersAreNeverGivenTwice) {
  ASSERT_TRUE(journal_.append({changeOf(1), changeOf(2), changeOf(3)}));
  EXPECT_EQ(lastOf(journal_), 3);
  ASSERT_TRUE(journal_.prune(1000));
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 3);
  ChangeJournal reopened(directory_.path());
  EXPECT_EQ(lastOf(reopened), 3);
  ASSERT_TRUE(reopened.append({changeOf(4)}));
  EXPECT_EQ(entriesOf(reopened).at(0).entry, 4);
  EXPECT_EQ(lastOf(journal_), 4);
}

TEST_F(Journal, NumbersGoOnAfterAllAreClosedAndPruned) {
  for (std::int64_t n = 1; n <= 4; ++n) {
    ChangeJournal journal(directory_.path());
    ASSERT_TRUE(journal.append({changeOf(1)}));
    EXPECT_EQ(lastOf(journal), n);
    ASSERT_TRUE(journal.prune(n));
  }
}

TEST_F(Journal, Prune) {
  for (std::uint32_t uid = 1; uid <= 5; ++uid)
    ASSERT_TRUE(journal_.append({changeOf(uid)}));
  for (const std::int64_t nothing : {0, -5}) {
    ASSERT_TRUE(journal_.prune(nothing));
    EXPECT_FALSE(netOf(journal_, 0).incomplete);
  }
  ASSERT_TRUE(journal_.prune(2));
  ASSERT_TRUE(journal_.prune(1));  // does not take the mark back
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
  // Pruning ahead forgets nothing that is still to come.
  ASSERT_TRUE(journal_.prune(1000));
  EXPECT_FALSE(netOf(journal_, 5).incomplete);
  EXPECT_TRUE(netOf(journal_, 4).incomplete);
  ASSERT_TRUE(journal_.append({changeOf(6)}));
  EXPECT_FALSE(netOf(journal_, 5).incomplete);
  EXPECT_THAT(netOf(journal_, 5).added, ElementsAre(6));
}

// All sequences of up to four changes of one UID, against what somebody sees who looks before
// and after.
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
    std::optional<bool> before;  // nobody can tell yet
    std::optional<bool> now;
    for (const ChangeType type : sequence) {
      ASSERT_TRUE(journal_.append({changeOf(uid, type)}));
      shown += "?aur"[static_cast<int>(type)];
      if (!before)
        before = type != ChangeType::added;  // only what is there can be updated or removed
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

TEST_F(Journal, NetEffectInPlainWords) {
  constexpr auto add = ChangeType::added;
  constexpr auto update = ChangeType::updated;
  constexpr auto remove = ChangeType::removed;
  ASSERT_TRUE(journal_.append({
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
  }));
  const NetChanges net = netOf(journal_);
  EXPECT_THAT(net.added, ElementsAre(9, 4));
  EXPECT_THAT(net.updated, ElementsAre(3, 6, 7));
  EXPECT_THAT(net.removed, ElementsAre(5, 8, 2));
  // Who asks later sees only what came later.
  const NetChanges later = netOf(journal_, 4);
  EXPECT_THAT(later.added, ElementsAre(4));
  EXPECT_THAT(later.updated, ElementsAre(9, 6, 7, 3));
  EXPECT_THAT(later.removed, ElementsAre(8, 2, 1));
}

TEST_F(Journal, SourcesAreKeptApart) {
  ASSERT_TRUE(journal_.append(
      {changeOf(1, ChangeType::added, "a"), changeOf(1, ChangeType::removed, "b"),
       changeOf(2, ChangeType::updated, "A"), changeOf(3, ChangeType::updated, "")}));
  EXPECT_THAT(netOf(journal_, 0, "a").added, ElementsAre(1));
  EXPECT_THAT(netOf(journal_, 0, "a").updated, IsEmpty());
  EXPECT_THAT(netOf(journal_, 0, "b").removed, ElementsAre(1));
  EXPECT_THAT(netOf(journal_, 0, "A").updated, ElementsAre(2));
  EXPECT_THAT(netOf(journal_, 0, "").updated, ElementsAre(3));
  const NetChanges none = netOf(journal_, 0, "c");
  EXPECT_TRUE(none.added.empty() && none.updated.empty() && none.removed.empty());
  EXPECT_EQ(none.lastEntry, 4);  // of all sources
}

TEST_F(Journal, AnEmptyFileBecomesOne) {
  std::ofstream(file()) << "";
  EXPECT_THAT(entriesOf(journal_), IsEmpty());
  EXPECT_EQ(lastOf(journal_), 0);
  EXPECT_TRUE(journal_.append({changeOf(1)}));
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
}

TEST_F(Journal, ReadersLeaveAnEmptyFileEmpty) {
  std::ofstream(file()) << "";
  EXPECT_EQ(netOf(journal_).lastEntry, 0);
  EXPECT_TRUE(journal_.prune(1));
  EXPECT_EQ(fs::file_size(file()), 0U);
}

// Its number comes from a journal that is no more.
TEST_F(Journal, AReaderOfAnotherJournalIsTold) {
  EXPECT_TRUE(netOf(journal_, 1).incomplete);
  ASSERT_TRUE(journal_.append({changeOf(1)}));
  EXPECT_FALSE(netOf(journal_, 1).incomplete);
  EXPECT_TRUE(netOf(journal_, 2).incomplete);
  EXPECT_FALSE(netOf(journal_, -1).incomplete);
}

TEST_F(Journal, UnknownTypesAreRefusedWithAllThatCameAlong) {
  LogCapture log;
  for (const int type : {0, 4, -1})
    EXPECT_FALSE(journal_.append({changeOf(1), changeOf(2, static_cast<ChangeType>(type))}));
  EXPECT_THAT(log.text(), HasSubstr("CHECK constraint failed"));
  ASSERT_TRUE(journal_.append({changeOf(3)}));
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(3));
  EXPECT_EQ(lastOf(journal_), 1);
}

TEST_F(Journal, ItsWriterNeedsNoDataDirectoryInItsName) {
  ChangeJournal inDataDirectory;
  ASSERT_TRUE(inDataDirectory.append({changeOf(1)}));
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
}

// What is in the file itself, without its write-ahead log, has been flushed to the disk.
TEST_F(Journal, APowerCutTakesNothingBackThatSomebodyWasToldOf) {
  const TemporaryDirectory afterwards;
  const auto flushed = [&] {
    fs::copy_file(file(), afterwards.path() / "changes.db", fs::copy_options::overwrite_existing);
    return uidsIn(afterwards.path()).size();
  };
  ASSERT_TRUE(journal_.append({changeOf(1)}));
  EXPECT_EQ(flushed(), 0U);
  EXPECT_EQ(lastOf(journal_), 1);
  EXPECT_EQ(flushed(), 1U);
  ASSERT_TRUE(journal_.append({changeOf(2)}));
  EXPECT_EQ(netOf(journal_).lastEntry, 2);
  EXPECT_EQ(flushed(), 2U);
}

TEST_F(Journal, DamagedPagesAreNotRead) {
  {
    ChangeJournal journal(directory_.path());
    ASSERT_TRUE(journal.append(std::vector<Change>(2000, changeOf(1))));
  }
  std::fstream(file(), std::ios::in | std::ios::out | std::ios::binary).seekp(8192)
      << std::string(12288, '\xFF');
  LogCapture log;
  std::vector<Change> changes{changeOf(7)};
  EXPECT_FALSE(journal_.entriesSince(0, changes));
  EXPECT_THAT(changes, SizeIs(1));  // nothing of what was read before it failed
  EXPECT_THAT(log.text(), HasSubstr("can't be read: database disk image is malformed"));
}

std::vector<std::string> statementsRun;
std::set<const void*> statementsPrepared;

TEST_F(Journal, AChangeCostsOneStatement) {
  const auto trace = +[](sqlite3* connection, const char**, const void*) {
    return sqlite3_trace_v2(
        connection, SQLITE_TRACE_STMT,
        [](unsigned, void*, void* statement, void*) {
          statementsRun.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
          statementsPrepared.insert(statement);
          return 0;
        },
        nullptr);
  };
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(trace));
  ASSERT_TRUE(journal_.append({changeOf(1)}));
  sqlite3_reset_auto_extension();
  statementsRun.clear();
  statementsPrepared.clear();
  for (std::uint32_t uid = 2; uid < 12; ++uid)
    ASSERT_TRUE(journal_.append({changeOf(uid)}));
  EXPECT_THAT(statementsRun, SizeIs(10));
  EXPECT_THAT(statementsRun, testing::Each(StartsWith("INSERT INTO changes")));
  EXPECT_THAT(statementsPrepared, SizeIs(1));
}

}  // namespace
