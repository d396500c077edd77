#include "task_uuids.h"

#include "database.h"
#include "store_test.h"
#include "ulodb2.h"

namespace {

class TaskUuids : public StoreTest {
protected:
  // All tasks with a uuid, in the order in which they are visited.
  using Found = std::vector<std::pair<QString, unsigned int>>;
  static Found all() {
    Found found;
    EXPECT_EQ(ulo::forEachUuid([&](QStringView uuid, unsigned int uid) {
                found.emplace_back(uuid.toString(), uid);
              }),
              ok);
    return found;
  }

  unsigned int addWith(const QString& uuid) {
    Task added = task("a");
    added.setString(Task::TASK_FIELD_UUID, uuid);
    return add(added);
  }
};

TEST_F(TaskUuids, FindTaskWithUuid) {
  addWith("one");
  const unsigned int two = addWith("two");
  addWith("TWO");
  unsigned int uid = 0;
  EXPECT_EQ(ulo::findTask("two", uid), ok);
  EXPECT_EQ(uid, two);
  uid = 77;
  EXPECT_EQ(ulo::findTask("tw", uid), notFound);
  EXPECT_EQ(ulo::findTask("", uid), notFound);
  EXPECT_EQ(uid, 77U);
}

TEST_F(TaskUuids, FindLowestUidOfSeveral) {
  const unsigned int first = addWith("same");
  addWith("same");
  addWith("other");
  unsigned int uid = 0;
  EXPECT_EQ(ulo::findTask("same", uid), ok);
  EXPECT_EQ(uid, first);
  EXPECT_EQ(all(), (Found{{"same", first}, {"same", first + 1}, {"other", first + 2}}));
}

// Units of any value, long texts, and a byte order mark.
TEST_F(TaskUuids, CompareAllUnits) {
  const QString pair = QString::fromUtf8("\xF0\x9F\x9A\xB2");
  const std::vector<QString> uuids = {pair, pair.left(1),       QChar(0xFEFF) + QString("a"),
                                      "a",  QString(1000, 'u'), QString(1001, 'u')};
  std::vector<unsigned int> stored;
  for (const QString& uuid : uuids)
    stored.push_back(addWith(uuid));
  const Found found = all();
  ASSERT_EQ(found.size(), uuids.size());
  for (std::size_t i = 0; i < uuids.size(); ++i) {
    unsigned int uid = 0;
    EXPECT_EQ(ulo::findTask(uuids[i], uid), ok) << i;
    EXPECT_EQ(uid, stored[i]) << i;
    EXPECT_EQ(found[i], std::pair(uuids[i], stored[i])) << i;
  }
}

// One page, and a part of a third one; some tasks have been removed.
TEST_F(TaskUuids, VisitTasksOfSeveralPages) {
  store();
  Found expected;
  const auto addUntil = [&](unsigned int count) {
    WriteScope transaction;
    while (expected.size() < count) {
      const QString uuid = QString::number(expected.size());
      const unsigned int uid = addWith(uuid);
      if (uid % 7 == 0)
        EXPECT_EQ(store().removeTask(uid), ok);
      else
        expected.emplace_back(uuid, uid);
    }
    EXPECT_EQ(transaction.keep(), DB_OK);
  };
  for (const unsigned int count : {999U, 1000U, 1001U, 2010U}) {
    addUntil(count);
    EXPECT_EQ(all(), expected) << count;
  }
}

TEST_F(TaskUuids, VisitNoneInEmptyStore) {
  store();
  EXPECT_TRUE(all().empty());
}

TEST_F(TaskUuids, ReportFailureOfDatabase) {
  addWith("one");
  close();
  unsigned int uid = 77;
  EXPECT_EQ(ulo::findTask("one", uid), databaseFailure);
  EXPECT_EQ(ulo::forEachUuid([](QStringView, unsigned int) { FAIL(); }), databaseFailure);
  EXPECT_EQ(uid, 77U);
}

}  // namespace
