// The journal of changes and its reporter.

#include "SVC_CT_ChangeReporter.h"
#include "change_journal.h"
#include "log_capture.h"
#include "other_process.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fstream>
#include <latch>
#include <map>
#include <optional>
#include <set>
#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using ulo::Change;
using ulo::ChangeJournal;
using ulo::ChangeType;
using ulo::NetChanges;

constexpr ChangeType allTypes[] = {ChangeType::added, ChangeType::updated, ChangeType::removed};

Change changeOf(std::uint32_t uid, ChangeType type = ChangeType::added,
                const std::string& source = "engine") {
  Change change;
  change.source = source;
  change.uid = uid;
  change.type = type;
  return change;
}

SVC_CT_ChangeRecord recordOf(unsigned uid, int type = SVC_CT_ADDED, const char* source = "engine") {
  SVC_CT_ChangeRecord record;
  record.source = source;
  record.uid = uid;
  record.changeType = type;
  return record;
}

std::vector<Change> entriesOf(ChangeJournal& journal, std::int64_t since = 0) {
  std::vector<Change> changes;
  EXPECT_TRUE(journal.entriesSince(since, changes));
  return changes;
}
// The UIDs of all entries, as somebody else sees them.
std::vector<std::uint32_t> uidsIn(const fs::path& directory) {
  ChangeJournal journal(directory);
  std::vector<std::uint32_t> uids;
  for (const Change& change : entriesOf(journal))
    uids.push_back(change.uid);
  return uids;
}
std::int64_t lastOf(ChangeJournal& journal) {
  std::int64_t entry = -1;
  EXPECT_TRUE(journal.lastEntry(entry));
  return entry;
}
NetChanges netOf(ChangeJournal& journal, std::int64_t since = 0,
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

// The reporter

class Reporter : public Journal {
protected:
  SVC_CT_ChangeReporter reporter_;
};

TEST_F(Reporter, DoesNothingBeforeTheFirstReport) {
  EXPECT_TRUE(fs::is_empty(directory_.path()));
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_EQ(reporter_.reportMany(nullptr, 0, -1), 0);
  EXPECT_TRUE(fs::is_empty(directory_.path()));
}

TEST_F(Reporter, WritesEachReport) {
  EXPECT_EQ(reporter_.report(recordOf(1, SVC_CT_ADDED), -1), 0);
  EXPECT_EQ(reporter_.report(recordOf(2, SVC_CT_UPDATED, nullptr), 3), 0);
  EXPECT_EQ(reporter_.report(recordOf(0xFFFFFFFE, SVC_CT_REMOVED), -1), 0);
  const std::vector<Change> entries = entriesOf(journal_);
  ASSERT_THAT(entries, SizeIs(3));
  EXPECT_EQ(entries[0].source, "engine");
  EXPECT_EQ(entries[0].type, ChangeType::added);
  EXPECT_EQ(entries[1].source, "");
  EXPECT_EQ(entries[1].type, ChangeType::updated);
  EXPECT_EQ(entries[2].type, ChangeType::removed);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2, 0xFFFFFFFE));
}

TEST_F(Reporter, MakesTheDataDirectory) {
  const fs::path data = directory_.path() / "a" / "b";
  setenv("ULO_DATA_DIR", data.c_str(), 1);
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_THAT(uidsIn(data), ElementsAre(1));
}

TEST_F(Reporter, ManyAtOnce) {
  const SVC_CT_ChangeRecord records[] = {recordOf(1), recordOf(2), recordOf(3)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2));
}

TEST_F(Reporter, ABatchIsSeenWhenItEnds) {
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  const SVC_CT_ChangeRecord records[] = {recordOf(3), recordOf(4)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
  // Others go on meanwhile.
  EXPECT_TRUE(journal_.append({changeOf(100)}));
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 100, 2, 3, 4));
  EXPECT_EQ(reporter_.report(recordOf(5), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 100, 2, 3, 4, 5));
}

TEST_F(Reporter, ABatchWithinABatchIsRefused) {
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_EQ(reporter_.beginBatch("engine"), 1);
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_FALSE(fs::exists(file()));
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_EQ(reporter_.endBatch("engine"), 1);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2));
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
}

TEST_F(Reporter, EndWithoutABatchIsRefused) {
  EXPECT_EQ(reporter_.endBatch("engine"), 1);
  EXPECT_EQ(reporter_.endBatch(nullptr), 1);
}

TEST_F(Reporter, ABatchThatWasNotEndedIsWritten) {
  {
    SVC_CT_ChangeReporter reporter;
    EXPECT_EQ(reporter.beginBatch(nullptr), 0);
    EXPECT_EQ(reporter.report(recordOf(1), -1), 0);
    EXPECT_EQ(reporter.report(recordOf(2), -1), 0);
  }
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 2));
}

TEST_F(Reporter, ABatchGoesWithAKilledProcess) {
  EXPECT_EQ(inOtherProcess([] {
              SVC_CT_ChangeReporter reporter;
              reporter.report(recordOf(1), -1);
              reporter.beginBatch("engine");
              reporter.report(recordOf(2), -1);
              raise(SIGKILL);
              return 0;
            }),
            128 + SIGKILL);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
}

TEST_F(Reporter, IsSharedByThreads) {
  constexpr unsigned threads = 4;
  constexpr unsigned changes = 100;
  std::vector<std::thread> running;
  for (unsigned i = 0; i < threads; ++i)
    running.emplace_back([&, i] {
      for (unsigned n = 0; n < changes; ++n)
        EXPECT_EQ(reporter_.report(recordOf(i * changes + n), -1), 0);
    });
  for (std::thread& thread : running)
    thread.join();
  const std::vector<std::uint32_t> uids = uidsIn(directory_.path());
  EXPECT_THAT(uids, SizeIs(threads * changes));
  EXPECT_THAT(std::set<std::uint32_t>(uids.begin(), uids.end()), SizeIs(threads * changes));
}

class RecordingReporter : public SVC_CT_ChangeReporter {
public:
  int report(const SVC_CT_ChangeRecord& record, int handle) override {
    calls += "report " + std::to_string(record.uid) + " " + std::to_string(handle) + ";";
    return 11;
  }
  int reportMany(const SVC_CT_ChangeRecord*, unsigned int count, int handle) override {
    calls += "many " + std::to_string(count) + " " + std::to_string(handle) + ";";
    return 12;
  }
  int beginBatch(const char* source) override {
    calls += std::string("begin ") + source + ";";
    return 13;
  }
  int endBatch(const char* source) override {
    calls += std::string("end ") + source + ";";
    return 14;
  }

  std::string calls;
};

TEST_F(Reporter, CanBeReplaced) {
  RecordingReporter recorder;
  SVC_CT_ChangeReporter& base = recorder;
  EXPECT_EQ(base.report(recordOf(5), -1), 11);
  EXPECT_EQ(base.reportMany(nullptr, 2, 3), 12);
  EXPECT_EQ(base.beginBatch("a"), 13);
  EXPECT_EQ(base.endBatch("b"), 14);
  EXPECT_EQ(recorder.calls, "report 5 -1;many 2 3;begin a;end b;");
  EXPECT_TRUE(fs::is_empty(directory_.path()));
}

// The place of a virtual operation in the table, as the C++ ABI keeps it in a pointer to it: 1 more
// than its offset, or, on ARM, the offset itself.
template <typename Member> std::size_t placeOf(Member member) {
  std::size_t offset = 0;
  static_assert(sizeof member >= sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  return offset / sizeof(void*);
}

TEST(ReporterTable, OperationsComeFirstInTheirOrder) {
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::report), 0U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::reportMany), 1U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::beginBatch), 2U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::endBatch), 3U);
  // The object begins with the table.
  RecordingReporter recorder;
  void* table = nullptr;
  std::memcpy(&table, static_cast<void*>(&recorder), sizeof table);
  SVC_CT_ChangeReporter plain;
  void* plainTable = nullptr;
  std::memcpy(&plainTable, static_cast<void*>(&plain), sizeof plainTable);
  EXPECT_NE(table, plainTable);
}

// Several at once

TEST_F(Journal, ProcessesThatStartAtOnce) {
  constexpr int processes = 5;
  constexpr int changes = 3;
  for (int round = 0; round < 25; ++round) {
    const DataDirectory fresh;
    std::vector<pid_t> children;
    children.reserve(processes);
    for (int i = 0; i < processes; ++i)
      children.push_back(startProcess([&] {
        SVC_CT_ChangeReporter reporter;
        int failures = 0;
        for (int n = 0; n < changes; ++n)
          failures += reporter.report(recordOf(static_cast<unsigned>(i * changes + n)), -1);
        return failures;
      }));
    for (const pid_t child : children)
      EXPECT_EQ(waitFor(child), 0);
    const std::vector<std::uint32_t> uids = uidsIn(fresh.path());
    EXPECT_THAT(uids, SizeIs(processes * changes));
    EXPECT_THAT(std::set<std::uint32_t>(uids.begin(), uids.end()), SizeIs(processes * changes));
    EXPECT_EQ(fs::status(fresh.path() / "changes.db").permissions(), fs::perms(0600));
  }
}

TEST_F(Journal, ThreadsThatStartAtOnce) {
  constexpr int threads = 5;
  constexpr int changes = 3;
  for (int round = 0; round < 40; ++round) {
    const TemporaryDirectory fresh;
    std::latch start(threads);
    std::atomic<int> failures = 0;
    std::vector<std::thread> running;
    running.reserve(threads);
    for (int i = 0; i < threads; ++i)
      running.emplace_back([&, i] {
        ChangeJournal journal(fresh.path());
        start.arrive_and_wait();
        for (int n = 0; n < changes; ++n)
          if (!journal.append({changeOf(static_cast<std::uint32_t>(i * changes + n))}))
            ++failures;
      });
    for (std::thread& thread : running)
      thread.join();
    EXPECT_EQ(failures, 0);
    const std::vector<std::uint32_t> uids = uidsIn(fresh.path());
    EXPECT_THAT(uids, SizeIs(threads * changes));
    EXPECT_THAT(std::set<std::uint32_t>(uids.begin(), uids.end()), SizeIs(threads * changes));
  }
}

TEST_F(Journal, ReadersSeeWholeBatches) {
  constexpr std::uint32_t size = 10;
  constexpr int batches = 60;
  std::vector<pid_t> writers;
  writers.reserve(2);
  for (int writer = 0; writer < 2; ++writer)
    writers.push_back(startProcess([&] {
      SVC_CT_ChangeReporter reporter;
      for (int n = 0; n < batches; ++n) {
        if (reporter.beginBatch("engine") != 0)
          return 1;
        for (std::uint32_t i = 0; i < size; ++i)
          reporter.report(recordOf(i), -1);
        if (reporter.endBatch("engine") != 0)
          return 2;
      }
      return 0;
    }));
  std::size_t seen = 0;
  while (seen < static_cast<std::size_t>(size) * batches * writers.size()) {
    // A writer that fails must not leave us here.
    const bool over = std::all_of(writers.begin(), writers.end(), [](pid_t writer) {
      siginfo_t info{};
      return waitid(P_PID, static_cast<id_t>(writer), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
             info.si_pid == writer;
    });
    const std::vector<Change> entries = entriesOf(journal_);
    for (std::size_t i = 0; i < entries.size(); ++i)
      ASSERT_EQ(entries[i].uid, i % size);  // each batch in one piece
    ASSERT_EQ(entries.size() % size, 0U);
    seen = entries.size();
    if (over)
      break;
  }
  for (const pid_t writer : writers)
    EXPECT_EQ(waitFor(writer), 0);
  EXPECT_EQ(seen, static_cast<std::size_t>(size) * batches * writers.size());
}

TEST_F(Journal, AKilledWriterLosesNothingItReported) {
  constexpr std::uint32_t size = 5;
  std::uint32_t next = 0;
  for (int round = 0; round < 8; ++round) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t writer = startProcess([&] {
      close(ends[0]);
      SVC_CT_ChangeReporter reporter;
      for (std::uint32_t uid = next;; uid += size) {
        reporter.beginBatch("engine");
        for (std::uint32_t i = 0; i < size; ++i)
          reporter.report(recordOf(uid + i), -1);
        const char byte = '.';
        if (reporter.endBatch("engine") != 0 || write(ends[1], &byte, 1) != 1)
          return 1;
      }
    });
    close(ends[1]);
    char byte = 0;
    std::uint32_t reported = 0;
    while (reported < 10 + static_cast<std::uint32_t>(round) * 3 && read(ends[0], &byte, 1) == 1)
      ++reported;
    kill(writer, SIGKILL);
    while (read(ends[0], &byte, 1) == 1)
      ++reported;
    close(ends[0]);
    EXPECT_EQ(waitFor(writer), 128 + SIGKILL);

    const std::vector<std::uint32_t> uids = uidsIn(directory_.path());
    EXPECT_GE(uids.size(), next + reported * size);
    EXPECT_EQ(uids.size() % size, 0U);
    for (std::uint32_t i = 0; i < uids.size(); ++i)
      ASSERT_EQ(uids[i], i);
    next = static_cast<std::uint32_t>(uids.size());
    EXPECT_EQ(lastOf(journal_), next);
  }
}

// Faults, and what comes after them

constexpr const char* cannotWrite =
    "(platform/changes/change_journal.cpp)The change journal can't be written: ";

TEST_F(Reporter, ADirectoryInPlaceOfTheJournal) {
  fs::create_directory(file());
  {
    LogCapture log;
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(),  // once
              cannotWrite + std::string("unable to open database file"));
  }
  fs::remove(file());
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(2));
}

TEST_F(Reporter, AFileThatIsNoDatabase) {
  std::ofstream(file()) << std::string(5000, 'x');
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("file is not a database"));
  }
  {
    LogCapture log;
    std::vector<Change> changes{changeOf(1)};
    std::int64_t entry = 5;
    NetChanges net;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_FALSE(journal_.lastEntry(entry));
    EXPECT_FALSE(journal_.changesSince("engine", 0, net));
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_THAT(changes, SizeIs(1));
    const auto line = [](const char* what) {
      return std::string("(platform/changes/change_journal.cpp)The change journal can't be ") +
             what + ": file is not a database";
    };
    EXPECT_EQ(log.withoutLines(), line("read") + line("read") + line("read") + line("pruned"));
  }
  EXPECT_EQ(fs::file_size(file()), 5000U);  // whosever it is
  fs::remove(file());
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_EQ(lastOf(journal_), 1);
}

TEST_F(Reporter, NoDataDirectory) {
  const fs::path way = directory_.path() / "way";
  std::ofstream(way) << "";
  setenv("ULO_DATA_DIR", way.c_str(), 1);
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(reporter_.beginBatch("engine"), 0);
    EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
    EXPECT_EQ(reporter_.endBatch("engine"), 1);
    EXPECT_EQ(log.withoutLines(),
              cannotWrite + std::string("there is no data directory: Not a directory"));
  }
  EXPECT_EQ(reporter_.endBatch("engine"), 1);  // the failed one is over
  fs::remove(way);
  EXPECT_EQ(reporter_.report(recordOf(3), -1), 0);
  EXPECT_THAT(uidsIn(way), ElementsAre(3));
}

// Remembers the connections that are opened, so that a test can set their page limit.
sqlite3* lastConnection = nullptr;

int rememberConnection(sqlite3* connection, const char**, const void*) {
  lastConnection = connection;
  return SQLITE_OK;
}

// A disk with room for so many pages more.
int limitPages(sqlite3* connection, int more) {
  int pages = 0;
  const auto first = [](void* result, int, char** values, char**) {
    *static_cast<int*>(result) = std::atoi(values[0]);
    return 0;
  };
  sqlite3_exec(connection, "PRAGMA page_count", first, &pages, nullptr);
  return sqlite3_exec(connection,
                      ("PRAGMA max_page_count = " + std::to_string(pages + more)).c_str(), nullptr,
                      nullptr, nullptr);
}

class FullDisk : public Reporter {
protected:
  FullDisk() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(rememberConnection));
    lastConnection = nullptr;
  }
  ~FullDisk() override { sqlite3_reset_auto_extension(); }
  const std::string large_ = std::string(20000, 'x');
};

TEST_F(FullDisk, ReportsFailUntilThereIsRoom) {
  ASSERT_EQ(reporter_.report(recordOf(1), -1), 0);
  sqlite3* connection = lastConnection;
  ASSERT_NE(connection, nullptr);
  ASSERT_EQ(limitPages(connection, 0), SQLITE_OK);
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(2, SVC_CT_ADDED, large_.c_str()), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  {
    LogCapture log;
    const SVC_CT_ChangeRecord records[] = {recordOf(3), recordOf(4, SVC_CT_ADDED, large_.c_str()),
                                           recordOf(5)};
    EXPECT_EQ(reporter_.reportMany(records, 3, -1), 1);
    EXPECT_EQ(log.text(), "");  // still the same
  }
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1));
  EXPECT_EQ(reporter_.report(recordOf(8), -1), 0);  // a small one fits
  {
    LogCapture log;
    ASSERT_EQ(reporter_.beginBatch("engine"), 0);
    EXPECT_EQ(reporter_.report(recordOf(6), -1), 0);
    EXPECT_EQ(reporter_.report(recordOf(7, SVC_CT_ADDED, large_.c_str()), -1), 0);
    EXPECT_EQ(reporter_.endBatch("engine"), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  ASSERT_EQ(limitPages(connection, 1000), SQLITE_OK);
  const SVC_CT_ChangeRecord records[] = {recordOf(9, SVC_CT_ADDED, large_.c_str()), recordOf(10)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 8, 9, 10));
}

TEST_F(FullDisk, NoRoomForTheJournalItself) {
  const auto limit = +[](sqlite3* connection, const char**, const void*) {
    sqlite3_exec(connection, "PRAGMA max_page_count = 2", nullptr, nullptr, nullptr);
    return SQLITE_OK;
  };
  sqlite3_reset_auto_extension();
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(limit));
  {
    LogCapture log;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("database or disk is full"));
  }
  sqlite3_reset_auto_extension();
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(2));
}

// Another program broke the journal while we have it open.
TEST_F(Reporter, TheLogSaysWhyABatchFailed) {
  ASSERT_EQ(reporter_.report(recordOf(1), -1), 0);
  ASSERT_EQ(lastOf(journal_), 1);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "ALTER TABLE changes RENAME TO away", nullptr, nullptr, nullptr),
            SQLITE_OK);
  {
    LogCapture log;
    const SVC_CT_ChangeRecord records[] = {recordOf(2), recordOf(3)};
    EXPECT_EQ(reporter_.reportMany(records, 2, -1), 1);
    EXPECT_EQ(log.withoutLines(), cannotWrite + std::string("no such table: changes"));
  }
  {
    LogCapture log;
    std::vector<Change> changes;
    EXPECT_FALSE(journal_.entriesSince(0, changes));
    EXPECT_EQ(log.withoutLines(),
              "(platform/changes/change_journal.cpp)The change journal can't be "
              "read: no such table: changes");
  }
  {
    LogCapture log;
    EXPECT_FALSE(journal_.prune(1));
    EXPECT_EQ(log.withoutLines(),
              "(platform/changes/change_journal.cpp)The change journal can't be "
              "pruned: no such table: changes");
  }
  ASSERT_EQ(sqlite3_exec(other, "ALTER TABLE away RENAME TO changes", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  EXPECT_EQ(reporter_.report(recordOf(4), -1), 0);
  EXPECT_THAT(uidsIn(directory_.path()), ElementsAre(1, 4));
}

}  // namespace
