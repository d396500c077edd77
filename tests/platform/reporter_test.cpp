// Tests for the change reporter.

#include "announcement.h"
#include "changes_test.h"
#include "ulo/directory_watch.h"

#include <cstring>
#include <fstream>
#include <thread>

namespace {

// The file of a store, and a program that watches it.
class Reporter : public Journal {
protected:
  Reporter() {
    std::ofstream(path()) << "a store";
    watch_.sawChange();
  }

  SVC_CT_ChangeReporter reporter_;
  ulo::DirectoryWatch watch_{directory_.path(), ChangeJournal::fileName};
};

TEST_F(Reporter, AnnouncesEachReport) {
  EXPECT_FALSE(watch_.sawChange());
  EXPECT_EQ(reporter_.report(recordOf(1, SVC_CT_ADDED), -1), 0);
  EXPECT_TRUE(watch_.sawChange());
  EXPECT_FALSE(watch_.sawChange());
  EXPECT_EQ(reporter_.report(recordOf(0xFFFFFFFE, SVC_CT_REMOVED, nullptr), 3), 0);
  EXPECT_TRUE(watch_.sawChange());
  const SVC_CT_ChangeRecord records[] = {recordOf(1), recordOf(2)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_TRUE(watch_.sawChange());
  EXPECT_EQ(reporter_.reportMany(nullptr, 0, -1), 0);
  EXPECT_FALSE(watch_.sawChange());
}

TEST_F(Reporter, AnnouncesBatchAtItsEnd) {
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.report(recordOf(2), -1), 0);
  const SVC_CT_ChangeRecord records[] = {recordOf(3), recordOf(4)};
  EXPECT_EQ(reporter_.reportMany(records, 2, -1), 0);
  EXPECT_FALSE(watch_.sawChange());
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_TRUE(watch_.sawChange());
  // A batch without a change announces nothing.
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_FALSE(watch_.sawChange());
  EXPECT_EQ(reporter_.report(recordOf(5), -1), 0);
  EXPECT_TRUE(watch_.sawChange());
}

TEST_F(Reporter, LeavesChangesInTransactionToItsCommit) {
  {
    const ulo::UncommittedChanges transaction;
    EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
    EXPECT_FALSE(watch_.sawChange());
    // Those of another thread are not in it.
    std::thread([this] { reporter_.report(recordOf(2), -1); }).join();
    EXPECT_TRUE(watch_.sawChange());
    ulo::announceCommit(path());
    EXPECT_TRUE(watch_.sawChange());
  }
  EXPECT_EQ(reporter_.report(recordOf(3), -1), 0);
  EXPECT_TRUE(watch_.sawChange());
}

TEST_F(Reporter, RefusesNestedBatch) {
  EXPECT_EQ(reporter_.beginBatch("engine"), 0);
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_EQ(reporter_.beginBatch("engine"), 1);
  EXPECT_FALSE(watch_.sawChange());
  EXPECT_EQ(reporter_.endBatch("engine"), 0);
  EXPECT_TRUE(watch_.sawChange());
  EXPECT_EQ(reporter_.endBatch("engine"), 1);
  EXPECT_EQ(reporter_.endBatch(nullptr), 1);
  EXPECT_FALSE(watch_.sawChange());
}

TEST_F(Reporter, AnnouncesBatchThatWasNotEnded) {
  {
    SVC_CT_ChangeReporter reporter;
    EXPECT_EQ(reporter.beginBatch(nullptr), 0);
    EXPECT_EQ(reporter.report(recordOf(1), -1), 0);
  }
  EXPECT_TRUE(watch_.sawChange());
}

TEST_F(Reporter, ChangesNothingInTheFile) {
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_EQ(fs::file_size(path()), 7U);
  fs::remove(path());
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
  EXPECT_TRUE(fs::is_empty(directory_.path()));
  const fs::path way = directory_.path() / "way";
  std::ofstream(way) << "";
  setenv("ULO_DATA_DIR", way.c_str(), 1);
  EXPECT_EQ(reporter_.report(recordOf(1), -1), 0);
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
  EXPECT_TRUE(watch_.sawChange());
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
  EXPECT_FALSE(watch_.sawChange());
}

// Returns the position of a virtual function in the table. The C++ ABI stores it in the pointer to
// the function as its offset plus 1, or on ARM as the offset itself.
template <typename Member> std::size_t placeOf(Member member) {
  std::size_t offset = 0;
  static_assert(sizeof member >= sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  return offset / sizeof(void*);
}

TEST(ReporterTable, BeginsWithOperationsInOrder) {
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::report), 0U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::reportMany), 1U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::beginBatch), 2U);
  EXPECT_EQ(placeOf(&SVC_CT_ChangeReporter::endBatch), 3U);
  // The object begins with the pointer to the table.
  RecordingReporter recorder;
  void* table = nullptr;
  std::memcpy(&table, static_cast<void*>(&recorder), sizeof table);
  SVC_CT_ChangeReporter plain;
  void* plainTable = nullptr;
  std::memcpy(&plainTable, static_cast<void*>(&plain), sizeof plainTable);
  EXPECT_NE(table, plainTable);
}

}  // namespace
