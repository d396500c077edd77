// Notification of changes in the store.

#include "window/store_changes.h"

#include "QCopChannel.h"
#include "TASK_ENG_SyncML.h"
#include "session_bus.h"
#include "tasks_test.h"
#include "ulotask_process.h"

#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <fstream>

using tasks::StoreChanges;

namespace {

// Processes all pending timers: they fire in the order of their times, and this one is the last.
void letSettle(std::chrono::milliseconds time = 3 * StoreChanges::longest) {
  bool settled = false;
  QTimer::singleShot(time, &application(), [&] { settled = true; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return settled; }, 30'000));
}

class StoreChangesTest : public Tasks {
protected:
  void readEverything() {
    QValueList<unsigned int> uids;
    EXPECT_EQ(
        store_.getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_ALL, ZTASK_ENG_Model::TASK_SORT_DUE),
        ok);
    for (const unsigned int uid : uids)
      stored(uid);
    QValueList<QString> names;
    EXPECT_EQ(store_.getAllCategories(names), ok);
    int count = 0;
    EXPECT_EQ(store_.getCount(count), ok);
  }
  [[nodiscard]] bool hasHeard() const { return heard_.count() > 0; }

  StoreChanges changes_{nullptr};
  QSignalSpy heard_{&changes_, &StoreChanges::changed};
};

TEST_F(StoreChangesTest, ReportsOwnChangesLater) {
  const unsigned int uid = add("a");
  EXPECT_EQ(heard_.count(), 0);
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  heard_.clear();
  ASSERT_EQ(store_.removeTask(uid), ok);
  EXPECT_EQ(heard_.count(), 0);
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
}

TEST_F(StoreChangesTest, ReportsChangesOfAnotherProcess) {
  runUlotask({"add", "a"});
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
}

TEST_F(StoreChangesTest, ReportsChangesOfCategories) {
  runUlotask({"category", "rename", "party", "feast"});
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  heard_.clear();
  runUlotask({"category", "rm", "feast"});
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
}

TEST_F(StoreChangesTest, CombinesChangesInQuickSuccession) {
  for (int i = 0; i < 20; ++i)
    add("a");
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  EXPECT_EQ(heard_.count(), 1);
}

TEST_F(StoreChangesTest, CombinesChanges) {
  constexpr int many = 20;
  for (int i = 0; i < many; ++i) {
    add("a");
    QCoreApplication::processEvents();
  }
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  EXPECT_LT(heard_.count(), many / 2);
}

TEST_F(StoreChangesTest, ReportsChangesThatDoNotEnd) {
  QTimer writing;
  QObject::connect(&writing, &QTimer::timeout, &writing, [this] { add("a"); });
  writing.start(StoreChanges::quiet / 10);
  EXPECT_TRUE(waitFor([this] { return heard_.count() >= 2; }));
}

TEST_F(StoreChangesTest, ReadingIsNotAChange) {
  add("a");
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  heard_.clear();
  QObject::connect(&changes_, &StoreChanges::changed, &changes_, [this] { readEverything(); });
  readEverything();
  runUlotask({"list"});
  letSettle();
  EXPECT_EQ(heard_.count(), 0);
  add("b");
  EXPECT_TRUE(waitFor([this] { return hasHeard(); }));
  letSettle();
  EXPECT_EQ(heard_.count(), 1);
}

class StoreThatIsClosed : public testing::Test {
protected:
  DataDirectory directory_;
  LogCapture log_;
};

// Opening a store that is not open elsewhere creates the files beside it again.
TEST_F(StoreThatIsClosed, IsNotChangedByOpeningIt) {
  { const ZTASK_ENG_Model makesTheFile; }
  StoreChanges changes(nullptr);
  const QSignalSpy heard(&changes, &StoreChanges::changed);
  ulo::DirectoryWatch files(directory_.path().string(), "tasks.db");
  for (int i = 0; i < 3; ++i) {
    QValueList<unsigned int> uids;
    EXPECT_EQ(ZTASK_ENG_Model().getAllIDs(uids), ok);
  }
  EXPECT_TRUE(files.sawChange());
  letSettle();
  EXPECT_EQ(heard.count(), 0);
  QValueList<unsigned int> uids;
  ZTASK_ENG_Model open;
  EXPECT_EQ(open.getAllIDs(uids), ok);
  letSettle();
  EXPECT_EQ(heard.count(), 0);
}

TEST_F(StoreThatIsClosed, BroadcastIsReceived) {
  const SessionBus bus;
  StoreChanges changes(nullptr);
  QSignalSpy heard(&changes, &StoreChanges::changed);
  ASSERT_TRUE(QCopChannel::send(TASK_ENG_SyncML::channel, "another message"));
  ASSERT_TRUE(QCopChannel::send("ANOTHER_CHANNEL", TASK_ENG_SyncML::dataChanged));
  letSettle();
  EXPECT_EQ(heard.count(), 0);
  ASSERT_TRUE(QCopChannel::send(TASK_ENG_SyncML::channel, TASK_ENG_SyncML::dataChanged));
  EXPECT_TRUE(QTest::qWaitFor([&] { return heard.count() > 0; }, 30'000));
}

// The files are in another directory, which is not watched, as on a file system that reports no
// changes.
TEST_F(StoreThatIsClosed, UnreportedChangesAreFoundByPolling) {
  const TemporaryDirectory elsewhere;
  std::ofstream(elsewhere.path() / "tasks.db") << "a";
  std::filesystem::create_symlink(elsewhere.path() / "tasks.db", directory_.path() / "tasks.db");

  StoreChanges changes(nullptr);
  QSignalSpy heard(&changes, &StoreChanges::changed);
  std::ofstream(elsewhere.path() / "tasks.db") << "ab";
  EXPECT_TRUE(QTest::qWaitFor([&] { return heard.count() > 0; }, 30'000));
}

TEST_F(StoreThatIsClosed, FilesRevealChangesWithoutJournal) {
  const auto damage = [this] {
    std::ofstream(directory_.path() / "tasks.db", std::ios::app) << std::string(8192, 'x');
  };
  damage();
  StoreChanges changes(nullptr);
  const QSignalSpy heard(&changes, &StoreChanges::changed);
  letSettle();
  EXPECT_EQ(heard.count(), 0);
  damage();
  EXPECT_TRUE(QTest::qWaitFor([&] { return heard.count() > 0; }, 30'000));
  letSettle(StoreChanges::interval * 3 / 2);
  EXPECT_EQ(heard.count(), 1);
}

}  // namespace
