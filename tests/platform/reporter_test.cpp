// The reporter of changes.

#include "changes_test.h"
#include "other_process.h"

#include <csignal>
#include <cstring>
#include <set>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

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

}  // namespace
