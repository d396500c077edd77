// Deferred deletion.

#include "list/pending_removal.h"
#include "tasks_test.h"

#include <QSignalSpy>

using tasks::PendingRemoval;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

constexpr std::chrono::hours never{1};

class Removal : public Tasks {
protected:
  Removal() : a_(add("a")), b_(add("b")), c_(add("c")) {}

  unsigned int a_, b_, c_;
};

TEST_F(Removal, RemovesNothingDuringUndoPeriod) {
  PendingRemoval removal(store_, never);
  const QSignalSpy changes(&removal, &PendingRemoval::changed);
  removal.begin({a_, c_});
  EXPECT_THAT(removal.uids(), UnorderedElementsAre(a_, c_));
  EXPECT_EQ(removal.undoable(), 2);
  EXPECT_EQ(changes.count(), 1);
  finishEvents();
  EXPECT_THAT(allUids(), ElementsAre(a_, b_, c_));
  removal.undo();
  EXPECT_EQ(removal.undoable(), 0);
  EXPECT_THAT(removal.uids(), UnorderedElementsAre());
  EXPECT_EQ(changes.count(), 2);
  finishEvents();
  EXPECT_THAT(allUids(), ElementsAre(a_, b_, c_));
}

TEST_F(Removal, DestructorRemovesNothing) {
  { PendingRemoval(store_, never).begin({a_, b_}); }
  EXPECT_THAT(allUids(), ElementsAre(a_, b_, c_));
}

TEST_F(Removal, RemovesTasksAfterUndoPeriod) {
  PendingRemoval removal(store_, std::chrono::milliseconds(1));
  removal.begin({a_, c_});
  EXPECT_TRUE(waitFor([&] { return removal.uids().empty(); }));
  EXPECT_EQ(removal.undoable(), 0);
  EXPECT_THAT(allUids(), ElementsAre(b_));
}

TEST_F(Removal, NextRemovalMakesEarlierOneFinal) {
  PendingRemoval removal(store_, never);
  removal.begin({a_});
  removal.begin({b_});
  EXPECT_EQ(removal.undoable(), 1);
  EXPECT_THAT(removal.uids(), UnorderedElementsAre(a_, b_));
  EXPECT_TRUE(waitFor([&] { return !isStored(a_); }));
  removal.undo();
  EXPECT_THAT(allUids(), ElementsAre(b_, c_));
}

TEST_F(Removal, FinishRemovesAtOnce) {
  PendingRemoval removal(store_, never);
  removal.begin({a_});
  removal.begin({c_, b_});
  removal.finish();
  EXPECT_THAT(allUids(), ElementsAre());
  EXPECT_THAT(removal.uids(), UnorderedElementsAre());
}

TEST_F(Removal, TaskRemovedByOthersIsNotAnError) {
  PendingRemoval removal(store_, never);
  const QSignalSpy failures(&removal, &PendingRemoval::failed);
  removal.begin({a_, b_, c_});
  ASSERT_EQ(store_.removeTask(b_), ok);
  removal.finish();
  EXPECT_THAT(allUids(), ElementsAre());
  EXPECT_EQ(failures.count(), 0);
}

TEST_F(Removal, TaskThatStoreKeepsReappears) {
  raw_.run("create trigger refuse before delete on task_table_task when old.UID = " +
           std::to_string(b_) + " begin select raise(abort, 'no'); end");
  PendingRemoval removal(store_, never);
  QSignalSpy failures(&removal, &PendingRemoval::failed);
  removal.begin({a_, b_, c_});
  removal.finish();
  ASSERT_EQ(failures.count(), 1);
  EXPECT_EQ(failures[0][0].toInt(), databaseFailure);
  EXPECT_THAT(removal.uids(), UnorderedElementsAre());
  EXPECT_THAT(allUids(), ElementsAre(b_, c_));
}

TEST_F(Removal, RemovesManyBetweenOtherEvents) {
  std::vector<unsigned int> uids;
  for (int i = 0; i < 300; ++i)
    uids.push_back(add("x"));
  PendingRemoval removal(store_, std::chrono::milliseconds(0));
  int others = 0;
  QTimer other;
  QObject::connect(&other, &QTimer::timeout, &other, [&] { ++others; });
  other.start(0);
  removal.begin(uids);
  EXPECT_TRUE(waitFor([&] { return removal.uids().empty(); }));
  EXPECT_THAT(allUids(), ElementsAre(a_, b_, c_));
  EXPECT_GT(others, 2);
}

TEST_F(Removal, KeptTaskStays) {
  PendingRemoval removal(store_, never);
  removal.begin({a_});
  removal.begin({b_, c_});
  const QSignalSpy changes(&removal, &PendingRemoval::changed);
  removal.keep(c_);
  removal.keep(a_);
  EXPECT_EQ(changes.count(), 2);
  removal.keep(999);
  EXPECT_EQ(changes.count(), 2);
  EXPECT_EQ(removal.undoable(), 1);
  EXPECT_THAT(removal.uids(), UnorderedElementsAre(b_));
  removal.finish();
  EXPECT_THAT(allUids(), ElementsAre(a_, c_));
}

}  // namespace
